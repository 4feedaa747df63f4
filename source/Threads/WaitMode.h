#pragma once
#include <cstdint>

/** How a wait passes its time; stands in the place of a time in milliseconds. */
enum class WaitMode : std::uint32_t {
    kForever = 0x7FFFFFFF,            // no limit
    kMain_TimersPaint = 0x7FFFFFFE,   // the main thread handles timers and paint, when there is an application
    kMain_EventLoop = 0x7FFFFFFD,     // the main thread runs the whole event loop
    kTimersPaint = 0x7FFFFFFC,        // timers and paint, also when no application exists
    kYieldOnly = 0x7FFFFFFB,          // only yields to cooperative threads
};

/** Blocks for `seconds` while keeping the main thread alive: a plain sleep on a preemptive thread; on the main thread
    turns of at most 0.01 s of what `mode` says. A cooperative thread gives up the processor until the time is over.
    Returns when the time is over; a long message may make it late. */
void Wait(double seconds, WaitMode mode = WaitMode::kMain_TimersPaint);

/** One turn of a wait on the main thread: at most one call, one paint and one timer message, then the calls that were
    posted before the application was ready. A timer that runs is held back when the user did something. Elsewhere:
    nothing. True when something was dispatched. */
bool PumpLimited();
/** One turn of `mode` on the main thread, without waiting; true when something was dispatched. */
bool PumpTurn(WaitMode mode);
/** One turn of a wait for something that another thread does: 0.01 s at most, whatever the clock says. The main thread pumps
    (PumpLimited) and sleeps in its loop, others just sleep. */
void WaitOneTurn();
/** Gives up the processor once when cooperative threads live. */
void YieldToCooperative();

/** The longest turn of a wait, in seconds. */
inline constexpr double kWait_TurnT = 0.01;
