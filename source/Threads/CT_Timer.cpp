#include "Threads/CT_Timer.h"

#include <algorithm>
#include <vector>

#include "Core/Assertions.h"
#include "Threads/CThreadManager.h"
#include "Threads/MT_SetFireInterval.h"
#include "Threads/ThreadInfo.h"

namespace {
/** The timers that run, the innermost last; null for one that was deleted meanwhile. Main thread only. */
std::vector<CT_Timer*> s_runningTimers;
}   // namespace

CT_Timer::CT_Timer(const char* nameZ, double intervalF, bool idleB)
    : APP_TimerForkData(nameZ, intervalF), i_idleB(idleB) {
    CThreadManager::ForkTimer(idleB ? ForkKind::kIdleTimer : ForkKind::kTimer, *this, nameZ);
}

CT_Timer::~CT_Timer() {
    if (IsLoopThread()) std::ranges::replace(s_runningTimers, this, static_cast<CT_Timer*>(nullptr));
}

CT_Timer* CT_Timer::Current() { return s_runningTimers.empty() ? nullptr : s_runningTimers.back(); }

void CT_Timer::SetFireInterval(double seconds) {
    if (!Fork_()) return;   // the fork was refused: everything is being killed
    if (!IsLoopThread()) return SetInterval(GetForkID(), seconds);
    if (i_pendingIntervalB)   // held back, perhaps under another that runs in its pump
        i_pendingIntervalF = seconds;
    else
        Apply(seconds);
}

void CT_Timer::SetInterval(ForkID id, double seconds) {
    auto* const procP = new MT_SetFireInterval(id, seconds);   // its own owner from here on
    // Refused only when the application has gone, and the timer with it.
    (void)procP->Call(IsLoopThread() ? CallMode::kNoWait : CallMode::kPost);
}

void CT_Timer::HoldBackCurrent() {
    CT_Timer* const timerP = Current();
    if (timerP == nullptr || timerP->i_pendingIntervalB || timerP->GetFireInterval() == -1.0) return;
    timerP->i_pendingIntervalF = timerP->GetFireInterval();
    timerP->i_pendingIntervalB = true;
    timerP->Apply(-1.0);
}

OSErr CT_Timer::Fire() {
    if (i_disposeB.load(std::memory_order_acquire)) {
        SetFireInterval(-1.0);
        return timerDisposeErr;
    }
    const std::shared_ptr<ForkRecord> forkP = Fork_();   // outlives this object, should Timer delete it
    s_runningTimers.push_back(this);
    struct PopAtEnd {
        ~PopAtEnd() { s_runningTimers.pop_back(); }
    };
    OSErr err = noErr;
    {
        const PopAtEnd pop;
        err = Timer();
    }
    if (forkP->timerDataP == nullptr) return timerRearmErr;
    if (i_pendingIntervalB) {
        i_pendingIntervalB = false;
        Apply(std::exchange(i_pendingIntervalF, -1.0));
    }
    if (err == noErr) {
        Restart();
        return timerRearmErr;
    }
    return err == timerKeepErr ? timerRearmErr : err;
}
