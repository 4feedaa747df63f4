#pragma once
#include <atomic>
#include <functional>
#include <mutex>
#include <vector>

/** The wish that a piece of work end, and whom to wake for it: who waits need not look again and again.
    Threads  any.
    Owner    shared by who may ask for the end and who works. */
class CCancelSignal {
public:
    /** Runs the hooks, on this thread; a second call does nothing. A hook may let the owner of this go. */
    void Cancel();
    [[nodiscard]] bool IsCancelled() const noexcept { return i_cancelledB.load(); }
    /** `hook` is called once, by Cancel, or now if that has been. It is short, waits for nothing, and may find that
        what it was to wake has gone. */
    void OnCancel(std::function<void()> hook);

private:
    std::mutex i_lock;                            // guards the hooks, and the change of the flag
    std::vector<std::function<void()>> i_hooks;   // empty once cancelled
    std::atomic<bool> i_cancelledB{false};
};
