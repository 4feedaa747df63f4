#include "Threads/CSemaphore.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>

#include "Core/Assertions.h"
#include "Threads/CThreadHost.h"
#include "Threads/ThreadInfo.h"

namespace {
constexpr double kTurn_ForeverT = 86400.0;
constexpr OSErr kInterruptedErr = static_cast<OSErr>(22);   // the system's word for a wait that was interrupted
}   // namespace

struct CSemaphore::State {
    std::mutex lock;   // guards all below
    std::optional<std::condition_variable> condition;
    bool signalledB = false;
    bool disposedB = false;
    long sleepersL = 0;    // threads on the condition
    long loopWaitsL = 0;   // waits of the main thread, which sleeps in its loop instead
    OSErr err = noErr;

    /** Under the lock: the result if the wait is over. */
    std::optional<OSErr> Taken() {
        if (!condition) return semaphoreGoneErr;
        if (signalledB) {
            signalledB = disposedB;   // a disposed one lets everybody through
            return disposedB ? err : noErr;
        }
        return disposedB ? std::optional(err) : std::nullopt;
    }
    OSErr Sleep(double turnT) {
        std::unique_lock guard(lock);
        if (!condition) return semaphoreGoneErr;
        ++sleepersL;
        condition->wait_for(guard, std::chrono::duration<double>(turnT), [this] { return signalledB || disposedB; });
        --sleepersL;
        return Taken().value_or(semaphoreTimedOutErr);
    }
    /** The main thread sleeps where a message wakes it as well. */
    OSErr SleepInLoop(CMainLoop& loop, double turnT, MessageKinds kinds) {
        {
            const std::scoped_lock guard(lock);
            if (const auto taken = Taken()) return *taken;
            ++loopWaitsL;
        }
        loop.Wait(turnT, kinds);
        const std::scoped_lock guard(lock);
        --loopWaitsL;
        return Taken().value_or(semaphoreTimedOutErr);
    }
};

CSemaphore::CSemaphore(const char* nameZ) : i_nameZ(nameZ), i_stateP(std::make_shared<State>()) {
    try {
        i_stateP->condition.emplace();
    } catch (const std::system_error&) {
        i_stateP->condition.reset();   // each wait tells
    }
}

CSemaphore::~CSemaphore() {
    Signal(true);
    // A wait of this very thread may be below on the stack (a message of its pump destroys us); those on the condition
    // are other threads' and leave at once.
    for (;;) {
        {
            const std::scoped_lock guard(i_stateP->lock);
            if (i_stateP->sleepersL == 0) return;
            i_stateP->condition->notify_all();
        }
        if (IsPreemptiveThread())
            std::this_thread::sleep_for(std::chrono::duration<double>(kWait_TurnT));
        else
            std::this_thread::yield();
    }
}

void CSemaphore::Signal(bool forceB) {
    const std::shared_ptr<State> stateP = i_stateP;   // the waiter may destroy us as soon as it is let go
    bool wakeB = false;
    {
        const std::scoped_lock guard(stateP->lock);
        if (stateP->disposedB) return;
        stateP->disposedB = forceB;
        stateP->signalledB = true;
        wakeB = stateP->loopWaitsL > 0;
        if (stateP->condition) forceB ? stateP->condition->notify_all() : stateP->condition->notify_one();
    }
    if (wakeB) CThreadHost::With([](CThreadHost& host) { host.MainLoop().Wake(); });
}

void CSemaphore::Reset() {
    const std::scoped_lock guard(i_stateP->lock);
    if (!i_stateP->disposedB) i_stateP->signalledB = false;
    i_stateP->err = noErr;
}

void CSemaphore::SetErr(OSErr err) {
    const std::scoped_lock guard(i_stateP->lock);
    i_stateP->err = err;
}

OSErr CSemaphore::WaitOn(const std::shared_ptr<State>& stateP, WaitMode mode, double turnT) {
    const bool loopB = IsLoopThread();
    // Whether it would have to pump or not: what is there at once today is late some night.
    if (CThreadHost* const hostP = loopB ? CThreadHost::Get() : nullptr; hostP != nullptr)
        AssertWords(hostP->MayPump(), "!the show waits");
    for (;;) {
        CThreadHost* const hostP = loopB ? CThreadHost::Get() : nullptr;
        if (hostP == nullptr) {
            const OSErr err = stateP->Sleep(turnT);
            if (err != semaphoreTimedOutErr && err != kInterruptedErr) return err;
            if (!IsPreemptiveThread()) YieldToCooperative();   // a preemptive one has slept on the condition
            continue;
        }
        const MessageKinds userB = mode == WaitMode::kMain_EventLoop ? static_cast<unsigned>(MessageKind::kInput) : 0;
        const MessageKinds kinds = (kMessage_All & ~static_cast<unsigned>(MessageKind::kInput)) | userB;
        const OSErr err = stateP->SleepInLoop(hostP->MainLoop(), std::min(turnT, kWait_TurnT), kinds);
        if (err != semaphoreTimedOutErr && err != kInterruptedErr) return err;
        // The pump runs beside the graphics: those keep their own pace, and a call must not wait for it.
        if (hostP->IsSongPlaying()) hostP->IdleGraphics("semaphore wait", true);
        PumpTurn(mode == WaitMode::kForever ? WaitMode::kTimersPaint : mode);
    }
}

OSErr CSemaphore::Wait(WaitMode mode) { return WaitOn(std::shared_ptr(i_stateP), mode, kTurn_ForeverT); }

OSErr CSemaphore::Wait(std::uint32_t milliseconds) {
    return WaitOn(std::shared_ptr(i_stateP), WaitMode::kTimersPaint, milliseconds / 1000.0);
}

OSErr CSemaphore::WaitPreemptive(std::uint32_t milliseconds) {
    Assert(!IsMainThread());
    return std::shared_ptr(i_stateP)->Sleep(milliseconds / 1000.0);
}
