#include "Graphics/CGraphicsClock.h"

#include <algorithm>
#include <cmath>

#include "Graphics/CDGConstants.h"

void CGraphicsClock::Start(double syncSeconds) noexcept {
    // A slip read from a song's data may be anything; a day either way is more than any song's.
    constexpr double kMost = 86400.0;
    const double bounded = std::isfinite(syncSeconds) ? std::clamp(syncSeconds, -kMost, kMost) : 0.0;
    i_startSync = static_cast<std::int64_t>(std::floor(bounded * kSubCodePacketsPerSecond + 0.5));
    i_consumed = 0;
    i_now.store(0, std::memory_order_relaxed);
    i_streamEndedB = false;
}

void CGraphicsClock::Seek(std::int64_t target300) noexcept {
    i_consumed = 0;
    i_now.store(target300, std::memory_order_relaxed);
    i_streamEndedB = false;
}

void CGraphicsClock::ConsumePending() noexcept {
    i_consumed = Now();   // what the clock thread adds from here on is pending again
}

std::int64_t CGraphicsClock::PacketsDue(std::int64_t slip300, std::size_t positionUnits) const noexcept {
    return Now() + i_startSync + slip300 - static_cast<std::int64_t>(positionUnits / kSubCodePacket_Units);
}
