// How forks end: the second half of CThreadManager.
#include <thread>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Platform/CClock.h"
#include "Threads/APP_TimerForkData.h"
#include "Threads/CallOnMain.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/LogThread.h"
#include "Threads/ThreadInfo.h"
#include "Threads/WaitMode.h"
#include "Threads/WaitUntil.h"

namespace {

bool IsNoKill(const std::string& name) { return name.starts_with(kFork_NoKillZ); }

/** Waits until `doneB`, for `mostT()` seconds at the most. The main thread is woken by each thread that ends and by each
    call that comes; another looks each turn. */
template <class Done, class Most>
void WaitForEnd(const Done& doneB, const Most& mostT) {
    const double startT = CClock::Get().SteadyT();
    while (!doneB()) {
        const double leftT = mostT() - (CClock::Get().SteadyT() - startT);
        if (leftT <= 0) return;
        if (IsLoopThread() && CThreadHost::Get() != nullptr)
            WaitUntil(doneB, leftT);
        else
            WaitOneTurn();
    }
}

/** The same for the time of the fork's name, which is asked each round. */
template <class Done>
void WaitForFork(const ForkRecord& fork, const Done& doneB) {
    WaitForEnd(doneB, [&fork] { return IsNoKill(NameOf(fork)) ? kKill_NoKillT : kKill_WaitT; });
}

void EraseRecord(ForkRecord& fork) {
    {
        const CMutex::Scope guard(*fork.mapP);
        fork.mapP->i_forks.erase(fork.id);
    }
    if (!IsLoopThread()) CThreadHost::With([](CThreadHost& host) { host.MainLoop().Wake(); });   // it may wait for this
}

std::thread TakeThread(ForkRecord& fork) {
    const CMutex::Scope guard(*fork.mapP);
    return std::move(fork.thread);
}

}   // namespace

/** The end of a thread that was waited for: joined, or left alone. */
void CThreadManager::ReleaseThread(ForkRecord& fork) {
    const std::string name = NameOf(fork);
    std::thread thread = TakeThread(fork);
    if (!fork.endedB.load(std::memory_order_acquire)) {
        if (!thread.joinable()) return;   // another kill has it
        LogF("was forced to kill thread: %s", name.c_str());
        AddLeft(name);
        // What it uses it shares; a thread cannot be ended from outside without tearing what it holds.
        thread.detach();
        return;
    }
    LogThread("Done waiting for thread exit: ", name);
    if (thread.joinable()) thread.join();
}

void CThreadManager::KillThread(ForkRecord& fork, bool removeB, bool selfB) {
    const std::string name = NameOf(fork);
    if (fork.kind == ForkKind::kCooperative) DropCooperative();
    if (selfB) {   // it runs this very line: joined by whoever forks next, or at the end
        const CMutex::Scope guard(*fork.mapP);
        const auto keepP = fork.mapP->i_forks.find(fork.id);
        if (keepP == fork.mapP->i_forks.end()) return;
        fork.mapP->i_ended.push_back(std::move(fork.thread));
        fork.mapP->i_forks.erase(keepP);
    } else if (removeB) {
        const CMutex::Scope guard(*fork.mapP);
        const auto keepP = fork.mapP->i_forks.find(fork.id);
        if (keepP == fork.mapP->i_forks.end()) return;
        fork.mapP->i_released.push_back(keepP->second);
        fork.mapP->i_forks.erase(keepP);
    } else {
        LogThread("Waiting on thread exit: ", name);
        if (IsNoKill(name)) LogThread("Thread blocking: ", name.empty() ? "### UNKNOWN THREAD ###" : name);
        WaitForFork(fork, [&] { return fork.endedB.load(std::memory_order_acquire); });
        ReleaseThread(fork);
        EraseRecord(fork);
    }
    LogThread("Thread killed: ", name);
}

void CThreadManager::KillTimer(ForkRecord& fork) {
    if (!Assert(fork.timerDataP)) return EraseRecord(fork);
    std::string name = NameOf(fork);
    if (IsNoKill(name)) {
        name.erase(0, std::string_view(kFork_NoKillZ).size());
        WaitForFork(fork, [&] { return fork.completeB.load() || fork.timerDataP == nullptr; });
    }
    EraseRecord(fork);
    if (fork.timerDataP == nullptr) return;   // it went while we waited
    if (fork.runningB.load())
        fork.deleteAfterB = true;   // a kill from within: its own lines must end first
    else
        delete fork.timerDataP;
    LogThread("Timer killed: ", name);
}

void CThreadManager::KillRecord(ForkRecord& fork, bool removeB, bool selfB) {
    LogThread("Killing thread: ", NameOf(fork));
    if (IsTimer(fork.kind))
        KillTimer(fork);
    else
        KillThread(fork, removeB, selfB);
}

void CThreadManager::Kill(ForkID id, bool removeB, bool selfB) {
    LogIf(LogSwitch::kThreads, "Searching for thread to kill");
    const std::shared_ptr<ForkRecord> forkP = Find(id);
    if (!forkP) return LogIf(LogSwitch::kThreads, "Thread must have already died");
    const std::string name = NameOf(*forkP);
    LogThread("Found Thread: ", name);
    if (IsTimer(forkP->kind) && !IsLoopThread()) {
        // A timer goes on the main thread, whoever kills it. Refused: the manager's end takes it.
        const auto kill = [id] {
            Kill(id, false, false);
            return noErr;
        };
        if (IsPreemptiveThread())
            (void)CallOnMain("kill timer", kill);
        else
            PostToMain("kill timer", kill);
        return;
    }
    bool ownB = false;
    {
        const CMutex::Scope guard(*forkP->mapP);
        ownB = forkP->thread.get_id() == std::this_thread::get_id();
    }
    if (!AssertWords(!ownB || selfB, "a thread waits for its own end")) return;
    if (forkP->killCountS.fetch_add(1) != 0 && !selfB) return LogThread("Thread is being killed elsewhere: ", name);
    KillRecord(*forkP, removeB, selfB);
}

void CThreadManager::SetNoKill(ForkID id) {
    const auto forkP = Find(id);
    if (!forkP) return;
    const CMutex::Scope guard(*forkP->mapP);
    if (!IsNoKill(forkP->name)) forkP->name.insert(0, kFork_NoKillZ);
}

void CThreadManager::KillAll() {
    const auto next = [this]() -> std::shared_ptr<ForkRecord> {
        const CMutex::Scope guard(*i_forksP);
        for (const auto& [id, forkP] : i_forksP->i_forks)
            if (forkP->killCountS.load() == 0) return forkP;
        return nullptr;
    };
    while (const auto forkP = next()) {
        LogThread("Next thread to kill: ", NameOf(*forkP));
        Kill(forkP->id, false, false);
    }
    // Those that another thread is killing, or that are at their own last lines, take themselves out of the map.
    const auto emptyB = [this] {
        const CMutex::Scope guard(*i_forksP);
        return i_forksP->i_forks.empty();
    };
    WaitForEnd(emptyB, [] { return kKill_WaitT; });
    std::vector<std::shared_ptr<ForkRecord>> last;
    {
        const CMutex::Scope guard(*i_forksP);
        last.swap(i_forksP->i_released);
        for (auto& [id, forkP] : i_forksP->i_forks)
            if (!IsTimer(forkP->kind)) last.push_back(forkP);
        i_forksP->i_forks.clear();
    }
    for (const auto& forkP : last) {
        WaitForFork(*forkP, [&] { return forkP->endedB.load(std::memory_order_acquire); });
        ReleaseThread(*forkP);
    }
}
