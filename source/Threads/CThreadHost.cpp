#include "Threads/CThreadHost.h"

#include <atomic>
#include <shared_mutex>
#include <thread>

#include "Threads/ThreadInfo.h"
#include "Threads/WaitMode.h"

namespace {
std::atomic<CThreadHost*> s_hostP{nullptr};
std::atomic<std::thread::id> s_loopThread{};
/** Never freed: a thread that outlives the quit may still ask. */
std::shared_mutex& HostLock() {
    static auto* const s_lockP = new std::shared_mutex;
    return *s_lockP;
}
}   // namespace

void CThreadHost::Install(CThreadHost* hostP) {
    const std::unique_lock guard(HostLock());
    s_loopThread.store(hostP == nullptr ? std::thread::id{} : std::this_thread::get_id(), std::memory_order_release);
    s_hostP.store(hostP, std::memory_order_release);
}

CThreadHost* CThreadHost::Get() noexcept { return s_hostP.load(std::memory_order_acquire); }

CThreadHost::Use::Use() {
    HostLock().lock_shared();
    i_hostP = s_hostP.load(std::memory_order_acquire);
}
CThreadHost::Use::~Use() { HostLock().unlock_shared(); }

void CThreadHost::RunLoopPass() {
    CMainLoop& loop = MainLoop();
    PostEvents().DrainCalls();
    if (!loop.PumpOne(kMessage_All)) loop.Wait(kWait_TurnT);
    YieldToCooperative();
    PostEvents().DrainCalls();   // whoever has other deferred events handles them in a pass of its own
}

bool IsLoopThread() noexcept { return s_loopThread.load(std::memory_order_acquire) == std::this_thread::get_id(); }
