#pragma once
#include "Platform/CAudioOutput_Paced.h"

/** No sound, at the pace of CClock: for machines without a device, and for tests. */
class CAudioOutput_Null : public CAudioOutput_Paced {
public:
    /** `speed` times real time; 0: as fast as it is fed. */
    explicit CAudioOutput_Null(double speed = 1.0) : CAudioOutput_Paced(speed) {}
};
