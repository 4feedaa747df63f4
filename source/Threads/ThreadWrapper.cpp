#include <exception>
#include <new>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Threads/APP_TimerForkData.h"
#include "Threads/CMutex.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ForkRecord.h"
#include "Threads/LogThread.h"
#include "Threads/MT_Completion.h"
#include "Threads/ThreadInfo.h"

namespace {

/** The entry routine; what it throws ends here, at the edge of the thread. */
OSErr RunEntry(ForkRecord& fork, const std::string& name) {
    struct Running {
        explicit Running(std::atomic<bool>& runningB) : i_runningB(runningB) { i_runningB.store(true); }
        ~Running() { i_runningB.store(false); }
        std::atomic<bool>& i_runningB;
    };
    const Running running(fork.runningB);
    LogThread("calling proc: ", name);
    try {
        return fork.entry ? fork.entry(fork.dataP) : paramErr;
    } catch (const std::bad_alloc&) {
        LogF("### Error thread %s: out of memory", name.c_str());
        return memFullErr;
    } catch (const std::exception& thrown) {
        LogF("### Error thread %s: %s", name.c_str(), thrown.what());
        return abortErr;
    }
}

/** Runs the completion on the main thread; the first failure of the two. */
OSErr RunCompletion(const std::shared_ptr<ForkRecord>& forkP, OSErr err, const std::string& name) {
    forkP->lastResult.store(err);
    if (!forkP->completion) {
        forkP->completeB.store(true);
        return err;
    }
    LogThread("Completing Thread: ", name);
    auto* const procP = new MT_Completion(forkP);   // its own owner from Call on
    const OSErr doneErr = procP->Call(CallMode::kWait);
    // Refused when the thread outlived the application: then nobody completes it, and that is no fault of ours.
    const bool refusedB = doneErr == abortErr && !forkP->completeB.load();
    if (!refusedB) AssertWords(forkP->completeB.load(), "forkInfoP->completeB");
    return FirstOf(err, doneErr);
}

/** Raises the kill count; the fork that nobody kills ends itself. */
void EndFork(ForkRecord& fork, const std::string& name) {
    LogThread("Thread completed: ", name);
    if (fork.killCountS.fetch_add(1) != 0) return;
    CThreadManager::KillRecord(fork, false, true);
    LogF("Thread Exited Gracefully: %s\n", name.c_str());
}

OSErr TimerBody(const std::shared_ptr<ForkRecord>& forkP, const std::string& name) {
    AssertWords(g_threadIndexL.get() != nullptr, "g_threadIndexL.get() != NULL");
    AssertWords(g_preemptiveB.get() != nullptr, "g_preemptiveB.get() != NULL");
    if (forkP->timerDataP == nullptr || forkP->runningB.load()) return noErr;   // gone, or inside itself: not again
    const CScopedThreadIndex index(-forkP->id);
    if (forkP->kind == ForkKind::kIdleTimer) {
        const double idleT = CThreadHost::Get()->MainLoop().IdleSeconds();
        if (idleT >= 0 && idleT < forkP->timerDataP->GetFireInterval()) return noErr;   // stays armed
    }
    OSErr err = RunEntry(*forkP, name);
    if (forkP->deleteAfterB && forkP->timerDataP != nullptr) {   // killed while it ran
        delete forkP->timerDataP;
        return noErr;
    }
    if (err == timerRearmErr || forkP->timerDataP == nullptr) return noErr;
    if (err == timerDisposeErr) err = noErr;
    err = RunCompletion(forkP, err, name);
    EndFork(*forkP, name);
    return err;
}

OSErr ThreadBody(const std::shared_ptr<ForkRecord>& forkP, const std::string& name) {
    const bool preemptiveB = forkP->kind == ForkKind::kPreemptive;
    AssertWords(g_threadIndexL.get() == nullptr, "g_threadIndexL.get() == NULL");
    TagThread(preemptiveB ? NextThreadIndex() : -forkP->id, preemptiveB);
    LogThread("installing thread crash reporter: ", name);
    std::unique_ptr<ScopedCrashReporter> reporterP;
    CThreadHost::With([&](CThreadHost& host) { reporterP = host.InstallCrashReporter(name); });
    if (CLog::Get().IsOn(LogSwitch::kThreads)) LogF("Entering thread: %s\n", name.c_str());
    OSErr err = RunEntry(*forkP, name);
    if (err != timerRearmErr) {
        if (err == timerDisposeErr) err = noErr;
        err = RunCompletion(forkP, err, name);
    } else
        err = noErr;          // this run does not complete the fork; the thread ends all the same
    forkP->entry = nullptr;   // what they hold ends on its own thread, before the fork is gone
    forkP->completion = nullptr;
    EndFork(*forkP, name);
    return err;
}

}   // namespace

OSErr ThreadWrapper(const std::shared_ptr<ForkRecord>& forkP) {
    const std::string name = NameOf(*forkP);
    LogThread("Entering Thread: ", name);
    return IsTimer(forkP->kind) ? TimerBody(forkP, name) : ThreadBody(forkP, name);
}
