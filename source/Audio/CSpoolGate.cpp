#include "Audio/CSpoolGate.h"

#include <algorithm>

#include "Threads/CSemaphore.h"

struct CSpoolGate::Waiter {
    const long numberL;
    CSemaphore semaphore{"i_firstWriteB"};
};

long CSpoolGate::Next() {
    const std::scoped_lock guard(i_lock);
    return ++i_latestL;
}

long CSpoolGate::Latest() const {
    const std::scoped_lock guard(i_lock);
    return i_latestL;
}

void CSpoolGate::Reach(long numberL) {
    const std::scoped_lock guard(i_lock);
    i_reachedL = std::max(i_reachedL, std::min(numberL, i_latestL));
    for (Waiter* waiterP : i_waiters)
        if (waiterP->numberL <= i_reachedL) waiterP->semaphore.Signal();
}

void CSpoolGate::ForceOpen() {
    const std::scoped_lock guard(i_lock);
    i_forcedB = true;
    for (Waiter* waiterP : i_waiters) waiterP->semaphore.Signal();
}

bool CSpoolGate::IsOpen(long numberL) const {
    const std::scoped_lock guard(i_lock);
    return Passes(numberL);
}

void CSpoolGate::Wait(long numberL, WaitMode mode) {
    Waiter waiter{numberL};
    {
        const std::scoped_lock guard(i_lock);
        if (Passes(numberL)) return;
        i_waiters.push_back(&waiter);
    }
    // Not the semaphore's status but the number decides: the wait of a host that goes away may end early.
    while (!IsOpen(numberL)) {
        if (Failed(waiter.semaphore.Wait(mode))) continue;
    }
    const std::scoped_lock guard(i_lock);
    i_waiters.remove(&waiter);
}
