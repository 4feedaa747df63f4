#pragma once
#include <time.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <string>

#include "Platform/CClock.h"

/** Seconds of the machine's clock. */
inline double Now() {
    return std::chrono::duration<double>(std::chrono::steady_clock::now().time_since_epoch()).count();
}

/** Seconds that this thread has worked. */
inline double Worked() {
    timespec now{};
    if (::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now) != 0) std::abort();
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

inline long ResidentKilobytes() {
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:")) return std::strtol(line.c_str() + 6, nullptr, 10);
    return 0;
}

/** The machine's clock, so many times as fast, for all of the engine. */
class FastClock final : public CClock {
public:
    explicit FastClock(double speed) : i_speed(speed) { Install(this); }
    ~FastClock() override { Install(nullptr); }
    double AbsoluteT() const override { return SteadyT(); }
    double SteadyT() const override { return i_speed * Now(); }

private:
    const double i_speed;
};
