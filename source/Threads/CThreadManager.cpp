#include "Threads/CThreadManager.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <system_error>
#include <thread>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Threads/APP_TimerForkData.h"
#include "Threads/CMutex_ThreadQue_MainThread.h"
#include "Threads/CThreadHost.h"
#include "Threads/ThreadInfo.h"
#include "Threads/WaitMode.h"

namespace {

/** What there is of the manager for other threads. Never freed: a thread that outlives the quit may still ask. */
struct Shared {
    std::mutex lock;   // guards the next three; nothing else is locked under it
    std::shared_ptr<CForkMap> forksP;
    std::shared_ptr<CMutex_ThreadQue_MainThread> mainQueP;
    std::vector<std::string> left;
    std::atomic<long> cooperativeL{0};
    std::atomic<long> executingL{0};
};
Shared& Common() {
    static auto* const s_sharedP = new Shared;
    return *s_sharedP;
}
std::shared_ptr<CForkMap> Forks() {
    const std::scoped_lock guard(Common().lock);
    return Common().forksP;
}

/** Enters a new record; null when everything is being killed. */
std::shared_ptr<ForkRecord> Enter(const std::shared_ptr<CForkMap>& forksP, ForkKind kind, const char* nameZ) {
    AssertWords(nameZ != nullptr, "\"Forking unknown thread!\" == NULL");
    auto forkP = std::make_shared<ForkRecord>();
    forkP->kind = kind;
    forkP->mapP = forksP;
    forkP->name = nameZ == nullptr ? "" : nameZ;
    const CMutex::Scope guard(*forksP);
    if (forksP->i_killingB) return nullptr;
    forkP->id = ++forksP->i_lastID;
    forksP->i_forks.emplace(forkP->id, forkP);
    return forkP;
}

}   // namespace

CThreadManager::CThreadManager() : i_forksP(std::make_shared<CForkMap>()) {
    if (!g_threadIndexL || !g_preemptiveB) TagThread(0, false);
    {
        const std::scoped_lock guard(Common().lock);
        Assert(!Common().forksP);
        Common().forksP = i_forksP;
    }
    auto mainQueP = std::make_shared<CMutex_ThreadQue_MainThread>();
    const std::scoped_lock guard(Common().lock);
    Common().mainQueP = std::move(mainQueP);
}

CThreadManager::~CThreadManager() {
    LogIf(LogSwitch::kThreads, "Killing all threads");
    {
        const CMutex::Scope guard(*i_forksP);
        i_forksP->i_killingB = true;
    }
    std::shared_ptr<CMutex_ThreadQue_MainThread> mainQueP;
    {
        const std::scoped_lock guard(Common().lock);
        mainQueP.swap(Common().mainQueP);
    }
    if (mainQueP) mainQueP->Quit(true);
    mainQueP.reset();
    KillAll();
    i_forksP->JoinEnded();
    const std::scoped_lock guard(Common().lock);
    Common().forksP.reset();
}

ForkID CThreadManager::Fork(ForkKind kind, ForkEntry entry, ForkCompletion completion, void* dataP, const char* nameZ) {
    const auto forksP = Forks();
    if (!forksP || !Assert(!IsTimer(kind))) return 0;
    forksP->JoinEnded();
    const auto forkP = Enter(forksP, kind, nameZ);
    if (!forkP) return 0;
    forkP->entry = std::move(entry);
    forkP->completion = std::move(completion);
    forkP->dataP = dataP;
    if (kind == ForkKind::kCooperative) Common().cooperativeL.fetch_add(1);
    try {
        const CMutex::Scope guard(*forksP);   // the thread itself asks for its name first: it waits until it is entered
        forkP->thread = std::thread([forkP] {
            // Its status is in the record; a thread has nobody to hand it to.
            (void)ThreadWrapper(forkP);
            forkP->endedB.store(true, std::memory_order_release);
            CThreadHost::With([](CThreadHost& host) { host.MainLoop().Wake(); });   // who waits for it looks now
        });
        return forkP->id;
    } catch (const std::system_error& thrown) {
        NumberedReport("Thread failed to launch!", static_cast<OSErr>(thrown.code().value()));
    }
    if (kind == ForkKind::kCooperative) Common().cooperativeL.fetch_sub(1);
    const CMutex::Scope guard(*forksP);
    forksP->i_forks.erase(forkP->id);
    return 0;
}

std::size_t CThreadManager::ThreadCount() {
    const auto forksP = Forks();
    if (!forksP) return 0;
    const CMutex::Scope guard(*forksP);
    return static_cast<std::size_t>(
        std::ranges::count_if(forksP->i_forks, [](const auto& fork) { return !IsTimer(fork.second->kind); }));
}

ForkID CThreadManager::ForkTimer(ForkKind kind, APP_TimerForkData& timer, const char* nameZ) {
    const auto forksP = Forks();
    if (!forksP || !Assert(IsTimer(kind))) return 0;
    const auto forkP = Enter(forksP, kind, nameZ);
    if (!forkP) return 0;
    forkP->timerDataP = &timer;
    forkP->dataP = &timer;
    forkP->entry = [](void* dataP) { return static_cast<APP_TimerForkData*>(dataP)->Fire(); };
    forkP->completion = [](void* dataP, OSErr err) { return static_cast<APP_TimerForkData*>(dataP)->Complete(err); };
    timer.Attach(forkP);
    if (IsLoopThread()) timer.Arm();
    return forkP->id;
}

std::shared_ptr<ForkRecord> CThreadManager::Find(ForkID id) {
    const auto forksP = Forks();
    return forksP ? forksP->Find(id) : nullptr;
}

std::shared_ptr<CMutex_ThreadQue_MainThread> CThreadManager::MainThreadQue() {
    const std::scoped_lock guard(Common().lock);
    return Common().mainQueP;
}

long CThreadManager::CooperativeCount() noexcept { return Common().cooperativeL.load(std::memory_order_relaxed); }
void CThreadManager::DropCooperative() noexcept { Common().cooperativeL.fetch_sub(1, std::memory_order_relaxed); }

bool CThreadManager::IsKilling() {
    const auto forksP = Forks();
    if (!forksP) return true;
    const CMutex::Scope guard(*forksP);
    return forksP->i_killingB;
}

bool CThreadManager::IsExecutingProc() noexcept { return Common().executingL.load(std::memory_order_relaxed) > 0; }

std::vector<std::string> CThreadManager::LeftThreads() {
    const std::scoped_lock guard(Common().lock);
    return Common().left;
}

void CThreadManager::AddLeft(const std::string& name) {
    const std::scoped_lock guard(Common().lock);
    Common().left.push_back(name);
}

CThreadManager::ScopedExecuting::ScopedExecuting() noexcept { Common().executingL.fetch_add(1); }
CThreadManager::ScopedExecuting::~ScopedExecuting() { Common().executingL.fetch_sub(1); }
