#pragma once
#include "Threads/CMutex_ThreadQue.h"

/** Discs that come and go, handled in their order on the main thread. */
class CMutex_ThreadQue_DiscEvent final : public CMutex_ThreadQue {
public:
    CMutex_ThreadQue_DiscEvent() : CMutex_ThreadQue(kQue_DiscEvent) {}
    ~CMutex_ThreadQue_DiscEvent() override { Shut(); }
};
