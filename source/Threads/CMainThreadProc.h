#pragma once
#include <atomic>
#include <cstdint>

#include "Platform/OSErr.h"
#include "Threads/CSemaphore.h"
#include "Threads/ThreadInfo.h"

/** Where a call object lives: kNo is the heap, and it deletes itself once it is done. */
enum class StackHeld : bool { kNo, kYes };
enum class CallMode : short {
    kNoWait = 0,   // in place on the main thread, else posted
    kWait = 1,     // in place on the main thread, else posted and waited for
    kPost = 2,     // always posted, not waited for
};

/** A call to be run on the main thread. Subclasses are named MT_... or CMainThread_...; ids go in, a status comes out.
    Threads  made and called on any; Operate runs on the main thread, in the order of posting, with no lock of this
             layer held. On a cooperative thread, which counts as the main thread, it runs in place.
    Owner    a heap object belongs to itself from Call, Fork or Post on: do not touch it afterwards. One on the stack
             must be called with kWait.
    Errors   the status of Operate; abortErr when there is no application to run it (any more). An exception of Operate
             is logged and becomes abortErr. */
class CMainThreadProc {
public:
    /** `nameZ` is for logs and must stay. */
    explicit CMainThreadProc(const char* nameZ, StackHeld held = StackHeld::kNo);
    virtual ~CMainThreadProc();
    CMainThreadProc(const CMainThreadProc&) = delete;
    CMainThreadProc& operator=(const CMainThreadProc&) = delete;

    /** Deletes the object unless the stack holds it. */
    virtual void Dispose();
    /** Runs the call on a new preemptive thread; 0 when none can be started. `syncB` must be false. */
    virtual ForkID Fork(bool syncB);
    virtual OSErr Call(CallMode mode);
    /** Runs it here and now, then Done. */
    virtual OSErr Execute();
    /** Hands it to the main thread's queue. abortErr when there is none; the call is over then. */
    virtual OSErr Post();
    /** From now on posted by way of "Main Thread Que". */
    void RouteThroughQue() { i_routeB = true; }
    [[nodiscard]] const char* Name() const noexcept { return i_nameZ; }

protected:
    /** The body of the call. */
    virtual OSErr Operate() = 0;
    /** Lets the waiting caller go on, or disposes of a call that nobody waits for. Last: the object may be gone after
        it. */
    virtual void Done();

private:
    class Ticket;

    const char* const i_nameZ;
    CSemaphore i_semaphore;
    bool i_syncB = false;   // the caller waits; set before the posting
    bool i_stackB;
    bool i_routeB = false;   // through "Main Thread Que"
    OSErr i_err = noErr;     // of Operate; stored before the semaphore is signalled
};
