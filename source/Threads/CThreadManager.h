#pragma once
#include <memory>
#include <string>
#include <vector>

#include "Threads/CForkMap.h"
#include "Threads/ForkRecord.h"

class APP_TimerForkData;
class CMutex_ThreadQue_MainThread;

/** All forks of the process: threads, timers, and "Main Thread Que". One at a time; the application owns it.
    Threads  made and destroyed on the main thread; the static operations from any, also before and after its life (they
             answer 0 or nothing then).
    Errors   a thread that cannot be started is reported, and the fork's identifier is 0. */
class CThreadManager {
public:
    CThreadManager();
    /** "Killing all threads": waits 4 s for each, longer for "No Kill: " names. A thread that lives on then is left
        alone: its memory stays, and the process must end by _exit (LeftThreads). */
    ~CThreadManager();
    CThreadManager(const CThreadManager&) = delete;
    CThreadManager& operator=(const CThreadManager&) = delete;

    /** Starts a thread of kind kCooperative or kPreemptive. The completion runs on the main thread. */
    static ForkID Fork(ForkKind kind, ForkEntry entry, ForkCompletion completion, void* dataP, const char* nameZ);
    /** Enters a timer; it belongs to the map from now on. On the main thread it is armed at once. */
    static ForkID ForkTimer(ForkKind kind, APP_TimerForkData& timer, const char* nameZ);
    /** Ends a fork. `removeB`: forgets a thread without waiting for it. `selfB`: the fork ends itself. Any thread; not
        for the caller's own thread, unless selfB. */
    static void Kill(ForkID id, bool removeB, bool selfB);
    /** A fork that is not killed by force; the prefix is put before the name. */
    static void SetNoKill(ForkID id);
    [[nodiscard]] static std::shared_ptr<ForkRecord> Find(ForkID id);

    /** Null when there is no manager. */
    [[nodiscard]] static std::shared_ptr<CMutex_ThreadQue_MainThread> MainThreadQue();
    [[nodiscard]] static long CooperativeCount() noexcept;
    /** Threads whose completion has not run yet, of both kinds. Any thread. */
    [[nodiscard]] static std::size_t ThreadCount();
    [[nodiscard]] static bool IsKilling();
    [[nodiscard]] static bool IsExecutingProc() noexcept;
    /** Names of the threads that outlived their time at a quit; when there are any, the process ends by _exit. */
    [[nodiscard]] static std::vector<std::string> LeftThreads();

    /** A main-thread call is executing for as long as the object lives. */
    class ScopedExecuting {
    public:
        ScopedExecuting() noexcept;
        ~ScopedExecuting();
        ScopedExecuting(const ScopedExecuting&) = delete;
        ScopedExecuting& operator=(const ScopedExecuting&) = delete;
    };

    /** Ends a fork whose kill count the caller has raised from 0. For the thread wrapper. */
    static void KillRecord(ForkRecord& fork, bool removeB, bool selfB);

private:
    static void KillThread(ForkRecord& fork, bool removeB, bool selfB);
    static void KillTimer(ForkRecord& fork);
    static void ReleaseThread(ForkRecord& fork);
    static void AddLeft(const std::string& name);
    static void DropCooperative() noexcept;
    void KillAll();

    std::shared_ptr<CForkMap> i_forksP;
};

/** The prefix that holds up a quit. */
inline constexpr const char* kFork_NoKillZ = "No Kill: ";
/** Seconds that a kill waits for a thread. */
inline constexpr double kKill_WaitT = 4.0;
inline constexpr double kKill_NoKillT = 5184004.0;   // 60 days and 4 seconds
