#include "Threads/WaitUntil.h"

#include "Platform/CClock.h"
#include "Threads/CThreadHost.h"
#include "Threads/ThreadInfo.h"
#include "Threads/WaitMode.h"

void WaitUntil(const std::function<bool()>& doneB, double mostT) {
    const CClock& clock = CClock::Get();
    const double untilT = clock.SteadyT() + mostT;
    while (!doneB()) {
        CThreadHost* const hostP = IsLoopThread() ? CThreadHost::Get() : nullptr;
        const double leftT = untilT - clock.SteadyT();
        if (hostP == nullptr || leftT <= 0) return;   // without a host nobody is left who could make it true
        if (!PumpLimited()) hostP->MainLoop().Wait(leftT, kMessage_All & ~static_cast<unsigned>(MessageKind::kInput));
    }
}
