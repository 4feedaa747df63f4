#pragma once
#include <semaphore.h>

/** Wakes one thread from another. Signals given before a wait are kept, as one.
    Threads  Signal from any, a real-time one too: it takes no lock. Wait on one thread at a time. */
class CWakeSignal {
public:
    CWakeSignal();
    ~CWakeSignal();
    CWakeSignal(const CWakeSignal&) = delete;
    CWakeSignal& operator=(const CWakeSignal&) = delete;

    void Signal() noexcept;
    /** Until signalled, or the time is over. */
    void Wait(double seconds) noexcept;

private:
    sem_t i_semaphore;
};
