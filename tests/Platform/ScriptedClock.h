#pragma once
#include <atomic>

#include "Platform/CClock.h"

/** A clock that a test moves by hand; in use as long as it lives. Any thread. */
class ScriptedClock final : public CClock {
public:
    ScriptedClock() { CClock::Install(this); }
    ~ScriptedClock() override { CClock::Install(nullptr); }
    double AbsoluteT() const override { return i_nowT.load(); }
    double SteadyT() const override { return i_nowT.load(); }
    void Advance(double seconds) { i_nowT.store(i_nowT.load() + seconds); }

private:
    std::atomic<double> i_nowT{1000.0};
};
