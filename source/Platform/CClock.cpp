#include "Platform/CClock.h"

#include <atomic>
#include <chrono>

namespace {

class CClock_System final : public CClock {
public:
    double AbsoluteT() const override { return Seconds(std::chrono::system_clock::now()) - kEpoch2001T; }
    double SteadyT() const override { return Seconds(std::chrono::steady_clock::now()); }

private:
    template <class Point>
    static double Seconds(Point point) {
        return std::chrono::duration<double>(point.time_since_epoch()).count();
    }
};

std::atomic<const CClock*> s_clockP{nullptr};

}   // namespace

const CClock& CClock::Get() {
    static const CClock_System s_system;
    const CClock* const installedP = s_clockP.load(std::memory_order_acquire);
    return installedP == nullptr ? s_system : *installedP;
}

void CClock::Install(const CClock* clockP) { s_clockP.store(clockP, std::memory_order_release); }
