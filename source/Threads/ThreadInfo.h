#pragma once
#include <cstdint>
#include <memory>

/** What the thread manager knows a thread or a timer by; 0 for none. */
using ForkID = std::int32_t;

/** Who runs this line. A value belongs to its thread and ends with it.
    g_threadIndexL   0 or unset on the main thread; positive on a preemptive thread; minus the fork's identifier on a
                     cooperative thread, and on the main thread while a timer runs.
    g_preemptiveB    true on preemptive threads. */
extern thread_local std::unique_ptr<std::int32_t> g_threadIndexL;
extern thread_local std::unique_ptr<bool> g_preemptiveB;

/** True on a preemptive thread, which must never touch the main thread's objects. */
[[nodiscard]] bool IsPreemptiveThread() noexcept;
/** Its negation: a cooperative thread counts as part of the main thread's world. */
[[nodiscard]] bool IsMainThread() noexcept;
/** True on the one thread that pumps messages (CThreadHost::Install). Timers are set and messages handled there alone,
    which "main thread" in the sense above is too wide for. */
[[nodiscard]] bool IsLoopThread() noexcept;

/** Sets the two values of the calling thread. The main thread does so at the start. */
void TagThread(std::int32_t indexL, bool preemptiveB);
/** The next index for a preemptive thread; the first is 1. */
[[nodiscard]] std::int32_t NextThreadIndex();

/** Another thread index for as long as the object lives: a timer's, on the main thread. */
class CScopedThreadIndex {
public:
    explicit CScopedThreadIndex(std::int32_t indexL);
    ~CScopedThreadIndex();
    CScopedThreadIndex(const CScopedThreadIndex&) = delete;
    CScopedThreadIndex& operator=(const CScopedThreadIndex&) = delete;

private:
    std::int32_t i_beforeL;
};
