#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "Audio/CFrameHistory.h"
#include "Audio/CTimePitchVoice.h"
#include "Platform/OSErr.h"

/** Where CTimePitch takes its frames from. */
class CTimePitchSource {
public:
    /** Fills the front of `stereo`; whole frames, `frames` is set in any case. noErr with 0: nothing has come yet;
        eofErr: nothing will come any more. */
    virtual OSErr ReadFrames(std::span<float> stereo, std::size_t& frames) = 0;

protected:
    ~CTimePitchSource() = default;
};

/** A stream of sound at another pitch and another tempo, each of which can change at any time without a gap. A change
    starts a second voice of the engine a little before the place that is heard now, looks for the spot where its wave
   fits the one of the first, and cross-fades over 10 ms: so no change leaves a click, none shifts the place in the song
    by more than the few ms that fit, and the position stays exact. With pitch 0 and tempo 1 the samples pass bit for
    bit.

    Units    stereo frames of floats. Positions are frames of the source since the start or the last Restart.
    Threads  Render on one thread, which allocates nothing and waits for nobody; the rest on any.
    Errors   a tempo that is no number is refused; one out of range is limited. */
class CTimePitch {
public:
    CTimePitch();

    /** Heard from the next Render on. May allocate, and waits for another setter, never for Render. */
    OSErr Set(int pitch, double tempo);
    OSErr SetPitch(int pitch);
    OSErr SetTempo(double tempo);
    [[nodiscard]] int Pitch() const noexcept { return i_pitch.load(std::memory_order_relaxed); }
    [[nodiscard]] double Tempo() const noexcept { return i_tempo.load(std::memory_order_relaxed); }

    /** The next Render begins anew, at frame 0 of what the source gives then. */
    void Restart() noexcept { i_restartB.store(true, std::memory_order_release); }

    /** Fills the front of `stereo`. When the source is used up, silence is put after it to get its last frames out of
        the engine, and no frame beyond its end is given. noErr with less than asked: the source is late. eofErr with 0:
        all is given. Another failure of the source: no frames. */
    OSErr Render(std::span<float> stereo, std::size_t& frames, CTimePitchSource& source) noexcept;

    /** The frame of the source that the next Render gives. */
    [[nodiscard]] double Position() const noexcept { return i_position.load(std::memory_order_relaxed); }
    /** Frames taken from the source and not given yet. For Render's thread. */
    [[nodiscard]] double Held() const noexcept;
    /** All is given. For Render's thread. */
    [[nodiscard]] bool IsDone() const noexcept;

private:
    /** A change looks for the best fit this many frames before and after the true place: a period of 73 Hz. */
    static constexpr std::size_t kFit_Frames = 300;
    static constexpr std::size_t kFit_Skip = 64;   // the engine's filter has not seen enough yet
    static constexpr std::size_t kFade_Frames = 441;
    static constexpr std::size_t kFit_All = kFit_Skip + 2 * kFit_Frames + kFade_Frames;
    static constexpr std::size_t kHistory_Frames = 65536;

    void BeginAnew() noexcept;
    void TakeSetting(CTimePitchSource& source) noexcept;
    bool ChangeVoice(CTimePitchSource& source) noexcept;
    /** Frames, up to `frames`, that the voice can give. */
    std::size_t Prepare(CTimePitchVoice& voice, std::size_t frames, CTimePitchSource& source) noexcept;
    void Take(CTimePitchVoice& voice, std::span<float> stereo) noexcept;
    bool Pull(std::uint64_t upTo, CTimePitchSource& source) noexcept;
    [[nodiscard]] std::size_t BestFit(std::size_t trueAt) noexcept;
    [[nodiscard]] double Place() const noexcept;
    [[nodiscard]] std::size_t FramesLeft() const noexcept;

    CTimePitchVoice i_voices[3];
    std::vector<float> i_fadeIn;   // raised cosine, one value a frame

    std::mutex i_settingLock;                   // Render only tries it
    CTimePitchVoice* i_spareP = &i_voices[2];   // guarded by i_settingLock: set up by whoever changes a setting
    bool i_changedB = false;                    // guarded by i_settingLock: the spare is to be heard
    std::atomic<int> i_pitch{0};                // stored under i_settingLock
    std::atomic<double> i_tempo{1.0};

    // Render's.
    CTimePitchVoice* i_voiceP = &i_voices[0];
    CTimePitchVoice* i_otherP = &i_voices[1];   // free, or about to be heard
    bool i_changingB = false;                   // i_otherP waits to be heard
    bool i_begunB = false;                      // something was given since the start
    bool i_sourceDoneB = false;
    OSErr i_sourceErr = noErr;
    CFrameHistory i_history{kHistory_Frames};
    std::vector<float> i_old, i_new;   // kFade_Frames, kFit_All
    std::vector<float> i_oldMono, i_newMono;
    const std::vector<float> i_silence;   // kPut_Frames
    std::size_t i_stagedAt = kFit_All;    // frames of i_new from here on come before the voice's

    std::atomic<bool> i_restartB{false};
    std::atomic<double> i_position{0};   // stored by Render
};
