#include "Threads/WaitMode.h"

#include <algorithm>
#include <chrono>
#include <thread>

#include "Core/Assertions.h"
#include "Platform/CClock.h"
#include "Threads/CT_Timer.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

namespace {

constexpr double kYield_NapT = 0.001;   // a processor given up for so long is not burned by the one that waits
constexpr double kSleep_MostT = 1.0e8;

void Sleep(double timeT) {
    if (timeT > 0) std::this_thread::sleep_for(std::chrono::duration<double>(std::min(timeT, kSleep_MostT)));
}

}   // namespace

void YieldToCooperative() {
    if (CThreadManager::CooperativeCount() > 0) std::this_thread::yield();
}

bool PumpLimited() {
    CThreadHost* const hostP = IsLoopThread() ? CThreadHost::Get() : nullptr;
    if (hostP == nullptr) return false;
    AssertWords(hostP->MayPump(), "!the show waits");
    CMainLoop& loop = hostP->MainLoop();
    if (loop.InputWaits()) CT_Timer::HoldBackCurrent();
    bool doneB = false;
    for (const MessageKind kind : {MessageKind::kCall, MessageKind::kPaint, MessageKind::kTimer}) {
        doneB |= loop.PumpOne(static_cast<MessageKinds>(kind));
        if (doneB) YieldToCooperative();
    }
    return hostP->PostEvents().DrainCalls() || doneB;
}

bool PumpTurn(WaitMode mode) {
    CThreadHost* const hostP = IsLoopThread() ? CThreadHost::Get() : nullptr;
    switch (mode) {
        case WaitMode::kTimersPaint:
        case WaitMode::kMain_TimersPaint:
            return PumpLimited();   // which does nothing where no application exists
        case WaitMode::kMain_EventLoop:
            if (hostP == nullptr) return false;
            AssertWords(hostP->MayPump(), "!the show waits");
            if (hostP->MainLoop().InputWaits()) CT_Timer::HoldBackCurrent();
            hostP->RunLoopPass();
            return true;
        case WaitMode::kYieldOnly:
            YieldToCooperative();
            return false;
        case WaitMode::kForever:
            break;
    }
    return false;
}

void WaitOneTurn() {
    CThreadHost* const hostP = IsLoopThread() ? CThreadHost::Get() : nullptr;
    if (hostP == nullptr) return Sleep(IsPreemptiveThread() ? kWait_TurnT : kYield_NapT);
    if (!PumpLimited()) hostP->MainLoop().Wait(kWait_TurnT, kMessage_All & ~static_cast<unsigned>(MessageKind::kInput));
}

void Wait(double seconds, WaitMode mode) {
    if (IsPreemptiveThread()) return Sleep(seconds);
    const CClock& clock = CClock::Get();
    const double startT = clock.SteadyT();
    const bool pumpsB = IsLoopThread() && mode != WaitMode::kYieldOnly && mode != WaitMode::kForever;
    for (;;) {
        const bool doneB = pumpsB ? PumpTurn(mode) : (YieldToCooperative(), false);
        const double leftT = seconds - (clock.SteadyT() - startT);
        if (!(leftT > 0)) return;
        if (doneB) continue;
        CThreadHost* const hostP = CThreadHost::Get();
        if (pumpsB && hostP != nullptr)
            hostP->MainLoop().Wait(std::min(leftT, kWait_TurnT),
                                   kMessage_All & ~static_cast<unsigned>(MessageKind::kInput));
        else
            Sleep(std::min(leftT, kYield_NapT));
    }
}
