#include "Graphics/CGraphicsClock.h"

#include <algorithm>
#include <cmath>

#include "Graphics/CDGConstants.h"

void CGraphicsClock::Start(double syncSeconds) noexcept {
    // A slip read from a song's data may be anything; a day either way is more than any song's.
    constexpr double kMost = 86400.0;
    const double bounded = std::isfinite(syncSeconds) ? std::clamp(syncSeconds, -kMost, kMost) : 0.0;
    i_startSync = static_cast<std::int64_t>(std::floor(bounded * kSubCodePacketsPerSecond + 0.5));
    i_consumed.store(0, std::memory_order_relaxed);
    i_pending.store(0, std::memory_order_relaxed);
    i_streamEndedB = false;
}

void CGraphicsClock::Seek(std::int64_t target300) noexcept {
    i_pending.store(target300, std::memory_order_relaxed);
    i_consumed.store(0, std::memory_order_relaxed);
    i_streamEndedB = false;
}

void CGraphicsClock::ConsumePending() noexcept {
    const std::int64_t units = i_pending.load(std::memory_order_relaxed);
    i_consumed.fetch_add(units, std::memory_order_relaxed);
    // Take off what was seen, do not store 0: the clock thread may have added a sector since.
    i_pending.fetch_sub(units, std::memory_order_relaxed);
}

std::int64_t CGraphicsClock::PacketsDue(std::int64_t slip300, std::size_t positionUnits) const noexcept {
    return Now() + i_startSync + slip300 - static_cast<std::int64_t>(positionUnits / kSubCodePacket_Units);
}
