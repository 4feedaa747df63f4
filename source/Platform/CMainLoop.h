#pragma once
#include <cstdint>
#include <functional>

/** What a message is about; a set of them is a mask. */
enum class MessageKind : unsigned {
    kCall = 1,    // posted by any thread
    kTimer = 2,   // a timer's time has come
    kPaint = 4,   // a window wants to be drawn
    kInput = 8,   // the user did something; all that is none of the others
};
using MessageKinds = unsigned;
[[nodiscard]] constexpr MessageKinds operator|(MessageKind a, MessageKind b) noexcept {
    return static_cast<unsigned>(a) | static_cast<unsigned>(b);
}
inline constexpr MessageKinds kMessage_All = 15;

/** The message queue of the main thread. Two forms: plain (a condition variable and a timer heap) and Qt.
    Threads  Post and Wake from any; all else on the thread that made the loop. */
class CMainLoop {
public:
    using Proc = std::function<void()>;
    /** 0 is none. */
    using TimerID = std::uint32_t;

    virtual ~CMainLoop() = default;

    /** Runs `proc` on the main thread, in the order of posting. Never blocks on the main thread. */
    virtual void Post(Proc proc) = 0;
    /** Wakes a Wait that is under way. */
    virtual void Wake() = 0;

    /** A timer that fires every `milliseconds` until killed; `existing` is set anew when it is not 0.
        A message that fell due before the call is not delivered after it. Late firings are not made up. */
    virtual TimerID SetTimer(TimerID existing, std::uint32_t milliseconds, Proc proc) = 0;
    virtual void KillTimer(TimerID timer) = 0;

    /** Dispatches at most one waiting message of each kind asked for, calls first; true when one was dispatched.
        May be called from within a message. Never waits. */
    virtual bool PumpOne(MessageKinds kinds) = 0;
    /** Waits until a message of `kinds` is there, Wake is called or `seconds` are over; may return early. Runs no call,
        no timer and no user message; a window system may paint meanwhile. A Wake between two waits ends the next one at
        once. */
    virtual void Wait(double seconds, MessageKinds kinds = kMessage_All) = 0;
    /** True when a user message waits; a timer that runs is held back before such a message is handled. */
    [[nodiscard]] virtual bool InputWaits() const = 0;
    /** Throws away waiting mouse and keyboard messages. */
    virtual void FlushInput() = 0;
    /** Seconds since the user's last input; a negative number when the machine cannot tell. */
    [[nodiscard]] virtual double IdleSeconds() const = 0;
};
