#pragma once
#include "Play/CSongPicture.h"
#include "Play/CSongPlayOwner.h"
#include "Play/CSongSound.h"
#include "Play/PlayState.h"

/** One play of one song: its sound, its picture and its clock. A worker makes it ready (CT_PlayAudio), Begin lets it
   run, Stop is its end; a song that is played again is another CSongPlay, so that the old one may take its time to end.
    Units    300ths of the song.
    Threads  main, but for PreRoll, RunSeeks and Dispose, which are a worker's.
    Owner    Ref: the control and the workers.
    Errors   PlayErr has the first; the owner hears of those that end the song. */
class CSongPlay final : public RefCounted, private CSongPictureOwner {
public:
    CSongPlay(SongPlayParts parts, CSongPlayOwner& owner);

    // ---- Workers ----
    OSErr PreRoll(std::unique_ptr<CS_MainThread_AbortProc> completionP);
    void RunSeeks();
    void Dispose() { i_sound.Dispose(); }

    // ---- Main thread ----
    /** The worker starts. memFullErr when there is none. */
    OSErr Start(std::unique_ptr<CS_MainThread_AbortProc> completionP);
    /** The picture, once the files are open; nothing after Stop. */
    void WireUpGraphics();
    /** The pre-roll is over, with this result; tells the owner. */
    void PreRollOver(OSErr err);
    /** The song stands where it begins, paused; SetPaused lets it go. */
    OSErr Begin();
    /** There is no way back. Nobody waits: a pre-roll ends with abortErr on its own. `next` is the name of the song
        that takes its place, if one does. */
    void Stop(std::string next = {});
    void SetPaused(bool pausedB);
    [[nodiscard]] bool IsPaused() const noexcept { return i_picture.IsPaused(); }
    /** Of picture and sound; comes back at once, the sound follows. */
    void SeekTo300(long time300);
    /** Draws what has fallen due, and tells the owner when the song is over. */
    void Tick(bool forceB);
    OSErr SetPitchTempo(double pitch, double tempo);
    void SetVocalMode(VocalMode mode);
    void SetOneLevel(bool onB);
    /** Of the picture behind the sound, in milliseconds. */
    void SetPictureDelay(long milliseconds) { i_picture.SetDelay(milliseconds); }
    void SetSlipT(double seconds) { i_picture.SetSlipT(seconds); }

    [[nodiscard]] const SongPlaySpec& Spec() const noexcept { return i_parts.spec; }
    /** Where it was asked to begin, in 300ths; -1: where the music does. */
    [[nodiscard]] long StartAt300() const noexcept { return i_parts.startAt300; }
    [[nodiscard]] const CSongLoad& Files() const noexcept { return *i_parts.loadP; }
    [[nodiscard]] PlayState State() const noexcept { return static_cast<PlayState>(i_sound.State()); }
    [[nodiscard]] bool HasPlayer() const noexcept {
        return State() == PlayState::kPlaying && i_sound.Player() != nullptr;
    }
    /** Where the song is. */
    [[nodiscard]] long CurTime300() const noexcept { return i_picture.Time300(); }
    /** Its end: the mark, else that of sound or picture, the later one. */
    [[nodiscard]] long EndTime300() const;
    /** What it lasted, to the last sample and the last packet that draws; 0 before it was heard to its end, and where
        that came early. */
    [[nodiscard]] long HeardLength300() const;
    /** What is heard now; 0 without sound. */
    [[nodiscard]] long Heard300() const;
    [[nodiscard]] long Packets() const { return i_picture.Packets(); }
    [[nodiscard]] MovieCounts Pictures() const { return i_picture.Pictures(); }
    [[nodiscard]] std::uint64_t FramesLate() const;
    OSErr PlayErr() const noexcept { return i_sound.Err(); }
    /** Its files were opened, but no player could be made of them. */
    [[nodiscard]] bool LacksPlayer() const noexcept { return i_sound.LacksPlayer(); }
    [[nodiscard]] const CGraphics* Graphics() const noexcept { return i_picture.Graphics(); }

private:
    friend class CT_SeekSound;
    bool IsSoundOver() const override;
    bool IsEnding() const override { return i_ownerP == nullptr; }
    void PictureEnded() override;
    void PictureFailed(OSErr err) override;

    /** A device that was away, or a disc that stood still, has left the sound behind: it goes on where the words are. */
    void MendDrift();
    void StartSeekWorker();
    void SeeksDone();
    [[nodiscard]] bool IsSeeking() const noexcept { return i_seekersL > 0; }
    /** `act` on the main thread, later. */
    void Post(const char* nameZ, void (CSongPlay::*act)());
    void TellEnded();
    void TellFailed();

    const SongPlayParts i_parts;
    CSongPlayOwner* i_ownerP;   // null after Stop; main thread
    CSongSound i_sound;
    CSongPicture i_picture;
    // Main thread.
    std::string i_replacedBy;   // after Stop
    int i_seekersL = 0;         // workers that take the sound elsewhere, or whose end was not told yet
    bool i_endedB = false;      // its end is about to be told
    double i_apartSinceT = 0;   // picture and sound are far from each other; 0: they are not
    long i_lastHeard300 = 0;    // as of the last look
};
