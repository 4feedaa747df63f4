#pragma once
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numbers>
#include <span>
#include <vector>

#include "Audio/CTimePitch.h"

/** Stereo floats. */
using Sound = std::vector<float>;

inline Sound Tone(double hertz, std::size_t frames, double level = 0.5) {
    Sound sound(frames * 2);
    for (std::size_t n = 0; n < frames; ++n)
        sound[2 * n] = sound[2 * n + 1] =
            static_cast<float>(level * std::sin(2 * std::numbers::pi * hertz * static_cast<double>(n) / 44100));
    return sound;
}

/** The frequency of the left channel between two frames: by the times of its upward crossings of zero. */
inline double MeasureHertz(const Sound& sound, std::size_t from, std::size_t to) {
    double firstAt = -1, lastAt = -1;
    int countL = 0;
    for (std::size_t n = from; n + 1 < to; ++n) {
        const double one = sound[2 * n], next = sound[2 * n + 2];
        if (!(one < 0 && next >= 0)) continue;
        lastAt = static_cast<double>(n) + one / (one - next);
        if (firstAt < 0)
            firstAt = lastAt;
        else
            ++countL;
    }
    return countL == 0 ? 0 : 44100.0 * countL / (lastAt - firstAt);
}

/** The loudest sample above 5 kHz between two frames, in dB to `level`: a tone of a few hundred hertz has nothing
    there, a click has. */
inline double MeasureClick(const Sound& sound, std::size_t from, std::size_t to, double level = 0.5) {
    constexpr int kHalf = 100;
    constexpr double kEdge = 5000.0 / 44100;
    std::vector<double> filter(2 * kHalf + 1);
    for (int n = -kHalf; n <= kHalf; ++n) {
        const double x = std::numbers::pi * n;
        const double low = n == 0 ? 2 * kEdge : std::sin(2 * kEdge * x) / x;
        const double window = 0.42 + 0.5 * std::cos(x / kHalf) + 0.08 * std::cos(2 * x / kHalf);
        filter[static_cast<std::size_t>(n + kHalf)] = (n == 0 ? 1.0 : 0.0) - low * window;
    }
    double most = 1e-9;
    for (std::size_t n = std::max<std::size_t>(from, kHalf); n + kHalf < std::min(to, sound.size() / 2); ++n) {
        double sum = 0;
        for (std::size_t m = 0; m < filter.size(); ++m)
            sum += filter[m] * static_cast<double>(sound[2 * (n + m - kHalf)]);
        most = std::max(most, std::abs(sum));
    }
    return 20 * std::log10(most / level);
}

/** A source in memory, which can be late: every `late`-th read gives nothing. */
class SoundSource final : public CTimePitchSource {
public:
    explicit SoundSource(Sound sound, std::size_t most = 100000, int late = 0)
        : i_sound(std::move(sound)), i_most(most), i_late(late) {}
    OSErr ReadFrames(std::span<float> stereo, std::size_t& frames) override {
        frames = 0;
        if (i_late > 0 && ++i_reads % i_late == 0) return noErr;
        frames = std::min({stereo.size(), i_sound.size() - i_at, 2 * i_most}) / 2;
        if (frames == 0) return eofErr;
        std::copy_n(i_sound.begin() + static_cast<std::ptrdiff_t>(i_at), frames * 2, stereo.begin());
        i_at += frames * 2;
        return noErr;
    }
    [[nodiscard]] std::size_t TakenFrames() const { return i_at / 2; }

private:
    Sound i_sound;
    std::size_t i_most;
    int i_late, i_reads = 0;
    std::size_t i_at = 0;
};

/** All that the engine makes of the source, in blocks of `block` frames. `before(frames so far)` is called before each. */
template <class Before>
Sound RenderAll(CTimePitch& engine, CTimePitchSource& source, std::size_t block, Before before) {
    Sound all, part(block * 2);
    for (OSErr err = noErr; !Failed(err) && all.size() < 44100U * 2 * 60;) {
        before(all.size() / 2);
        std::size_t frames = 0;
        err = engine.Render(part, frames, source);
        all.insert(all.end(), part.begin(), part.begin() + static_cast<std::ptrdiff_t>(frames * 2));
    }
    return all;
}
inline Sound RenderAll(CTimePitch& engine, CTimePitchSource& source, std::size_t block = 2048) {
    return RenderAll(engine, source, block, [](std::size_t) {});
}
