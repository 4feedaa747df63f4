#pragma once
#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "Platform/OSErr.h"
#include "Threads/CMainThreadProc.h"

class APP_TimerForkData;
class CForkMap;

enum class ForkKind : short { kCooperative = 1, kPreemptive = 2, kTimer = 3, kIdleTimer = 4 };
[[nodiscard]] constexpr bool IsTimer(ForkKind kind) noexcept { return kind >= ForkKind::kTimer; }

using ForkEntry = std::function<OSErr(void* dataP)>;
using ForkCompletion = std::function<OSErr(void* dataP, OSErr err)>;

/** One fork: a thread or a timer.
    Threads  the atomics from any; `thread` and `name` under the lock of the map; `timerDataP`, `deleteAfterB` on the
             main thread alone; the rest is fixed once the fork has started.
    Owner    shared by the map, the thread itself, and whoever waits for its end. */
struct ForkRecord {
    ForkKind kind{};
    ForkID id = 0;
    std::atomic<bool> runningB{false};    // inside its entry routine
    std::atomic<bool> completeB{false};   // its completion has run
    std::atomic<short> killCountS{0};     // who raises it from 0 is the one that ends the fork
    std::shared_ptr<CForkMap> mapP;
    ForkEntry entry;
    ForkCompletion completion;
    void* dataP = nullptr;
    std::string name;
    std::atomic<OSErr> lastResult{noErr};
    std::thread thread;

    std::atomic<bool> endedB{false};           // the thread has done its last line: a join does not wait
    APP_TimerForkData* timerDataP = nullptr;   // null once the timer is gone
    bool deleteAfterB = false;                 // the timer was killed while it ran: deleted when it returns
};

/** The body of every fork: tags the thread, runs the entry routine and the completion, ends the fork. A timer passes
    here each time it fires. */
OSErr ThreadWrapper(const std::shared_ptr<ForkRecord>& forkP);
