#pragma once
#include <atomic>
#include <memory>
#include <mutex>

#include "Audio/CAudioPlayer.h"
#include "Play/CPlayPace.h"
#include "Play/SongPlayParts.h"

/** The sound of one play of a song: its files, the output that it has while it plays, and its player.
    Units    300ths of the song.
    Threads  PreRoll, SeekAsAsked and Dispose on workers, one at a time (BeginWork, LeaveWork); Stop, AskSeek and the
             player's settings on the main thread; the rest any.
    Owner    CSongPlay.
    Errors   Err has the first one. */
class CSongSound final : private CAudioSong {
public:
    explicit CSongSound(const SongPlayParts& parts) : i_parts(parts), i_oneLevelB(parts.oneLevelB) {}
    CSongSound(const CSongSound&) = delete;
    CSongSound& operator=(const CSongSound&) = delete;

    // ---- Workers ----
    /** Waits for the output and makes the player, paused, where the song is to begin. noErr without sound. */
    OSErr Prepare();
    /** In place of Prepare: where the music begins, in 300ths. It closes the ring. */
    OSErr FindStart(const AudioPlayerSettings& settings, long& start300);
    /** Goes where it was last asked to, until nobody asks any more. */
    void SeekAsAsked();
    /** Ends the player and the spools, and lets the output go. */
    void Dispose();

    /** A worker is about to use all this; by who starts it. */
    void BeginWork();
    /** It is done; by the worker. After Stop it disposes. False, and the work goes on, when a seek was asked for
        meanwhile. */
    [[nodiscard]] bool LeaveWork();

    // ---- Main thread ----
    /** A waiting caller goes on, with abortErr. True when no worker is there: the caller sees to Dispose. */
    [[nodiscard]] bool Stop();
    /** True when a worker is to be started for it (SeekAsAsked). */
    [[nodiscard]] bool AskSeek(long time300);
    /** Null before the end of the pre-roll, and without sound. Not after Stop. */
    [[nodiscard]] CAudioPlayer* Player() const noexcept { return i_playerP.Get(); }
    [[nodiscard]] std::shared_ptr<const CHeardSound> Heard() const;
    /** The song is brought to the one level of all songs, if its own was measured. */
    void SetOneLevel(bool onB);

    [[nodiscard]] bool HasSound() const noexcept { return static_cast<bool>(i_parts.loadP->Audio()); }
    /** Where it begins; after Prepare. */
    [[nodiscard]] long Start300() const noexcept { return i_start300; }
    /** Of all the sound, as far as known; 0 without. */
    [[nodiscard]] long Length300() const;
    [[nodiscard]] bool IsStopped() const noexcept { return i_stopB.load(); }
    void SetState(long state) noexcept { i_state.store(state); }
    [[nodiscard]] long State() const noexcept { return i_state.load(); }
    /** Its files were opened, but no player could be made of them. */
    [[nodiscard]] bool LacksPlayer() const noexcept { return i_lacksPlayerB.load(); }
    /** Keeps the first. */
    void SetErr(OSErr err) noexcept;
    OSErr Err() const noexcept { return i_err.load(); }

private:
    std::string Name() const override { return i_parts.spec.name; }
    Ref<CAS_AudioRing> AudioSpool() const override { return i_parts.loadP->Audio(); }
    long TrimStart() const override { return i_parts.spec.trimStart300; }
    bool IsCooperative() const override { return i_parts.spec.cooperativeB; }
    long PlayState() const override { return State(); }
    OSErr PlayErr() const override { return Err(); }
    OSErr Seek(double position) override { return AudioSpool()->Seek(position); }
    bool ExchangeSeeking(bool seekingB) override { return i_seekingFlagB.exchange(seekingB); }

    OSErr MakePlayer();
    [[nodiscard]] float GainF() const;
    OSErr GoToStart();
    OSErr SeekPlayer(long time300);

    const SongPlayParts& i_parts;
    std::atomic<long> i_state{0};
    std::atomic<OSErr> i_err{noErr};
    std::atomic<bool> i_stopB{false}, i_seekingFlagB{false}, i_lacksPlayerB{false};
    std::atomic<bool> i_oneLevelB;

    std::mutex i_workLock;     // guards the two below; nothing is waited for under it
    bool i_workingB = false;   // a worker has the player and the spools
    long i_wanted300 = -1;     // where the sound is to go; -1: nowhere

    // The worker's; the main thread reads them after the pre-roll.
    Ref<CAudioPlayer> i_playerP;
    bool i_outputTakenB = false;
    long i_start300 = 0;
};
