#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "Platform/CMainLoop.h"
#include "Threads/ForkRecord.h"

/** A timer's link to the main loop.
    Threads  Arm and the destructor on the main thread; GetFireInterval from any.
    Owner    the map of forks. */
class APP_TimerForkData {
public:
    APP_TimerForkData(const char* nameZ, double intervalF);
    /** Takes the timer out of the loop: it is not called any more, whatever was due. */
    virtual ~APP_TimerForkData();
    APP_TimerForkData(const APP_TimerForkData&) = delete;
    APP_TimerForkData& operator=(const APP_TimerForkData&) = delete;

    [[nodiscard]] virtual double GetFireInterval() const { return i_fireIntervalF.load(std::memory_order_acquire); }
    /** Seconds; -1.0 is off. */
    virtual void SetFireInterval(double seconds);
    virtual OSErr Fire() { return noErr; }
    virtual OSErr Complete(OSErr err) { return err; }

    [[nodiscard]] const std::string& Name() const noexcept { return i_name; }
    /** 0 when the fork was refused. */
    [[nodiscard]] ForkID GetForkID() const noexcept { return i_forkP ? i_forkP->id : 0; }

    /** Enters this timer as `forkP`; by CThreadManager. */
    void Attach(std::shared_ptr<ForkRecord> forkP) { i_forkP = std::move(forkP); }
    /** Sets the timer of the loop to the present interval. Main thread. */
    void Arm();

protected:
    void Apply(double seconds);   // stores it and arms
    [[nodiscard]] const std::shared_ptr<ForkRecord>& Fork_() const noexcept { return i_forkP; }

private:
    void Disarm();

    const std::string i_name;
    CMainLoop::TimerID i_timerRef = 0;   // main thread only; 0 before the first Arm
    std::atomic<double> i_fireIntervalF;
    std::shared_ptr<ForkRecord> i_forkP;
};

/** The interval as the loop takes it: milliseconds, truncated; off and what does not fit become 0x7FFFFFFF. */
[[nodiscard]] std::uint32_t TimerMilliseconds(double seconds) noexcept;
