#pragma once
#include <cstdint>
#include <memory>

#include "Platform/OSErr.h"
#include "Threads/WaitMode.h"

/** A signal that one wait takes. The main thread keeps its messages flowing while it waits.
    Threads  any. It may be destroyed under its waiters: they return with the stored status.
    Errors   semaphoreGoneErr without a condition object, semaphoreTimedOutErr from WaitPreemptive alone. */
class CSemaphore {
public:
    /** `nameZ` is for logs and must stay. */
    explicit CSemaphore(const char* nameZ);
    ~CSemaphore();
    CSemaphore(const CSemaphore&) = delete;
    CSemaphore& operator=(const CSemaphore&) = delete;

    /** Lets one wait go on, the next one when nobody waits now. `forceB` disposes: all go on, none waits any more. */
    void Signal(bool forceB = false);
    /** Takes back a signal that nobody took, and the stored status. */
    void Reset();
    /** Until signalled, whatever the mode: the mode says how the main thread passes the time. */
    OSErr Wait(WaitMode mode);
    /** Until signalled; `milliseconds` limit one turn, not the wait. */
    OSErr Wait(std::uint32_t milliseconds);
    /** The wait of a preemptive thread with a real limit. */
    OSErr WaitPreemptive(std::uint32_t milliseconds);
    /** What waits answer once it is disposed. */
    void SetErr(OSErr err);
    [[nodiscard]] const char* Name() const noexcept { return i_nameZ; }

private:
    struct State;   // shared with whoever is inside a call: the object may go meanwhile
    static OSErr WaitOn(const std::shared_ptr<State>& stateP, WaitMode mode, double turnT);

    const char* i_nameZ;
    std::shared_ptr<State> i_stateP;
};
