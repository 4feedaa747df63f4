#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Platform/SoundFade.h"

/** Joins the sound of a song to the silence around it, and to another place of the song, without a click: it holds back
    the last 10 ms that were read, so that the sound can fade out at any moment, whatever has become of the song by
    then. Sound that begins at the song's first frame by itself begins as it was recorded; all other fades in.
    Units    frames; a place is a frame of the song.
    Threads  one, the render thread; nothing is allocated after the constructor. Owner CAudioPlayer. */
class CSoundSeam {
public:
    /** What Give gave: first `endedL` frames of what was cut off, then `soundL` frames. The places are those of the
        sound, or of what was cut off when there is none. */
    struct Given {
        std::size_t endedL = 0, soundL = 0;
        std::uint64_t fromL = 0, toL = 0;
    };

    explicit CSoundSeam(std::size_t blockFrames);

    /** Frames that it wants before the next Give. */
    [[nodiscard]] std::size_t Wanted() const noexcept { return i_capacityL - i_endedL - i_heldL; }
    [[nodiscard]] std::size_t Held() const noexcept { return i_heldL; }
    /** Where they are to be read to; Added says how many came, which lie between these places. */
    [[nodiscard]] std::span<float> Room() noexcept;
    void Added(std::size_t frames, std::uint64_t fromL, std::uint64_t toL) noexcept;
    /** The sound is not to go on, or not from here: what is held fades out, and what follows it fades in. */
    void Cut() noexcept;
    /** How the next frames begin, after a Cut. */
    void SetBegin(bool asRecordedB) noexcept { i_fadedInL = asRecordedB ? kFadeIn_Frames : 0; }
    /** The front of `stereo`, silence behind it. With `lateB` less was read than wanted, and more will come: the sound
        fades out up to what there is. */
    Given Give(std::span<float> stereo, bool lateB) noexcept;

private:
    /** Goes on with the fade in. */
    void ApplyFadeIn(std::span<float> stereo) noexcept;
    static void ApplyFadeOut(std::span<float> stereo) noexcept;

    const std::size_t i_capacityL;
    std::vector<float> i_samples;   // first what was cut off, which has its fade; then what is held, which has none
    std::size_t i_endedL = 0, i_heldL = 0;
    std::uint64_t i_fromL = 0, i_toL = 0;      // of what is held
    std::size_t i_fadedInL = kFadeIn_Frames;   // frames of the fade in that are done
};
