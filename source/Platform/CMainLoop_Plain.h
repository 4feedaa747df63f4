#pragma once
#include <condition_variable>
#include <deque>
#include <mutex>

#include "Platform/CMainLoop.h"
#include "Platform/CTimerTable.h"

/** The main loop without a window system: a condition variable for what comes from other threads, a table of timers.
    It serves the headless program, the command line and most tests. User messages exist only as far as someone posts
    them (PostInput).
    Threads  Post, PostInput and Wake from any; all else on the thread that made it.
    Errors   a proc that was never run is destroyed with the loop, on the loop's thread. */
class CMainLoop_Plain final : public CMainLoop {
public:
    CMainLoop_Plain() = default;
    ~CMainLoop_Plain() override;
    CMainLoop_Plain(const CMainLoop_Plain&) = delete;
    CMainLoop_Plain& operator=(const CMainLoop_Plain&) = delete;

    void Post(Proc proc) override;
    void Wake() override;
    TimerID SetTimer(TimerID existing, std::uint32_t milliseconds, Proc proc) override;
    void KillTimer(TimerID timer) override;
    bool PumpOne(MessageKinds kinds) override;
    void Wait(double seconds, MessageKinds kinds = kMessage_All) override;
    [[nodiscard]] bool InputWaits() const override;
    void FlushInput() override;
    [[nodiscard]] double IdleSeconds() const override;

    /** A user message: `proc` is what handling it does. Also the moment of the last input. */
    void PostInput(Proc proc);

private:
    bool RunFront(std::deque<Proc>& queue);

    CTimerTable i_timers;
    mutable std::mutex i_lock;   // guards all below; never held while a proc runs or dies
    std::condition_variable i_wakeUp;
    std::deque<Proc> i_calls;
    std::deque<Proc> i_inputs;
    bool i_wokenB = false;
    double i_inputT = -1.0;   // when the last input came; negative before the first
};
