#pragma once
#include <functional>
#include <utility>

#include "Threads/CCancelSignal.h"
#include "Threads/CMainThreadProc.h"
#include "Threads/CMutex.h"

/** Base of the calls that a long task makes at its end, and by which it learns meanwhile that it has been cancelled.
    Abort and IsAborted from any thread, as long as the object is there. */
class CS_MainThread_AbortProc : public CMainThreadProc {
public:
    explicit CS_MainThread_AbortProc(const char* nameZ = "abort proc", StackHeld held = StackHeld::kNo)
        : CMainThreadProc(nameZ, held) {}

    virtual void Abort() { i_cancel.Cancel(); }
    [[nodiscard]] virtual bool IsAborted() const { return i_cancel.IsCancelled(); }
    /** Who is to be woken by Abort. */
    void OnAbort(std::function<void()> hook) { i_cancel.OnCancel(std::move(hook)); }
    /** How the task ended; told to the main thread by the call. */
    void SetResult(OSErr err) { i_result.Set(err); }
    /** abortErr once cancelled, whatever the task says. */
    OSErr Result() const { return IsAborted() ? abortErr : i_result.Get(); }

private:
    CCancelSignal i_cancel;
    CMutexT<OSErr> i_result;
};
