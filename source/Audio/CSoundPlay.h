#pragma once
#include <atomic>
#include <memory>

#include "Audio/CAudioPlayer.h"
#include "Audio/CSongRender.h"
#include "Core/CFileRef.h"

/** One file that sounds: its source, its ring and its player.
    Threads  main, or the one thread of a tool.
    Owner    whoever plays. The end stops the player and closes the ring, which ends the pump.
    Errors   statuses of the source and the output; the player's are told to the user. */
class CSoundPlay final : private CAudioSong {
public:
    explicit CSoundPlay(CFileRef file) : i_file(std::move(file)) {}
    ~CSoundPlay() override;
    CSoundPlay(const CSoundPlay&) = delete;
    CSoundPlay& operator=(const CSoundPlay&) = delete;

    /** Opens the file and fills the ring to its first block. */
    OSErr Load();
    /** After Load: where the music begins, in 300ths. In place of Begin: it closes the ring. Preemptive threads. */
    OSErr FindStart(const AudioPlayerSettings& settings, long& start300);
    /** After Load: plays on `output`, which outlives this. */
    OSErr Begin(CAudioOutput& output, const AudioPlayerSettings& settings, const SongSound& sound);

    [[nodiscard]] bool IsHeardOut() const { return i_playerP && i_playerP->IsHeardOut(); }
    [[nodiscard]] long Heard300() const { return i_playerP ? i_playerP->Heard300() : 0; }
    /** Of the whole song, as far as known. */
    [[nodiscard]] long Total300() const;
    /** Why it cannot go on. */
    OSErr Result() const;
    [[nodiscard]] std::uint64_t FramesLate() const { return i_playerP ? i_playerP->FramesLate() : 0; }

private:
    // What the player asks of its song.
    std::string Name() const override { return i_file.GetPath().stem().string(); }
    Ref<CAS_AudioRing> AudioSpool() const override { return i_ringP; }
    long TrimStart() const override { return 0; }
    bool IsCooperative() const override { return false; }
    long PlayState() const override { return i_playerP ? 2 : 1; }
    OSErr PlayErr() const override { return i_ringP ? i_ringP->Err() : noErr; }
    OSErr Seek(double position) override { return i_playerP ? i_playerP->Seek(position) : i_ringP->Seek(position); }
    bool ExchangeSeeking(bool seekingB) override { return i_seekingB.exchange(seekingB); }

    const CFileRef i_file;
    Ref<CAS_AudioRing> i_ringP;
    AudioLevel i_level;   // outlives the player
    Ref<CAudioPlayer> i_playerP;
    std::atomic<bool> i_seekingB{false};
};
