#pragma once
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <vector>

/** A kind of deferred event: four characters. */
using PostEventKind = std::uint32_t;
[[nodiscard]] constexpr PostEventKind PostEventCode(const char (&text)[5]) noexcept {
    PostEventKind kind = 0;
    for (int n = 0; n < 4; ++n) kind = kind << 8 | static_cast<unsigned char>(text[n]);
    return kind;
}
inline constexpr PostEventKind kPostEvent_Call = PostEventCode("Call");

/** Events put off until the end of a pass of the run loop, and the calls to the main thread that came while there was
    no window to catch them. Order    events are taken from the newest to the oldest; the calls among them run last, in
    the order of their posting, as they would have from the message queue.
    Threads  Add and AddCall from any; the rest on the main thread. No lock is held while an event is handled.
    Errors   a call that never ran is destroyed with the list, which tells whoever waits for it. */
class CPostEventList {
public:
    using Call = std::function<void()>;
    using Handler = std::function<void(PostEventKind kind, long dataL)>;

    void Add(PostEventKind kind, long dataL);
    void AddCall(Call call);

    /** Handles all that was there at the start of the call: the rest by `handler`, the calls by running them. */
    void Run(const Handler& handler);
    /** Runs the calls alone: what a wait on the main thread does. True when one ran. */
    bool DrainCalls();
    [[nodiscard]] bool IsEmpty() const;

private:
    struct Event {
        PostEventKind kind;
        long dataL;
        Call call;   // for kPostEvent_Call
    };
    void MoveCallsToPending();   // under i_lock
    bool RunPending();

    mutable std::mutex i_lock;   // guards all below
    std::vector<Event> i_events;
    std::deque<Call> i_pending;
};
