#pragma once
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

namespace soundtouch {
class SoundTouch;
}

/** One run of the pitch and tempo engine over a stream, from a frame of it on, with one setting. Frame n that it gives
    is frame `origin + n * tempo` of the stream. With pitch 0 and tempo 1 the engine is left out, and the frames pass as
    they are.
    Units    stereo frames of floats; pitch in semitones, tempo 1 is unchanged.
    Threads  SetUp allocates (the engine makes new filters): not for the render thread. All else allocates nothing: the
             engine's buffers are grown to their largest in the constructor. One thread at a time. */
class CTimePitchVoice {
public:
    /** What a Put takes at most, and the most frames that may be waited for before a Take. */
    static constexpr std::size_t kPut_Frames = 512;
    static constexpr std::size_t kReady_Frames = 2048;

    CTimePitchVoice();
    ~CTimePitchVoice();
    CTimePitchVoice(const CTimePitchVoice&) = delete;
    CTimePitchVoice& operator=(const CTimePitchVoice&) = delete;

    void SetUp(int pitch, double tempo);
    [[nodiscard]] bool IsDirect() const noexcept { return i_directB; }
    [[nodiscard]] double Tempo() const noexcept { return i_tempo; }

    /** Forgets what it holds and begins at `origin`. */
    void Start(std::uint64_t origin) noexcept;
    /** The number of the frame that it wants next. */
    [[nodiscard]] std::uint64_t NextInput() const noexcept { return i_nextInputL; }
    /** Where the next frame that it gives stands in the stream. */
    [[nodiscard]] double Position() const noexcept {
        return static_cast<double>(i_originL) + static_cast<double>(i_givenL) * i_tempo;
    }
    /** The frames from NextInput on; not for a direct voice, whose owner copies and calls Passed. */
    void Put(std::span<const float> stereo) noexcept;
    [[nodiscard]] std::size_t Ready() const noexcept;
    /** All of `stereo`, which is no more than what is ready. */
    void Take(std::span<float> stereo) noexcept;
    void Passed(std::size_t frames) noexcept;

private:
    void Grow();

    const std::unique_ptr<soundtouch::SoundTouch> i_engineP;
    bool i_directB = true;
    double i_tempo = 1.0;
    std::uint64_t i_originL = 0, i_nextInputL = 0, i_givenL = 0;
};

/** The bounds of what the engine is given; values outside are limited to them. */
inline constexpr int kTimePitch_MostPitch = 12;
inline constexpr double kTimePitch_LeastTempo = 0.25, kTimePitch_MostTempo = 4.0;
