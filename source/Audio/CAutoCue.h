#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

#include "Audio/CAudioPlayerSettings.h"
#include "Audio/CAudioSong.h"

/** Finds where the music of a song starts: the first frame that is as loud as the threshold, less the rollback. Where
    nothing is, that is the song's first frame: its words may run to silence.
    Threads  any but the render thread, which must leave the ring alone meanwhile.
    Errors   told in the log and, where the user can do something, to the user; the answer is 0 then. */
class CAutoCue {
public:
    CAutoCue(CAudioSong& song, CAS_AudioRing& spool, const AudioPlayerSettings& settings)
        : i_song(song), i_spool(spool), i_settings(settings) {}

    /** In 300ths. The ring stands at its start afterwards. */
    long Run();

private:
    [[nodiscard]] long Search();
    OSErr ReadFrames(std::span<float> stereo, std::size_t& frames);
    [[nodiscard]] std::size_t FirstLoud(std::span<const float> stereo) const noexcept;
    [[nodiscard]] long Found(std::uint64_t firstFrame) const;

    CAudioSong& i_song;
    CAS_AudioRing& i_spool;
    const AudioPlayerSettings& i_settings;
};
