#include "Platform/CWakeSignal.h"

#include <time.h>
#include <algorithm>
#include <cerrno>

// POSIX in place of std::counting_semaphore: the timed wait of gcc 12's library can miss a release.
CWakeSignal::CWakeSignal() { ::sem_init(&i_semaphore, 0, 0); }
CWakeSignal::~CWakeSignal() { ::sem_destroy(&i_semaphore); }

void CWakeSignal::Signal() noexcept { ::sem_post(&i_semaphore); }

void CWakeSignal::Wait(double seconds) noexcept {
    constexpr double kMost_T = 3600;
    constexpr long kSecond_Nanoseconds = 1'000'000'000;
    timespec until{};
    ::clock_gettime(CLOCK_MONOTONIC, &until);
    const double waitT = std::clamp(seconds, 0.0, kMost_T);
    const auto wholeL = static_cast<time_t>(waitT);
    until.tv_sec += wholeL;
    until.tv_nsec += static_cast<long>((waitT - static_cast<double>(wholeL)) * kSecond_Nanoseconds);
    if (until.tv_nsec >= kSecond_Nanoseconds) {
        until.tv_nsec -= kSecond_Nanoseconds;
        ++until.tv_sec;
    }
    while (::sem_clockwait(&i_semaphore, CLOCK_MONOTONIC, &until) != 0)
        if (errno != EINTR) return;
    while (::sem_trywait(&i_semaphore) == 0) {
    }
}
