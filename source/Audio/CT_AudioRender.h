#pragma once
#include "Threads/CT_Preemptive.h"

class CAudioUnitChain;

/** The render thread: feeds the output of a chain until it is told to stop. The chain waits for it. */
class CT_AudioRender final : public CT_Preemptive {
public:
    explicit CT_AudioRender(CAudioUnitChain& chain) : CT_Preemptive("audio render"), i_chain(chain) {}

protected:
    OSErr Operate(OSErr err) override;

private:
    CAudioUnitChain& i_chain;
};
