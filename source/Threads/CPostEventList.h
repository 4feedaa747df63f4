#pragma once
#include <deque>
#include <functional>
#include <mutex>

/** The calls to the main thread that came while there was no window to catch them: run by the passes of the run loop and
    by what waits on the main thread, in the order of their posting, as they would have been from the message queue.
    Threads  AddCall from any; the rest on the main thread. No lock is held while a call runs.
    Errors   a call that never ran is destroyed with the list, which tells whoever waits for it. */
class CPostEventList {
public:
    using Call = std::function<void()>;

    void AddCall(Call call);
    /** Runs those there are; one that comes meanwhile waits for the next round. True when one ran. */
    bool DrainCalls();
    [[nodiscard]] bool IsEmpty() const;

private:
    mutable std::mutex i_lock;   // guards all below
    std::deque<Call> i_calls;
    std::deque<Call> i_pending;   // of the round that runs; one within it takes them over
};
