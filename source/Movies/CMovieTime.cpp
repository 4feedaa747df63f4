#include "Movies/CMovieTime.h"

#include <algorithm>
#include <cmath>

#include "Platform/CClock.h"

namespace {
constexpr double kMovie_JumpT = 0.25;   // a difference that no block of sound makes
constexpr double kMovie_SmoothT = 2;
}   // namespace

CMovieTime::CMovieTime() : i_atT(CClock::Get().SteadyT()) {}

double CMovieTime::Follow(double heardT, bool runningB, double rate) {
    const double steadyT = CClock::Get().SteadyT();
    const std::scoped_lock guard(i_lock);
    double nowT = NowLocked(steadyT);
    const double apartT = heardT - nowT;
    if (!runningB || std::abs(apartT) > kMovie_JumpT)
        nowT = heardT;
    else if (i_rate != 0)
        nowT += apartT * (1 - std::exp((i_atT - steadyT) / kMovie_SmoothT));
    i_baseT = nowT;
    i_atT = steadyT;
    i_rate = runningB ? rate : 0;
    return i_baseT - DelayT();
}

void CMovieTime::Jump(double seconds) {
    const double steadyT = CClock::Get().SteadyT();
    const std::scoped_lock guard(i_lock);
    i_baseT = seconds;
    i_atT = steadyT;
    i_rate = 0;   // it may have been told to pause since it was looked at last
}

double CMovieTime::Run(bool runningB, double rate) {
    const double steadyT = CClock::Get().SteadyT();
    const std::scoped_lock guard(i_lock);
    i_baseT = NowLocked(steadyT);
    i_atT = steadyT;
    i_rate = runningB ? rate : 0;
    return i_baseT - DelayT();
}

double CMovieTime::Now() const {
    const double steadyT = CClock::Get().SteadyT();
    const std::scoped_lock guard(i_lock);
    return NowLocked(steadyT);
}

double CMovieTime::Rate() const {
    const std::scoped_lock guard(i_lock);
    return i_rate;
}

void CMovieTime::SetDelay(long milliseconds) {
    i_delayL.store(std::clamp(milliseconds, -kMost_Delay, kMost_Delay), std::memory_order_relaxed);
}
