#pragma once
#include <atomic>
#include <cstdint>
#include <span>
#include <vector>

#include "Audio/CAudioPlayerSettings.h"
#include "Audio/CAudioPositions.h"
#include "Audio/CAudioSong.h"
#include "Audio/CAudioUnitChain.h"
#include "Audio/CReadTurn.h"
#include "Audio/CSoundSeam.h"
#include "Audio/Stereo.h"
#include "Core/Ref.h"

/** The volume of the show: what the operator's slider and mute button say, for every song. Any thread. */
struct AudioLevel {
    std::atomic<float> gainF{1};
    std::atomic<bool> onB{true};
};

/** What a player works with; all of it outlives the player. */
struct AudioPlayerParts {
    CAudioSong& song;
    CAudioOutput& output;
    const AudioLevel& level;
    CDeviceNews* newsP = nullptr;   // any device will do, and it is told there; null: the one that is asked for
};

/** Feeds the output with the sound of one song, by a render thread of its own. A pause and what the song lacks are
    silence; the device goes on. The device is fed from the first play on.
    Whatever ends the sound in the middle (a pause, a seek, the end of the player or of the ring, a ring that is late)
    fades it out over 10 ms, and what goes on there fades in over 5 ms.
    Units    frames of the song; 147 are 1/300 s.
    Threads  Create, SetMode and the end on the main thread, or on the one that prepares a song; Seek and AutoCue on any
            but the render thread; the rest on any.
    Owner    Ref. The end stops the thread and closes the output, not the song's ring.
    Errors   Create tells the user; a song that fails while it plays ends the thread and is kept (Result). */
class CAudioPlayer final : public RefCounted, private CAudioRenderer {
public:
    /** Paused, at the place where the ring stands. */
    static OSErr Create(const AudioPlayerParts& parts, const AudioPlayerSettings& settings, Ref<CAudioPlayer>& playerP);
    ~CAudioPlayer() override;

    /** Pitch, tempo and vocal mode. */
    [[nodiscard]] CPitchTempoVolume& PitchTempoVolume() noexcept { return *i_spoolP; }

    void SetPaused(bool pausedB);
    [[nodiscard]] bool IsPaused() const noexcept { return i_pausedB.load(); }
    /** All of the song was read; the last blocks may still be heard (IsHeardOut). */
    [[nodiscard]] bool IsStopped() const noexcept { return i_stoppedB.load(); }
    void ClearStopped() noexcept { i_stoppedB.store(false); }
    [[nodiscard]] bool IsHeardOut() const noexcept;

    /** 0 to 1 of the song. While it is under way the render thread gives silence. */
    OSErr Seek(double position);
    /** Where the music starts, in 300ths; 0 when it cannot be told. Waits until the player is paused or stopped, and
        leaves the song at its start. */
    long AutoCue();

    /** The frame of the song that the device takes now: neither what waits in the output nor in the engine counts. */
    [[nodiscard]] double HeardFrame() const noexcept { return i_positions.At(i_chain.Output().FramesPlayed()); }
    [[nodiscard]] const CAudioPositions& Positions() const noexcept { return i_positions; }
    [[nodiscard]] long Heard300() const noexcept { return static_cast<long>(HeardFrame() / kFramesPer300th); }
    /** Frames of silence that were given because the ring was late. */
    [[nodiscard]] std::uint64_t FramesLate() const noexcept { return i_lateL.load(std::memory_order_relaxed); }
    OSErr Result() const noexcept { return i_chain.Result(); }
    [[nodiscard]] const CAudioUnitChain& Chain() const noexcept { return i_chain; }

private:
    CAudioPlayer(const AudioPlayerParts& parts, const AudioPlayerSettings& settings);
    OSErr Open();
    OSErr RenderBlock(std::span<std::int16_t> stereo) noexcept override;
    [[nodiscard]] BlockOutlook Outlook() const noexcept override;
    std::size_t RenderRest(std::span<std::int16_t> stereo) noexcept override;
    OSErr ReadSong(std::span<float> stereo, std::size_t& frames) noexcept;
    OSErr Refill(bool& lateB) noexcept;
    [[nodiscard]] std::uint64_t Place() const noexcept { return i_spoolP->GetPos() / kChannels; }
    void Count(const CSoundSeam::Given& given, std::size_t blockL, bool pausedB) noexcept;

    const AudioPlayerParts i_parts;
    const AudioPlayerSettings i_settings;
    const Ref<CAS_AudioRing> i_spoolP;
    CAudioUnitChain i_chain;
    CReadTurn i_turn;
    std::atomic<bool> i_pausedB{true}, i_stoppedB{false};
    std::atomic<std::uint64_t> i_soundEndL{0};   // output frames up to the end of the last sound
    std::atomic<std::uint64_t> i_lateL{0};
    std::atomic<long> i_jumpsL{0};   // how often the ring went elsewhere; raised while the render thread is kept away
    CAudioPositions i_positions;

    // The render thread's.
    std::vector<float> i_floats;   // one block
    CSoundSeam i_seam;
    long i_jumpsSeenL = 0;
    bool i_playedB = false;     // it was not paused once
    bool i_soundedB = false;    // sound was given
    std::size_t i_shortL = 0;   // frames that the last blocks lacked; late only if sound follows
};
