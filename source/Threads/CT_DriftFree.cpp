#include "Threads/CT_DriftFree.h"

#include <algorithm>
#include <chrono>

#include "Platform/CClock.h"

namespace {
constexpr double kSleep_TurnT = 0.05;   // a clock that a test moves by hand is asked again after so long
}

CT_DriftFree::CT_DriftFree(const char* nameZ, long periodMicroseconds) : CT_Preemptive(nameZ) {
    i_periodL.Set(periodMicroseconds);
}

void CT_DriftFree::Stop() {
    i_stopB.Set(true);
    const std::scoped_lock guard(i_sleepLock);
    i_stopped.notify_all();
}

void CT_DriftFree::SleepUntil(double whenT) {
    std::unique_lock guard(i_sleepLock);
    while (!i_stopB.Get()) {
        const double leftT = whenT - CClock::Get().SteadyT();
        if (leftT <= 0) return;
        i_stopped.wait_for(guard, std::chrono::duration<double>(std::min(leftT, kSleep_TurnT)));
    }
}

void CT_DriftFree::Wake() {
    const std::scoped_lock guard(i_sleepLock);
    i_wokenB = true;
    i_stopped.notify_all();
}

void CT_DriftFree::Rest() {
    std::unique_lock guard(i_sleepLock);
    i_stopped.wait(guard, [this] { return i_wokenB || i_stopB.Get(); });
    i_wokenB = false;
}

OSErr CT_DriftFree::Operate(OSErr err) {
    double nextT = CClock::Get().SteadyT();
    while (!i_stopB.Get()) {
        if (!Tick()) {
            Rest();   // woken already, when the work came during the tick
            nextT = CClock::Get().SteadyT();
            continue;
        }
        nextT += static_cast<double>(std::max(i_periodL.Get(), 1L)) / 1e6;   // no period, no progress: one at least
        SleepUntil(nextT);
    }
    return err;
}
