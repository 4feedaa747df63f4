#pragma once
#include <list>
#include <mutex>

#include "Threads/WaitMode.h"

/** Lets waits through up to a number: whoever waits for something takes the next number, whoever brings it about says
    how far it has come. Several may wait at once, also one below another on the main thread's stack; none takes
    another's signal.
    Threads  any. It outlives its waits. */
class CSpoolGate {
public:
    /** The number of what is waited for from now on; the first is 1. */
    long Next();
    [[nodiscard]] long Latest() const;
    /** Lets all waits up to `numberL` through. */
    void Reach(long numberL);
    /** Nobody waits here any more. */
    void ForceOpen();
    [[nodiscard]] bool IsOpen(long numberL) const;
    void Wait(long numberL, WaitMode mode);

private:
    struct Waiter;
    [[nodiscard]] bool Passes(long numberL) const { return i_forcedB || numberL <= i_reachedL; }

    mutable std::mutex i_lock;   // guards all below; nothing is locked under it but a waiter's semaphore
    std::list<Waiter*> i_waiters;
    long i_latestL = 0;    // the last number given out
    long i_reachedL = 0;   // only grows, and never passes i_latestL
    bool i_forcedB = false;
};
