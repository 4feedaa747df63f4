#include "Audio/CSoundSeam.h"

#include <algorithm>

#include "Audio/Stereo.h"
#include "Platform/SoundFade.h"

namespace {
void Scale(std::span<float> stereo, std::size_t frame, float factor) noexcept {
    stereo[kChannels * frame] *= factor;
    stereo[kChannels * frame + 1] *= factor;
}
}   // namespace

CSoundSeam::CSoundSeam(std::size_t blockFrames)
    : i_capacityL(blockFrames + kFadeOut_Frames), i_samples(i_capacityL * kChannels) {}

std::span<float> CSoundSeam::Room() noexcept { return std::span(i_samples).subspan((i_endedL + i_heldL) * kChannels); }

void CSoundSeam::Added(std::size_t frames, std::uint64_t fromL, std::uint64_t toL) noexcept {
    if (i_heldL == 0) i_fromL = fromL;
    i_heldL += frames;
    i_toL = toL;
}

void CSoundSeam::ApplyFadeIn(std::span<float> stereo) noexcept {
    const std::size_t frames = stereo.size() / kChannels;
    for (std::size_t n = 0; n < frames && i_fadedInL < kFadeIn_Frames; ++n) Scale(stereo, n, FadeIn(i_fadedInL++));
}

void CSoundSeam::ApplyFadeOut(std::span<float> stereo) noexcept {
    const std::size_t frames = std::min(stereo.size() / kChannels, kFadeOut_Frames);
    const std::span<float> last = stereo.last(frames * kChannels);
    for (std::size_t n = 0; n < frames; ++n) Scale(last, n, FadeOut(n, frames));
}

void CSoundSeam::Cut() noexcept {
    if (i_heldL == 0) return;
    const std::size_t frames = std::min(i_heldL, kFadeOut_Frames);
    const auto held = std::span(i_samples).subspan(i_endedL * kChannels, frames * kChannels);
    ApplyFadeIn(held);   // as far as it has come
    ApplyFadeOut(held);
    i_endedL += frames;
    i_heldL = 0;
    SetBegin(false);
}

CSoundSeam::Given CSoundSeam::Give(std::span<float> stereo, bool lateB) noexcept {
    const std::size_t allL = i_endedL + i_heldL, frames = std::min(allL, stereo.size() / kChannels);
    Given given{.endedL = std::min(i_endedL, frames), .fromL = i_fromL, .toL = i_toL};
    given.soundL = frames - given.endedL;
    const std::span<float> samples = std::span(i_samples).first(allL * kChannels);
    std::ranges::copy(samples.first(frames * kChannels), stereo.begin());
    std::ranges::fill(stereo.subspan(frames * kChannels), 0.0F);
    std::ranges::copy(samples.subspan(frames * kChannels), i_samples.begin());
    i_endedL -= given.endedL;
    if (given.soundL == 0) return given;

    const std::span<float> sound = stereo.subspan(given.endedL * kChannels, given.soundL * kChannels);
    ApplyFadeIn(sound);
    if (lateB) {
        ApplyFadeOut(sound);
        SetBegin(false);
    }
    if (given.soundL < i_heldL) given.toL = i_fromL + (i_toL - i_fromL) * given.soundL / i_heldL;
    i_fromL = given.toL;
    i_heldL -= given.soundL;
    return given;
}
