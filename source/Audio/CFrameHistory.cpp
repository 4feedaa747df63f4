#include "Audio/CFrameHistory.h"

#include <algorithm>
#include <bit>

namespace {
constexpr std::size_t kChannels = 2;
}

CFrameHistory::CFrameHistory(std::size_t frames)
    : i_samples(std::bit_ceil(frames) * kChannels), i_frames(std::bit_ceil(frames)) {}

std::span<float> CFrameHistory::Room(std::size_t frames) noexcept {
    const std::size_t at = i_endL % i_frames;
    return std::span(i_samples).subspan(at * kChannels, std::min(frames, i_frames - at) * kChannels);
}

void CFrameHistory::Copy(std::uint64_t first, std::span<float> stereo) const noexcept {
    const std::uint64_t oldestL = i_endL > i_frames ? i_endL - i_frames : 0;
    std::size_t doneL = 0;
    const std::size_t frames = stereo.size() / kChannels;
    if (first < oldestL) {
        doneL = static_cast<std::size_t>(std::min<std::uint64_t>(frames, oldestL - first));
        std::ranges::fill(stereo.first(doneL * kChannels), 0.0F);
    }
    while (doneL < frames && first + doneL < i_endL) {
        const std::size_t at = (first + doneL) % i_frames;
        const std::size_t partL = static_cast<std::size_t>(
            std::min<std::uint64_t>(std::min(frames - doneL, i_frames - at), i_endL - first - doneL));
        std::ranges::copy(std::span(i_samples).subspan(at * kChannels, partL * kChannels),
                          stereo.subspan(doneL * kChannels).begin());
        doneL += partL;
    }
    std::ranges::fill(stereo.subspan(doneL * kChannels), 0.0F);
}
