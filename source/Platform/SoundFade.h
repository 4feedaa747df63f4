#pragma once
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>

/** How sound that begins or ends in the middle of a song does so without a click: by a ramp that is rounded over a
    quarter at each end. It bends no more than a raised cosine, and is less steep, so that a tone under it stays nearer
    to the tone that it is.
    Units    frames of 44,100 a second: out within 10 ms, in within 5 ms. */
inline constexpr std::size_t kFadeOut_Frames = 441, kFadeIn_Frames = 220;

/** The factor of frame `n` of a fade in over `frames`; the same from behind is a fade out. 1 from its end on. */
[[nodiscard]] inline float FadeIn(std::size_t n, std::size_t frames = kFadeIn_Frames) noexcept {
    constexpr double kRound = 0.25, kSlope = 1 / (1 - kRound);
    if (n >= frames) return 1;
    const double part = (static_cast<double>(n) + 0.5) / static_cast<double>(frames);
    const double nearer = std::min(part, 1 - part);
    const double half = nearer < kRound ? kSlope * nearer * nearer / (2 * kRound) : kSlope * (nearer - kRound / 2);
    return static_cast<float>(part < 0.5 ? half : 1 - half);
}
/** The factor of frame `n` of a fade out over `frames`; 0 from its end on. */
[[nodiscard]] inline float FadeOut(std::size_t n, std::size_t frames = kFadeOut_Frames) noexcept {
    return n >= frames ? 0 : FadeIn(frames - 1 - n, frames);
}
/** A sample times one of these factors. */
[[nodiscard]] inline std::int16_t Faded(std::int16_t sample, float factor) noexcept {
    return static_cast<std::int16_t>(std::lround(static_cast<float>(sample) * factor));
}
