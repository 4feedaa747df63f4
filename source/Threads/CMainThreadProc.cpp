#include "Threads/CMainThreadProc.h"

#include <exception>
#include <memory>
#include <utility>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Threads/CMutex_ThreadQue_MainThread.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

/** A posted call on its way. If the way ends before it was run - a loop that is destroyed, a queue that drops it - its
    caller is told, and nobody waits for ever. */
class CMainThreadProc::Ticket {
public:
    explicit Ticket(CMainThreadProc* procP) : i_procP(procP) {}
    ~Ticket() {
        if (i_procP == nullptr) return;
        i_procP->i_err = abortErr;
        i_procP->Done();
    }
    Ticket(const Ticket&) = delete;
    Ticket& operator=(const Ticket&) = delete;
    OSErr Run() { return std::exchange(i_procP, nullptr)->Execute(); }

private:
    CMainThreadProc* i_procP;
};

CMainThreadProc::CMainThreadProc(const char* nameZ, StackHeld held)
    : i_nameZ(nameZ), i_semaphore("mainthread"), i_stackB(held == StackHeld::kYes) {}

CMainThreadProc::~CMainThreadProc() {
    i_syncB = true;
    i_stackB = true;
}

void CMainThreadProc::Dispose() {
    if (!i_stackB) delete this;
}

ForkID CMainThreadProc::Fork(bool syncB) {
    Assert(syncB == false);
    const auto ticketP = std::make_shared<Ticket>(this);
    return CThreadManager::Fork(
        ForkKind::kPreemptive, [ticketP](void*) { return ticketP->Run(); }, {}, nullptr, "Main Thread Fork Preemptive");
}

OSErr CMainThreadProc::Call(CallMode mode) {
    i_syncB = false;
    if (mode != CallMode::kPost && !IsPreemptiveThread()) return Execute();
    if (i_stackB && mode != CallMode::kWait) {
        AssertWords(false, "!i_stackB || mode == CallMode::kWait");
        if (IsMainThread()) return Execute();   // nothing may be left behind that points to the stack
        mode = CallMode::kWait;
    }
    if (mode != CallMode::kWait) return Post();
    i_semaphore.Reset();
    i_err = noErr;
    i_syncB = true;
    if (const OSErr err = Post(); Failed(err)) {
        // Signalled all the same: the wait below returns at once with this very status.
        LogIf(LogSwitch::kThreads, std::string("main thread call refused: ") + i_nameZ);
    }
    const OSErr waitErr = i_semaphore.Wait(WaitMode::kForever);
    const OSErr err = FirstOf(i_err, waitErr);
    Dispose();
    return err;
}

OSErr CMainThreadProc::Execute() {
    OSErr err = abortErr;
    {
        const CThreadManager::ScopedExecuting executing;
        try {
            err = Operate();
        } catch (const std::exception& thrown) {
            LogF("### Error %s: %s", i_nameZ, thrown.what());
        }
    }
    i_err = err;
    Done();
    return err;
}

OSErr CMainThreadProc::Post() {
    const auto ticketP = std::make_shared<Ticket>(this);
    if (i_routeB) {
        const auto mtqP = CThreadManager::MainThreadQue();
        if (!Assert(mtqP)) return abortErr;
        return mtqP->Add(CT_QueElement([ticketP](CT_QueElement&) { return ticketP->Run(); },
                                       [](CT_QueElement&, OSErr err) { return err; }));
    }
    bool nowhereB = false;
    const bool postedB = CThreadHost::With([&](CThreadHost& host) {
        const bool windowB = host.HasMainWindow();
        if (!windowB && !host.IsAppReady()) {
            host.PostEvents().AddCall([ticketP] { (void)ticketP->Run(); });
            return host.MainLoop().Wake();
        }
        nowhereB = !windowB;
        host.MainLoop().Post([ticketP] { (void)ticketP->Run(); });   // its caller gets the status
    });
    AssertWords(!nowhereB, "posting an event with no main window to catch it");
    return postedB ? noErr : abortErr;
}

void CMainThreadProc::Done() {
    if (i_syncB)
        i_semaphore.Signal();
    else
        Dispose();
}
