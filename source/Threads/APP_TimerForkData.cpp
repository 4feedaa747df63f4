#include "Threads/APP_TimerForkData.h"

#include <map>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

namespace {

constexpr std::uint32_t kTimer_Off = 0x7FFFFFFF;

/** From the loop's identifier to the fork; locked alone. Never freed. */
CMutexT<std::map<CMainLoop::TimerID, std::shared_ptr<ForkRecord>>>& TimerMap() {
    static auto& s_timerMap = *new CMutexT<std::map<CMainLoop::TimerID, std::shared_ptr<ForkRecord>>>;
    return s_timerMap;
}

void OnPlatformTimer(CMainLoop::TimerID timer) {
    const auto forkP = TimerMap().With([timer](const auto& timers) {
        const auto it = timers.find(timer);
        return it == timers.end() ? nullptr : it->second;
    });
    if (!forkP) return LogF("Got an extra notify for timer: %d\n", static_cast<int>(timer));
    if (const OSErr err = ThreadWrapper(forkP); Failed(err)) NumberedReport("Fork Timer Error", err);
}

}   // namespace

std::uint32_t TimerMilliseconds(double seconds) noexcept {
    const double millisecondsF = seconds * 1000.0;
    if (!(millisecondsF >= 0) || millisecondsF >= kTimer_Off) return kTimer_Off;   // not a number is off, too
    return static_cast<std::uint32_t>(millisecondsF);
}

APP_TimerForkData::APP_TimerForkData(const char* nameZ, double intervalF) : i_name(nameZ), i_fireIntervalF(intervalF) {}

APP_TimerForkData::~APP_TimerForkData() {
    if (!i_forkP) return;
    AssertWords(IsLoopThread() || i_timerRef == 0, "timer deleted on a back thread");
    Disarm();
    i_forkP->timerDataP = nullptr;
    const CMutex::Scope guard(*i_forkP->mapP);   // deleted by its owner: the fork goes with it
    i_forkP->mapP->i_forks.erase(i_forkP->id);
}

void APP_TimerForkData::Disarm() {
    if (i_timerRef == 0) return;
    // No pending message has to be taken out of the queue: the loop delivers none after this.
    if (CThreadHost* const hostP = CThreadHost::Get()) hostP->MainLoop().KillTimer(i_timerRef);
    const bool foundB = TimerMap().With([this](auto& timers) { return timers.erase(i_timerRef) != 0; });
    if (foundB)
        LogF("erase timer from map: %d %s\n", static_cast<int>(i_timerRef), i_name.c_str());
    else {
        LogF("** did not find timer to erase: %d %s\n", static_cast<int>(i_timerRef), i_name.c_str());
        AssertWords(foundB, "it != s_timerMap.end()");
    }
    i_timerRef = 0;
}

void APP_TimerForkData::Arm() {
    CThreadHost* const hostP = CThreadHost::Get();
    if (hostP == nullptr || !i_forkP) return;
    const auto refP =
        std::make_shared<CMainLoop::TimerID>(i_timerRef);   // the loop's answer comes after the proc is made
    const CMainLoop::TimerID before = i_timerRef;
    i_timerRef = *refP =
        hostP->MainLoop().SetTimer(before, TimerMilliseconds(GetFireInterval()), [refP] { OnPlatformTimer(*refP); });
    if (i_timerRef == before) return;
    TimerMap().With([&](auto& timers) {
        timers.erase(before);
        timers[i_timerRef] = i_forkP;
    });
    if (before == 0)
        LogF("new timer <%s>: %d\n", i_name.c_str(), static_cast<int>(i_timerRef));
    else
        LogF("swapping timer %s: old: %d, new: %d\n", i_name.c_str(), static_cast<int>(before),
             static_cast<int>(i_timerRef));
}

void APP_TimerForkData::Apply(double seconds) {
    i_fireIntervalF.store(seconds, std::memory_order_release);
    Arm();
}

void APP_TimerForkData::SetFireInterval(double seconds) { Apply(seconds); }
