#pragma once
#include <atomic>
#include <cstddef>
#include <span>
#include <vector>

/** Which of the two channels are heard. Some songs have the voice on one of them. */
enum class VocalMode : int {
    kBoth = 0,
    kRightOnly = 1,
    kLeftOnly = 2,
    kVocalCut = 3,   // right minus left: what is the same on both goes
};

/** Volume, mute and vocal mode of a stream of floats. A change cross-fades over 10 ms, so that it leaves no click; what
    stands still gives the plain products, and volume 1 on both channels the samples as they are.
    Units    linear factors.
    Threads  Process on one; the rest on any, heard from the next Process on.
    Errors   a factor that is no number or below 0 is refused: the old one stays. */
class CVolumeStage {
public:
    CVolumeStage();

    void SetVolume(float factor) noexcept;
    /** The song's own loudness, on top of the volume. */
    void SetGain(float factor) noexcept;
    void SetMute(bool mutedB) noexcept { i_mutedB.store(mutedB, std::memory_order_relaxed); }
    void SetVocalMode(VocalMode mode) noexcept { i_mode.store(mode, std::memory_order_relaxed); }
    [[nodiscard]] float Volume() const noexcept { return i_volumeF.load(std::memory_order_relaxed); }
    [[nodiscard]] float Gain() const noexcept { return i_gainF.load(std::memory_order_relaxed); }
    [[nodiscard]] bool IsMuted() const noexcept { return i_mutedB.load(std::memory_order_relaxed); }
    [[nodiscard]] VocalMode Mode() const noexcept { return i_mode.load(std::memory_order_relaxed); }

    /** In place; whole frames. */
    void Process(std::span<float> stereo) noexcept;
    /** The next Process begins with the setting of that moment, without a fade from what was. */
    void Restart() noexcept { i_restartB.store(true, std::memory_order_release); }

private:
    struct Setting {
        float volumeF = 1;
        VocalMode mode = VocalMode::kBoth;
        bool operator==(const Setting&) const = default;
    };
    static constexpr std::size_t kFade_Frames = 441;
    [[nodiscard]] Setting Wanted() const noexcept;
    static void Apply(const Setting& setting, std::span<float> stereo) noexcept;
    static void Apply(const Setting& setting, float& left, float& right) noexcept;

    std::vector<float> i_fadeIn;   // raised cosine, one value a frame
    std::atomic<float> i_volumeF{1}, i_gainF{1};
    std::atomic<bool> i_mutedB{false};
    std::atomic<VocalMode> i_mode{VocalMode::kBoth};
    std::atomic<bool> i_restartB{true};
    // Process's.
    Setting i_from, i_to;
    std::size_t i_fadedL = kFade_Frames;   // frames of the fade that are done
};
