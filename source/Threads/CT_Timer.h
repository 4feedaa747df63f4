#pragma once
#include "Threads/APP_TimerForkData.h"

/** A timer of the main thread. Timer answers noErr (fire again after the interval), timerKeepErr (leave it as it is),
    timerDisposeErr or any other status (the end of the timer).
    Units    seconds; -1.0 is off.
    Threads  made on the main thread (armed at once) or on another (armed by its first SetFireInterval, when its
             constructor is surely over). Timer, Fire and the destructor on the main thread. SetFireInterval, Restart
             and Dispose from any, as long as the object is known to live; SetInterval, by identifier, always.
    Owner    on the heap; it belongs to the map of forks and goes with its fork, or when it is deleted earlier. It may
             be deleted or killed from within its own Timer. While it runs it does not fire again inside itself. */
class CT_Timer : public APP_TimerForkData {
public:
    CT_Timer(const char* nameZ, double intervalF, bool idleB = false);
    ~CT_Timer() override;

    void SetFireInterval(double seconds) override;
    OSErr Fire() override;
    virtual void Restart() { SetFireInterval(GetFireInterval()); }
    virtual OSErr Timer() = 0;
    /** The next time it comes up is its end. */
    virtual void Dispose() { i_disposeB.store(true, std::memory_order_release); }

    /** Sets the interval of the timer if it still lives. Any thread. */
    static void SetInterval(ForkID id, double seconds);
    /** The user wants something while a timer runs: it must not fire again before it is over. Main thread. */
    static void HoldBackCurrent();
    /** The innermost timer that runs; null without. Main thread. */
    [[nodiscard]] static CT_Timer* Current();

private:
    const bool i_idleB;
    std::atomic<bool> i_disposeB{false};
    bool i_pendingIntervalB = false;    // held back while it runs
    double i_pendingIntervalF = -1.0;   // what to set after the run
};
