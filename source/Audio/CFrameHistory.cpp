#include "Audio/CFrameHistory.h"

#include <algorithm>
#include <bit>

#include "Audio/Stereo.h"

namespace {}

CFrameHistory::CFrameHistory(std::size_t frames)
    : i_samples(std::bit_ceil(frames) * kChannels), i_frames(std::bit_ceil(frames)) {}

std::span<float> CFrameHistory::Room(std::size_t frames) noexcept {
    const std::size_t at = i_endL % i_frames;
    return std::span(i_samples).subspan(at * kChannels, std::min(frames, i_frames - at) * kChannels);
}

std::span<const float> CFrameHistory::View(std::uint64_t first, std::size_t frames) const noexcept {
    if (first >= i_endL || i_endL - first > i_frames) return {};
    const std::size_t at = first % i_frames;
    const auto countL =
        static_cast<std::size_t>(std::min<std::uint64_t>(std::min(frames, i_frames - at), i_endL - first));
    return std::span(i_samples).subspan(at * kChannels, countL * kChannels);
}

void CFrameHistory::Copy(std::uint64_t first, std::span<float> stereo) const noexcept {
    const std::size_t frames = stereo.size() / kChannels;
    std::size_t doneL = 0;
    const std::uint64_t oldestL = i_endL > i_frames ? i_endL - i_frames : 0;
    if (first < oldestL) {
        doneL = static_cast<std::size_t>(std::min<std::uint64_t>(frames, oldestL - first));
        std::ranges::fill(stereo.first(doneL * kChannels), 0.0F);
    }
    for (std::span<const float> part; !(part = View(first + doneL, frames - doneL)).empty();) {
        std::ranges::copy(part, stereo.subspan(doneL * kChannels).begin());
        doneL += part.size() / kChannels;
    }
    std::ranges::fill(stereo.subspan(doneL * kChannels), 0.0F);
}
