#pragma once
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Audio/CVolumeStage.h"
#include "Core/CWatchers.h"
#include "Library/CListWatcher.h"
#include "Library/CSongDatabase.h"
#include "Play/CInterruptedSong.h"
#include "Play/CNextSong.h"
#include "Play/CPlayingSong.h"
#include "Play/CPlayOrder.h"
#include "Play/CSongLevels.h"
#include "Play/CSongPlay.h"
#include "Threads/CHandle.h"

class CPlayHost;
class CPlayWatcher;

/** What desktop, command line and phones ask to play: one song of one list at a time, and what follows it.
    Units    300ths of the song; a position is 0 to 1 of it.
    Threads  main. Nothing here waits: a song that starts says so by State, and PlayChanged tells of each change.
             CallOnMain brings a wish from another thread.
    Owner    CApp, or a command. Whoever waits for the threads at the end of the application waits for the songs that
             are on their way out, too.
    Errors   a status when the wish makes no sense now; what breaks later is told to the user, and kept (PlayErr). */
class CPlayControl final : public CPlayingSong, private CSongPlayOwner, private CListWatcher {
public:
    explicit CPlayControl(CPlayHost& host);
    ~CPlayControl() override;
    CPlayControl(const CPlayControl&) = delete;
    CPlayControl& operator=(const CPlayControl&) = delete;

    // ---- What plays ----
    /** The one row of the selection; the user is asked when there are several. paramErr, userCanceledErr. */
    OSErr Play(const SDB_Selection& selection);
    /** Ends what plays and starts this row. fnfErr: no such list, row or song. */
    OSErr Play(PlaylistID list, PLItemID item);
    /** The song that plays stands in this row from now on, and what comes next follows it there. fnfErr: no such row;
        paramErr: another song's, or nothing plays. */
    OSErr GoOnIn(PlaylistID list, PLItemID item);
    void Stop() override;
    void SetPaused(bool pausedB);
    void TogglePause() { SetPaused(!IsPaused()); }
    /** The row after this one, by the wish of the operator: what the list's end says does not count. */
    OSErr PlayNext();
    /** The row before; the song's start where there is none. */
    OSErr PlayPrevious();
    /** To the trim start, or the very start. */
    void Rewind();
    /** The song that was cut off by hand in the last half minute; nothing when there is none. */
    [[nodiscard]] std::optional<GoBackOffer> InterruptedSong() const { return i_interrupted.Offer(); }
    /** It plays on from there, as it sounded, whatever plays now. fnfErr when there is none. */
    OSErr GoBack();
    /** A song that still starts will begin there, whatever its music's start is. */
    void Seek(double position);
    void SeekTo300(long time300);

    [[nodiscard]] PlayState State() const;
    /** Something plays, and is not paused. */
    [[nodiscard]] bool IsPlaying() const override { return State() == PlayState::kPlaying && !IsPaused(); }
    /** Also while a song starts that is to begin so. */
    [[nodiscard]] bool IsPaused() const;
    [[nodiscard]] long CurTime300() const;
    [[nodiscard]] long EndTime300() const;
    /** Below 0 while nothing plays. */
    [[nodiscard]] SongID CurrentSong() const;
    [[nodiscard]] PlaylistID CurrentList() const;
    /** SDB_kNoItem before the first play, and once the row has left its list: the song plays on. */
    [[nodiscard]] PLItemID CurrentItem() const;
    /** Why the last song could not be played, or not to its end. */
    OSErr PlayErr() const noexcept { return i_lastErr; }
    /** Null while nothing plays. */
    [[nodiscard]] const CSongPlay* Current() const noexcept { return i_playP.Get(); }

    // ---- How it sounds ----
    /** Semitones, -12 to 12; kept with the song, or with the row where its list has values of its own. */
    OSErr SetPitch(int semitones);
    [[nodiscard]] int Pitch() const noexcept { return i_pitchS; }
    /** 0.25 to 2.55, in hundredths. */
    OSErr SetTempo(double tempo);
    /** By so many steps of "Tempo change increment (percent)". */
    OSErr StepTempo(int steps);
    [[nodiscard]] double Tempo() const noexcept { return i_tempo; }
    /** 0 to 1: of what plays, and of every song that has no level of its own. */
    void SetVolume(float volumeF);
    /** What is heard: the song's own level while it plays, else the transport's. */
    [[nodiscard]] float Volume() const noexcept { return i_songLevelF.value_or(i_volumeF); }
    void SetMute(bool mutedB);
    [[nodiscard]] bool IsMuted() const noexcept { return i_mutedB; }
    /** Of the song that plays. */
    void SetVocalMode(VocalMode mode);
    [[nodiscard]] VocalMode Vocal() const noexcept { return i_vocal; }
    /** "Play all songs at one level": a song whose loudness was measured, before or while others played, is brought to
        that of the others. */
    void SetOneLevel(bool onB);
    [[nodiscard]] bool IsOneLevel() const;
    /** By so many steps of "Sync Slip increment (300ths)"; the answer is for the room. */
    std::string SlipSong(int steps);
    std::string SetSongSlip300(long slip300);
    std::string SlipGlobal(int steps);
    std::string SetGlobalSlip300(long slip300);
    [[nodiscard]] std::string SongSlipText() const;
    [[nodiscard]] std::string GlobalSlipText() const;
    /** Seconds by which the picture of the song that plays is ahead. */
    [[nodiscard]] double SlipT() const noexcept { return i_slipT; }
    /** How much later than the sound the picture is shown, in milliseconds; negative is earlier. Remembered for the
        output that is chosen. */
    void SetPictureDelay(long milliseconds);
    [[nodiscard]] long PictureDelay() const;
    /** The devices that there are, the system's choice first. A worker asks the machine, which may take a while; `told`
        then runs on the main thread, unless the application ends before. abortErr when there is no thread. */
    OSErr AskOutputDevices(std::function<void(const std::vector<std::string>& names)> told);
    /** A song that plays goes over to it where it stands. */
    OSErr SetOutputDevice(const std::string& name);

    void AddWatcher(CPlayWatcher& watcher) { i_watchers.Add(watcher); }
    void RemoveWatcher(CPlayWatcher& watcher) { i_watchers.Remove(watcher); }

    /** Draws what is due; the timer of the picture calls it. */
    void VideoIdle(bool forcedB) override;
    /** Empties itself when the control goes. Lock it on the main thread alone. */
    [[nodiscard]] CHandle<CPlayControl> Self() const noexcept { return i_self.Handle(); }
    /** The next song lies ready. */
    [[nodiscard]] bool IsNextReady() const { return i_next.IsReady(); }

private:
    // Of the song that plays.
    void PreRollDone(CSongPlay& play, OSErr err) override;
    void SongEnded(CSongPlay& play) override;
    void SongFailed(CSongPlay& play, OSErr err) override;
    CGraphicsPorts& Ports() override;
    CPlayWindowRule WindowRule() const override;
    // Of the lists: the song that comes next may be another one now.
    void ListRemoved(PlaylistID list) override;
    void ItemsLeave(PlaylistID list, std::span<const PLItemID> items) override;
    void ItemsChanged(PlaylistID list, ListMessage message, std::span<const PLItemID> items) override;
    void SortChanged(PlaylistID list, const SortSpec& spec, bool startedB) override;

    /** Tells the song what the look for its files has found. */
    void NoteFiles(CSongPlay& play, OSErr err) const;

    /** A place in a song that has no length yet: a time, or else a part of the whole. */
    struct Wish {
        long time300 = -1;
        double position = 0;
    };
    struct StartHow {
        bool pausedB = false;
        bool stepB = false;      // the song before gives way to it
        bool handB = false;      // the operator wants it now: what plays is cut off
        bool countedB = false;   // as sung, before it was had back
        long at300 = -1;         // from there rather than from the music's start
        std::optional<Wish> wish = {};
        std::optional<float> levelF = {};   // rather than the song's own, or the transport's
    };
    /** fnfErr, told, and all stays as it is: no such row, or no song in it. */
    OSErr PlayRow(PlaylistID list, PLItemID item, const StartHow& how);
    /** Ends what plays and starts this; i_orderP says already where it stands. */
    OSErr PlaySong(const SongPlaySpec& spec, const StartHow& how);
    /** Nothing when there is no such row, or no song in it. */
    [[nodiscard]] std::optional<SongPlaySpec> SpecOf(PlaylistID list, PLItemID item) const;
    static void TellLostGraphics(const CSongPlay& play);
    void TellFailure(const CSongPlay& play, OSErr err, const std::string& then) const;
    [[nodiscard]] bool IsQuitting() const;
    /** The show stands there now. */
    void StandAt(PlaylistID list, PLItemID item);
    /** The next row that has a song begins, as the preferences say of the end of a song. False when none does. */
    bool GoOn();
    /** "Next" and its kin: the song there takes the place of what plays. */
    OSErr StepTo(PLItemID item, const StartHow& how);
    /** What plays, as it sounds now: of its own files, as its row may have left the list, its song the library. */
    [[nodiscard]] SongPlaySpec SpecAsNow() const;
    /** The song that plays is about to be cut off by hand. */
    void KeepInterrupted(bool wentBackB = false);
    /** `next` is the name of the song that takes its place. */
    void EndCurrent(std::string next = {});
    /** Nothing follows: the windows go by their rule. */
    void EndShow();
    /** By the preference, and the state of its zip. */
    [[nodiscard]] bool MustWait(const CSongPlay& play) const;
    /** A song that was heard to its end has told how long it is. */
    void NoteLength(const CSongPlay& play) const;
    /** The song counts as sung. */
    void FinishSong(const CSongPlay& play);
    void CacheNext();
    /** The next song is measured first, then the one that plays, then those that follow. */
    void WantLevels();
    [[nodiscard]] std::string WantedDevice() const;
    /** The output follows the preferences. */
    void ChooseOutput();
    [[nodiscard]] static float ReadVolume(CPlayHost& host);
    void KeepValue(MetaKey key, double value);
    void TellPlay();
    void TellSettings();
    void TellGoBack();

    CPlayHost& i_host;
    CHandled<CPlayControl> i_self{this};
    CWatchers<CPlayWatcher> i_watchers;
    const Ref<CPlayOutput> i_outputP;
    std::string i_device;     // that i_outputP was given; empty: none yet
    Ref<CSongPlay> i_playP;   // null: idle
    CNextSong i_next;
    CSongLevels i_levels;
    bool i_nextStaleB = false;              // the list has changed since i_next was chosen
    double i_nextLookT = 0;                 // before this it is not looked at again, nor dropped after a stop
    bool i_startPausedB = false;            // i_playP is to begin paused
    bool i_delayedB = false;                // it stands paused until its zip is unpacked, or the operator lets it go
    std::optional<Wish> i_wish;             // where it is to begin, as the operator said while it starts
    std::unique_ptr<CPlayOrder> i_orderP;   // never null
    double i_beganT = 0;                    // i_playP has played since
    bool i_overB = false;                   // it was sung to its end
    CInterruptedSong i_interrupted;
    OSErr i_lastErr = noErr;
    bool i_countedB = false;   // i_playP is counted as sung
    int i_failedL = 0;         // songs in a row that could not be played
    int i_pitchS = 0;
    double i_tempo = 1;
    float i_volumeF = 1;                 // the transport's level
    std::optional<float> i_songLevelF;   // the other one that i_playP has
    bool i_mutedB = false;
    VocalMode i_vocal = VocalMode::kBoth;
    double i_slipT = 0;   // of the song that plays
};
