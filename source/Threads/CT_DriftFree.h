#pragma once
#include <condition_variable>
#include <mutex>

#include "Threads/CMutex.h"
#include "Threads/CT_Preemptive.h"

/** A thread that calls Tick on a fixed grid: it sleeps until the next point of the grid, not for a period, so that no
    error adds up. A tick that was late shortens the sleeps after it; lost ticks are made up without sleeping. When
    there is nothing to do it rests until it is woken, and the grid begins there. Units the period in microseconds; a
    new one holds from the next tick on.
    Threads  Tick on its own; the rest from any, as long as the object is known to live. */
class CT_DriftFree : public CT_Preemptive {
public:
    void SetPeriod(long microseconds) { i_periodL.Set(microseconds); }
    [[nodiscard]] long Period() const { return i_periodL.Get(); }
    /** The thread ends after the tick under way; a sleep is cut short. */
    virtual void Stop();
    /** There is something to do again. */
    void Wake();
    [[nodiscard]] bool IsStopped() const { return i_stopB.Get(); }

protected:
    CT_DriftFree(const char* nameZ, long periodMicroseconds);
    /** False: nothing will be to do before Wake. */
    virtual bool Tick() = 0;
    OSErr Operate(OSErr err) final;

private:
    void SleepUntil(double whenT);
    void Rest();

    CMutex_long i_periodL;
    CMutex_bool i_stopB;
    std::mutex i_sleepLock;   // for the condition and i_wokenB
    bool i_wokenB = false;
    std::condition_variable i_stopped;
};
