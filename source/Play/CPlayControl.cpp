#include "Play/CPlayControl.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/PlayNext.h"
#include "Platform/BesideShow.h"
#include "Platform/CClock.h"
#include "Play/CPlayHost.h"
#include "Play/CPlayWatcher.h"
#include "Play/CSongLoadCompletion.h"
#include "Play/LaunchFile.h"
#include "SongFiles/CT_FindMissing.h"
#include "Values/CCFPrefDictionary.h"

namespace {

constexpr SongID kNoSong{SDB_kUninitializedID};
/** Lengths so near to each other are one: they are counted by different roads. */
constexpr long kSameLength_300ths = 3;
/** A list that changes all the time is not looked through more often. */
constexpr double kNextLook_T = 1;
/** So many songs in a row that cannot be played are no accident of theirs: the list stops. */
constexpr int kFailures_Most = 3;
/** What lies ready stays so long after a stop; then it must not hold a disc that is to be taken out. */
constexpr double kNextKept_T = 30;

}   // namespace

CPlayControl::CPlayControl(CPlayHost& host)
    : i_host(host),
      i_outputP(MakeRef<CPlayOutput>()),
      i_levels(host.Database()),
      i_orderP(host.OrderOf(PlaylistID{SDB_kUninitializedID})),
      i_volumeF(ReadVolume(host)) {
    i_outputP->Level().gainF = i_volumeF;
    i_host.Show()->globalSlip300 = host.Preferences().GetLong("Global Song Sync Slip (300ths)");
    i_host.Database().AddWatcher(*this);
}

CPlayControl::~CPlayControl() {
    i_self.Empty();
    i_host.Database().RemoveWatcher(*this);
    i_watchers.Clear();
    EndCurrent();
}

// ---- Starting ----

OSErr CPlayControl::Play(const SDB_Selection& selection) {
    if (selection.Count() == 0 || selection.List() == nullptr) return paramErr;
    if (selection.Count() == 1) return Play(selection.List()->ID(), selection.Items().front());
    Question question;
    question.title = Localize("Play");
    question.text = Localize(
        "You must have exactly one song selected to play.  Somehow, it seems there are 2 or more songs "
        "selected.  Would you like to deselect them?  You can then just double click the song you want to play.");
    question.buttons = {Localize("Deselect"), Localize("Cancel")};
    question.safeIndex = 1;
    AskThen(i_host.Ui(), question, [self = Self()](const Answer& answer) {
        CPlayControl* const controlP = self.Get();
        if (controlP != nullptr && answer.buttonIndex == 0) controlP->i_host.Deselect();
    });
    return userCanceledErr;
}

OSErr CPlayControl::Play(PlaylistID list, PLItemID item) { return PlayRow(list, item, {.handB = true}); }

OSErr CPlayControl::GoOnIn(PlaylistID list, PLItemID item) {
    const CPlayList* const listP = i_host.Database().GetPlayList(list);
    const auto row = listP == nullptr ? std::nullopt : listP->Items()->Get(item);
    if (!row) return fnfErr;
    if (State() == PlayState::kIdle || row->target != PLTarget(CurrentSong())) return paramErr;
    StandAt(list, item);
    i_nextStaleB = true;
    TellPlay();
    return noErr;
}

std::optional<SongPlaySpec> CPlayControl::SpecOf(PlaylistID list, PLItemID item) const {
    std::optional<SongPlaySpec> spec = ReadRowPlaySpec(i_host.Database(), list, item, i_host.Preferences());
    if (spec) spec->gainF = i_host.GainOf(spec->song);
    return spec;
}

OSErr CPlayControl::PlayRow(PlaylistID list, PLItemID item, const StartHow& how) {
    if (IsQuitting()) return abortErr;
    const std::optional<SongPlaySpec> spec = SpecOf(list, item);
    if (!spec) {
        ShowAlert(
            Localize("Stranger than Fiction error: The song you're trying to play is not in the current playlist."),
            {});
        return fnfErr;
    }
    if (i_playP && !how.stepB && CurrentSong() != spec->song)
        Log("WARNING****  A case where the previous song wasn't stopped!");
    if (how.handB) KeepInterrupted();
    StandAt(list, item);
    return PlaySong(*spec, how);
}

void CPlayControl::StandAt(PlaylistID list, PLItemID item) {
    if (i_orderP->ListID() != list) i_orderP = i_host.OrderOf(list);
    i_orderP->GoTo(item);
}

OSErr CPlayControl::PlaySong(const SongPlaySpec& spec, const StartHow& how) {
    EndCurrent(spec.name);
    ChooseOutput();
    i_startPausedB = how.pausedB;
    i_wish = how.wish;
    i_overB = false;
    i_countedB = how.countedB;
    if (how.handB) i_failedL = 0;
    i_songLevelF = how.levelF;
    if (!i_songLevelF && spec.volumeF > 0) i_songLevelF = spec.volumeF;
    i_lastErr = noErr;
    i_pitchS = static_cast<int>(spec.pitch);
    i_tempo = spec.tempo;
    i_vocal = spec.vocal;
    i_slipT = spec.slipT;

    const CCFPrefDictionary& preferences = i_host.Preferences();
    SongPlayParts parts{.spec = spec,
                        .show = i_host.Show(),
                        .loadP = i_next.Take(spec),
                        .outputP = i_outputP,
                        .settings = AudioPlayerSettings::Read(preferences),
                        .autoCueB = preferences.GetBool("Auto-cue"),
                        .hq4xB = preferences.GetBool("Use hq4x upscaling (fast computers only)"),
                        .anyDeviceB = i_host.PlaysOnAnyDevice(),
                        .oneLevelB = IsOneLevel(),
                        .pictureDelayL = PictureDelay(),
                        .startAt300 = how.at300};
    CSongPlayOwner& owner = *this;
    i_playP = MakeRef<CSongPlay>(std::move(parts), owner);
    i_lastErr = i_playP->Start(std::make_unique<CSongLoadCompletion>(spec.name));
    if (Failed(i_lastErr)) EndCurrent();
    TellPlay();
    TellSettings();
    return i_lastErr;
}

void CPlayControl::PreRollDone(CSongPlay& play, OSErr err) {
    LogF("Play started for %s (result: %ld)\n", play.Spec().name.c_str(), static_cast<long>(Number(err)));
    NoteFiles(play, err);
    if (!Failed(err) && play.Files().Kind() == SongKind::kLaunch) {
        err = LaunchFile(play.Files().MainFile());
        if (!Failed(err)) {
            EndCurrent();
            TellPlay();
            return;
        }
    }
    i_delayedB = !Failed(err) && !i_startPausedB && MustWait(play);
    if (!Failed(err)) err = play.Begin();
    // What was asked for while it started.
    if (const SongPlaySpec& spec = play.Spec();
        !Failed(err) && (i_pitchS != static_cast<int>(spec.pitch) || i_tempo != spec.tempo))
        err = play.SetPitchTempo(i_pitchS, i_tempo);
    if (!Failed(err) && i_vocal != play.Spec().vocal) play.SetVocalMode(i_vocal);
    if (!Failed(err)) play.SetOneLevel(IsOneLevel());
    if (Failed(err)) {
        if (!play.HasPlayer()) Log("### no audio player");
        SongFailed(play, err);
        return;
    }
    if (const std::optional<Wish> wish = std::exchange(i_wish, {}); wish && wish->time300 >= 0)
        SeekTo300(wish->time300);
    else if (wish)
        Seek(wish->position);
    i_outputP->Level().gainF = Volume();   // the song before has let the output go: it does not hear of it
    i_beganT = CClock::Get().SteadyT();
    play.SetPaused(i_startPausedB || i_delayedB);
    if (!play.Spec().launch.IsEmpty()) (void)Failed(LaunchFile(play.Spec().launch));   // logged; the song plays on
    CacheNext();
    if (i_delayedB) i_host.ShowMessage(Localize("“%1” starts once it is unpacked", {play.Spec().name}));
    TellPlay();
    if (Failed(play.Files().GraphicsErr()))
        TellLostGraphics(play);   // last: the operator reads it while the song plays
}

void CPlayControl::TellLostGraphics(const CSongPlay& play) {
    const CSongLoad& files = play.Files();
    const bool foundB = !files.GraphicsFile().IsEmpty();
    const std::filesystem::path& path = (foundB ? files.GraphicsFile() : play.Spec().video).GetPath();
    static_cast<void>(LogStep(fnfErr, "wiring up graphics ports", path));
    std::string why;
    if (files.GraphicsErr() == eofErr)
        why = Localize("There are none in this file:") + "\n";
    else if (foundB)
        why = FaultWords(files.GraphicsErr(), path) + "\n";
    ShowAlert(Localize("The graphics of “%1” were not found", {play.Spec().name}),
              why + path.string() + "\n" + Localize("The song plays without them."));
}

bool CPlayControl::MustWait(const CSongPlay& play) const {
    return i_host.Preferences().GetBool("Delay start of song playback until unpacked") &&
           i_host.IsUnpacking(play.Spec().song);
}

void CPlayControl::NoteFiles(CSongPlay& play, OSErr err) const {
    CSong* const songP = i_host.Database().GetSong(play.Spec().song);
    if (songP == nullptr) return;
    if (const CSongFiles* const placesP = play.Files().Places()) placesP->Store(*songP);
    const bool markedB = songP->Meta().Stored("Msng"_key).Bool() == BoolValueType::kTrue;
    const bool otherwiseB = markedB ? !Failed(err) : err == fnfErr;
    if (otherwiseB && Failed(CT_FindMissing::Start(i_host.Database(), {songP->GetSongID()})))
        Log("### Error looking for the files of a song");
}

void CPlayControl::ListRemoved(PlaylistID list) {
    if (list == i_orderP->ListID()) i_nextStaleB = true;
}

void CPlayControl::ItemsChanged(PlaylistID list, ListMessage, std::span<const PLItemID>) {
    if (list == i_orderP->ListID()) i_nextStaleB = true;
}

void CPlayControl::ItemsLeave(PlaylistID list, std::span<const PLItemID> items) {
    i_orderP->RowsLeave(list, items);
    i_interrupted.RowsLeave(list, items);
}

void CPlayControl::SortChanged(PlaylistID list, const SortSpec&, bool startedB) {
    if (list == i_orderP->ListID() && !startedB) i_nextStaleB = true;
}

void CPlayControl::CacheNext() {
    i_nextStaleB = false;
    WantLevels();
    i_nextLookT = CClock::Get().SteadyT() + kNextLook_T;
    if (!i_orderP->IsThere() || !i_host.Preferences().GetBool("pre-cache next song")) {
        i_next.Drop();
        return;
    }
    const PLItemID item = i_orderP->Next();
    const bool stopsB = i_host.Preferences().GetBool("Stop at playlist end") || i_orderP->StopsAtEnd();
    const bool endB = stopsB && i_orderP->IsLast();
    std::optional<SongPlaySpec> spec;
    if (!endB && item != SDB_kNoItem && item != i_orderP->Item()) spec = SpecOf(i_orderP->ListID(), item);
    if (spec)
        i_next.Hold(std::move(*spec));
    else
        i_next.Drop();
}

// ---- Ending ----

void CPlayControl::EndCurrent(std::string next) {
    i_delayedB = false;
    i_wish.reset();
    if (const Ref<CSongPlay> playP = std::exchange(i_playP, nullptr)) playP->Stop(std::move(next));
}

void CPlayControl::Stop() {
    if (IsQuitting())
        i_next.Drop();
    else
        KeepInterrupted();
    if (i_playP) EndShow();
}

void CPlayControl::EndShow() {
    EndCurrent();
    i_nextLookT = CClock::Get().SteadyT() + kNextKept_T;
    if (Ports().Port(CGraphicsPort::kScreen_VIDEO) != nullptr) Ports().ApplyRule(WindowRule(), PlayMode::kStop);
    TellPlay();
    if (std::exchange(i_songLevelF, {})) TellSettings();
}

void CPlayControl::SongFailed(CSongPlay& play, OSErr err) {
    const Ref<CSongPlay> playP(&play);   // its end must not come before ours
    i_overB = true;
    const PLItemID here = i_orderP->Item();
    std::string then;
    bool onB = false;
    if (++i_failedL >= kFailures_Most)
        then = Localize("The list has stopped here: several songs in a row could not be played.");
    else
        onB = GoOn();
    if (!onB && (!i_playP || i_playP.Get() == &play)) EndShow();
    i_lastErr = onB ? i_lastErr : err;
    if (onB && i_playP && i_orderP->Item() != here)
        then = Localize("The list goes on with “%1”.", {i_playP->Spec().name});
    i_host.SongFailed(play, err);
    TellFailure(play, err, then);   // last: the operator may begin another song before he has read it
}

void CPlayControl::TellFailure(const CSongPlay& play, OSErr err, const std::string& then) const {
    if (err == abortErr || err == userCanceledErr) return;
    const std::string& name = play.Spec().name;
    const std::filesystem::path& path = play.Files().FailedFile().GetPath();
    std::string message = Localize("The song “%1” could not be played", {name});
    std::string why = FaultWords(err, path) + " (" + std::to_string(Number(err)) + ")";
    if (play.LacksPlayer() && Number(err) >= -1)
        why = Localize(
            "This audio file is not (yet?) compatible with modern CoreAudio.  If you can play it with iTunes, you "
            "might try re-encoding it. ");
    else if (err == fnfErr)
        message = MissingSongText(name), why = Localize("Its files are not where the library says, nor near there.");
    std::string detail = path.empty() ? why : why + "\n" + path.string();
    if (!then.empty()) detail += "\n" + then;
    ShowAlert(message, detail);
}

void CPlayControl::SongEnded(CSongPlay& play) {
    const Ref<CSongPlay> playP(&play);
    if (IsQuitting()) return;
    i_overB = true;
    i_failedL = 0;
    i_host.SongEnded(play);
    NoteLength(play);
    if (!i_countedB) FinishSong(play);
    Log("Going to next song");
    if (!GoOn() && (!i_playP || i_playP.Get() == &play))
        EndShow();   // and nobody began another song while an alert stood
}

bool CPlayControl::GoOn() {
    const Ref<CSongPlay> beforeP = i_playP;
    const CCFPrefDictionary& preferences = i_host.Preferences();
    const StartHow how{.pausedB = preferences.GetBool("Pause between tracks")};
    for (const PLItemID from = i_orderP->Item();;) {
        const PlayNextState state{
            .stopBetweenTracksB = preferences.GetBool("Stop between tracks"),
            .hasPlaylistB = i_orderP->IsThere(),
            .stopAtPlaylistEndB = preferences.GetBool("Stop at playlist end") || i_orderP->StopsAtEnd(),
            .lastOfSelectionB = i_orderP->IsLast()};
        if (ChoosePlayNext(state) != PlayNextCommand::kNext) return false;
        const PLItemID next = i_orderP->Next();
        if (next == SDB_kNoItem || (next == from && i_failedL > 0))
            return false;   // all round, and nothing can be played
        const OSErr err = StepTo(next, how);
        if (!Failed(err)) return true;
        if (i_playP.Get() != beforeP.Get())
            return static_cast<bool>(i_playP);   // one may have begun while an alert stood
        if (err != fnfErr || ++i_failedL >= kFailures_Most) return false;
        i_orderP->GoTo(next);   // a row whose song is nowhere
    }
}

void CPlayControl::NoteLength(const CSongPlay& play) const {
    CSong* const songP = i_host.Database().GetSong(play.Spec().song);
    const long heard300 = play.HeardLength300();
    if (songP == nullptr || heard300 <= 0 || heard300 > std::numeric_limits<std::int32_t>::max()) return;
    if (std::abs(heard300 - songP->Meta().GetInteger("drtn"_key)) <= kSameLength_300ths) return;
    LogF("Duration of %s: %.3f seconds", play.Spec().name.c_str(), static_cast<double>(heard300) / 300.0);
    songP->Meta().SetInteger("drtn"_key, static_cast<std::int32_t>(heard300));
}

void CPlayControl::FinishSong(const CSongPlay& play) {
    if (CSong* const songP = i_host.Database().GetSong(play.Spec().song)) {
        LogF("Updating times sung for song: %s\n", play.Spec().name.c_str());
        songP->Meta().SetInteger("tsng"_key, songP->Meta().GetInteger("tsng"_key) + 1);
        songP->Meta().SetDate("Date"_key, CFDate{CClock::Get().AbsoluteT()});
    }
}

// ---- Questions ----

PlayState CPlayControl::State() const { return i_playP ? i_playP->State() : PlayState::kIdle; }

bool CPlayControl::IsPaused() const {
    if (!i_playP) return false;
    return i_playP->State() == PlayState::kPlaying ? i_playP->IsPaused() : i_startPausedB;
}

long CPlayControl::CurTime300() const {
    if (i_wish && i_wish->time300 >= 0) return i_wish->time300;
    return i_playP ? i_playP->CurTime300() : 0;
}

long CPlayControl::EndTime300() const { return i_playP ? i_playP->EndTime300() : 0; }
SongID CPlayControl::CurrentSong() const { return i_playP ? i_playP->Spec().song : kNoSong; }
PlaylistID CPlayControl::CurrentList() const { return i_orderP->ListID(); }
PLItemID CPlayControl::CurrentItem() const { return i_orderP->Item(); }

// ---- Of the song that plays ----

void CPlayControl::VideoIdle(bool forcedB) {
    if (i_delayedB && !MustWait(*i_playP)) SetPaused(false);
    if (CClock::Get().SteadyT() >= i_nextLookT) {
        if (!i_playP)
            i_next.Drop();
        else if (i_nextStaleB && State() == PlayState::kPlaying)
            CacheNext();
    }
    if (i_interrupted.HasRunOut()) TellGoBack();
    i_levels.Idle(IsPlaying());
    if (const Ref<CSongPlay> playP = i_playP) playP->Tick(forcedB);
}

bool CPlayControl::IsQuitting() const { return i_host.Show()->quittingB; }
CGraphicsPorts& CPlayControl::Ports() { return i_host.Ports(); }
CPlayWindowRule CPlayControl::WindowRule() const { return CPlayWindowRule::Read(i_host.Preferences()); }

// ---- Watchers ----

void CPlayControl::TellPlay() {
    i_watchers.Tell([](CPlayWatcher& watcher) { watcher.PlayChanged(); });
}

void CPlayControl::TellSettings() {
    i_watchers.Tell([](CPlayWatcher& watcher) { watcher.SettingsChanged(); });
}

void CPlayControl::TellGoBack() {
    i_watchers.Tell([](CPlayWatcher& watcher) { watcher.GoBackChanged(); });
}
