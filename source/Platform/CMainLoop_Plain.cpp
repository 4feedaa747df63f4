#include "Platform/CMainLoop_Plain.h"

#include <algorithm>
#include <chrono>

#include "Platform/CClock.h"

namespace {
constexpr double kWait_MostT = 3600.0;   // keeps the time added to "now" inside the range of the clock's integer
}

CMainLoop_Plain::~CMainLoop_Plain() {
    // A dying proc may post again (it tells its caller that it never ran): until nothing is left.
    for (std::deque<Proc> dying;; dying.clear()) {
        const std::scoped_lock guard(i_lock);
        dying.swap(i_calls);
        if (dying.empty()) dying.swap(i_inputs);
        if (dying.empty()) break;
    }
}

void CMainLoop_Plain::Post(Proc proc) {
    const std::scoped_lock guard(i_lock);
    i_calls.push_back(std::move(proc));
    i_wakeUp.notify_one();
}

void CMainLoop_Plain::PostInput(Proc proc) {
    const std::scoped_lock guard(i_lock);
    i_inputs.push_back(std::move(proc));
    i_inputT = CClock::Get().SteadyT();
    i_wakeUp.notify_one();
}

void CMainLoop_Plain::Wake() {
    const std::scoped_lock guard(i_lock);
    i_wokenB = true;
    i_wakeUp.notify_one();
}

CMainLoop::TimerID CMainLoop_Plain::SetTimer(TimerID existing, std::uint32_t milliseconds, Proc proc) {
    return i_timers.Set(existing, milliseconds, std::move(proc));
}

void CMainLoop_Plain::KillTimer(TimerID timer) { i_timers.Kill(timer); }

bool CMainLoop_Plain::RunFront(std::deque<Proc>& queue) {
    Proc proc;
    {
        const std::scoped_lock guard(i_lock);
        if (queue.empty()) return false;
        proc = std::move(queue.front());
        queue.pop_front();
    }
    if (proc) proc();
    return true;
}

bool CMainLoop_Plain::PumpOne(MessageKinds kinds) {
    const auto asked = [kinds](MessageKind kind) { return (kinds & static_cast<unsigned>(kind)) != 0; };
    bool doneB = false;
    if (asked(MessageKind::kCall)) doneB |= RunFront(i_calls);
    if (asked(MessageKind::kTimer)) doneB |= i_timers.FireOne();
    if (asked(MessageKind::kInput)) doneB |= RunFront(i_inputs);
    return doneB;
}

void CMainLoop_Plain::Wait(double seconds, MessageKinds kinds) {
    const auto asked = [kinds](MessageKind kind) { return (kinds & static_cast<unsigned>(kind)) != 0; };
    const double nextT = asked(MessageKind::kTimer) ? i_timers.NextT().value_or(kWait_MostT) : kWait_MostT;
    const double timeT = std::min({seconds, nextT, kWait_MostT});
    std::unique_lock guard(i_lock);
    if (timeT > 0)
        i_wakeUp.wait_for(guard, std::chrono::duration<double>(timeT), [&] {
            return i_wokenB || (asked(MessageKind::kCall) && !i_calls.empty()) ||
                   (asked(MessageKind::kInput) && !i_inputs.empty());
        });
    i_wokenB = false;
}

bool CMainLoop_Plain::InputWaits() const {
    const std::scoped_lock guard(i_lock);
    return !i_inputs.empty();
}

void CMainLoop_Plain::FlushInput() {
    std::deque<Proc> dying;
    const std::scoped_lock guard(i_lock);   // declared after `dying`: unlocked before those die
    dying.swap(i_inputs);
}

double CMainLoop_Plain::IdleSeconds() const {
    const std::scoped_lock guard(i_lock);
    return i_inputT < 0 ? -1.0 : std::max(0.0, CClock::Get().SteadyT() - i_inputT);
}
