#include "Play/CPlayControl.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

#include "Core/AlertHook.h"
#include "Core/CCFPrefDictionary.h"
#include "Core/CLog.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/PlayNext.h"
#include "Library/CT_FindMissing.h"
#include "Platform/CClock.h"
#include "Platform/CUserInterface.h"
#include "Play/CPlayHost.h"
#include "Play/CPlayWatcher.h"
#include "Play/CSongLoadCompletion.h"
#include "Play/LaunchFile.h"

namespace {

constexpr SongID kNoSong{SDB_kUninitializedID};
/** Back within this of the start is the row before, later it is a rewind. */
constexpr long kRewind_300ths = 2 * 300;
/** Lengths so near to each other are one: they are counted by different roads. */
constexpr long kSameLength_300ths = 3;
/** A list that changes all the time is not looked through more often. */
constexpr double kNextLook_T = 1;
/** What lies ready stays so long after a stop; then it must not hold a disc that is to be taken out. */
constexpr double kNextKept_T = 30;

}   // namespace

CPlayControl::CPlayControl(CPlayHost& host)
    : i_host(host),
      i_selfRef(std::make_shared<CPlayControl*>(this)),
      i_outputP(MakeRef<CPlayOutput>()),
      i_place(host.Database()),
      i_volumeF(ReadVolume(host)) {
    i_outputP->Level().gainF = i_volumeF;
    i_host.Database().AddWatcher(*this);
}

CPlayControl::~CPlayControl() {
    *i_selfRef = nullptr;
    i_host.Database().RemoveWatcher(*this);
    i_watchers.clear();
    EndCurrent();
}

// ---- Starting ----

OSErr CPlayControl::Play(const SDB_Selection& selection) {
    if (selection.Count() == 0 || selection.List() == nullptr) return paramErr;
    if (selection.Count() == 1) return Play(selection.List()->ID(), selection.Items().front());
    Question question;
    question.title = "Play";
    question.text =
        "You must have exactly one song selected to play.  Somehow, it seems there are 2 or more songs selected.  "
        "Would you like to deselect them?  You can then just double click the song you want to play.";
    question.buttons = {"Deselect", "Cancel"};
    question.safeIndex = 1;
    if (i_host.Ui().Ask(question).buttonIndex == 0) i_host.Deselect();
    return userCanceledErr;
}

OSErr CPlayControl::Play(PlaylistID list, PLItemID item) { return PlayRow(list, item, {}); }

std::optional<SongPlaySpec> CPlayControl::SpecOf(PlaylistID list, PLItemID item) const {
    CPlayList* const listP = i_host.Database().GetPlayList(list);
    if (listP == nullptr || Number(item) <= 0) return {};
    CPlayListItem* const itemP = listP->GetIndPLItem(item);
    CSong* const songP = itemP == nullptr ? nullptr : i_host.Database().GetSong(itemP->GetSongID());
    if (songP == nullptr) return {};
    SongPlaySpec spec = ReadSongPlaySpec(*songP, itemP->Meta(), i_host.Preferences());
    spec.gainF = i_host.GainOf(spec.song);
    spec.list = list;
    spec.item = item;
    return spec;
}

OSErr CPlayControl::PlayRow(PlaylistID list, PLItemID item, const StartHow& how) {
    if (i_host.IsQuitting()) return abortErr;
    const std::optional<SongPlaySpec> spec = SpecOf(list, item);
    if (!spec) {
        ShowAlert("Stranger than Fiction error: The song you're trying to play is not in the current playlist.", {});
        return fnfErr;
    }
    if (i_playP && !how.stepB && CurrentSong() != spec->song)
        Log("WARNING****  A case where the previous song wasn't stopped!");
    i_place.Set(list, item);
    return PlaySong(*spec, how);
}

OSErr CPlayControl::PlaySong(const SongPlaySpec& spec, const StartHow& how) {
    EndCurrent(spec.name);
    ChooseOutput();
    i_startPausedB = how.pausedB;
    i_wish = how.wish;
    i_lastErr = noErr;
    i_pitchS = static_cast<int>(spec.pitch);
    i_tempo = spec.tempo;
    i_vocal = spec.vocal;
    i_slipT = spec.slipT;

    const CCFPrefDictionary& preferences = i_host.Preferences();
    SongPlayParts parts{.spec = spec,
                        .loadP = i_next.Take(spec),
                        .outputP = i_outputP,
                        .settings = AudioPlayerSettings::Read(preferences),
                        .autoCueB = preferences.GetBool("Auto-cue", true),
                        .hq4xB = preferences.GetBool("Use hq4x upscaling (fast computers only)"),
                        .orSilentB = i_host.PlaysSilent(),
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
    if (Failed(err)) {
        if (!play.HasPlayer()) Log("### no audio player");
        SongFailed(play, err);
        return;
    }
    if (const std::optional<Wish> wish = std::exchange(i_wish, {}); wish && wish->time300 >= 0)
        SeekTo300(wish->time300);
    else if (wish)
        Seek(wish->position);
    play.SetPaused(i_startPausedB || i_delayedB);
    if (!play.Spec().launch.IsEmpty()) (void)Failed(LaunchFile(play.Spec().launch));   // logged; the song plays on
    if (play.Spec().volumeF > 0) SetVolume(play.Spec().volumeF);
    CacheNext();
    if (i_delayedB) i_host.ShowMessage("“" + play.Spec().name + "” starts once it is unpacked");
    TellPlay();
    if (play.Files().LacksGraphics()) TellLostGraphics(play);   // last: the operator reads it while the song plays
}

void CPlayControl::TellLostGraphics(const CSongPlay& play) {
    const std::string name = play.Spec().name;
    static_cast<void>(LogStep(fnfErr, "wiring up graphics ports", play.Spec().video.GetPath()));
    ShowAlert("The graphics of “" + name + "” were not found", "The song plays without them.");
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
    if (list == i_place.ListID()) i_nextStaleB = true;
}

void CPlayControl::ItemsChanged(PlaylistID list, ListMessage, std::span<const PLItemID>) {
    if (list == i_place.ListID()) i_nextStaleB = true;
}

void CPlayControl::SortChanged(PlaylistID list, const SortSpec&, bool startedB) {
    if (list == i_place.ListID() && !startedB) i_nextStaleB = true;
}

void CPlayControl::CacheNext() {
    i_nextStaleB = false;
    i_nextLookT = CClock::Get().SteadyT() + kNextLook_T;
    if (i_place.List() == nullptr || !i_host.Preferences().GetBool("pre-cache next song", true)) {
        i_next.Drop();
        return;
    }
    const PLItemID item = i_place.Next(CPlayList::AtEnd::kIgnore);
    const bool endB = i_host.Preferences().GetBool("Stop at playlist end") && i_place.IsLast();
    std::optional<SongPlaySpec> spec;
    if (!endB && item != SDB_kNoItem && item != i_place.Item()) spec = SpecOf(i_place.ListID(), item);
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
    if (i_host.IsQuitting()) i_next.Drop();
    EndShow();
}

void CPlayControl::EndShow() {
    if (!i_playP) return;
    EndCurrent();
    i_nextLookT = CClock::Get().SteadyT() + kNextKept_T;
    if (Ports().Port(CGraphicsPort::kScreen_VIDEO) != nullptr) Ports().ApplyRule(WindowRule(), PlayMode::kStop);
    TellPlay();
}

void CPlayControl::SongFailed(CSongPlay& play, OSErr err) {
    const Ref<CSongPlay> playP(&play);   // its end must not come before ours
    i_lastErr = err;
    EndShow();
    TellFailure(play, err);   // last: the operator may begin another song before he has read it
}

void CPlayControl::TellFailure(const CSongPlay& play, OSErr err) const {
    if (CSpooler::IsIgnorable(err)) return;
    if (play.Files().WasTold()) {   // but not of which song it was
        i_host.ShowMessage("“" + play.Spec().name + "” could not be played");
        return;
    }
    if (err == fnfErr)
        ShowAlert(MissingSongText(play.Spec().name), {});
    else
        ShowAlert("The song “" + play.Spec().name + "” could not be played", ErrorText(err));
}

void CPlayControl::SongEnded(CSongPlay& play) {
    const Ref<CSongPlay> playP(&play);
    if (i_host.IsQuitting()) return;
    i_host.SongEnded(play);
    NoteLength(play);
    FinishSong(play);
    Log("Going to next song");
    const CCFPrefDictionary& preferences = i_host.Preferences();
    const PlayNextState state{.stopBetweenTracksB = preferences.GetBool("Stop between tracks"),
                              .hasPlaylistB = i_place.List() != nullptr,
                              .stopAtPlaylistEndB = preferences.GetBool("Stop at playlist end"),
                              .lastOfSelectionB = i_place.IsLast()};
    PLItemID next = SDB_kNoItem;
    if (ChoosePlayNext(state) == PlayNextCommand::kNext) {
        next = i_place.Next(CPlayList::AtEnd::kStop);
        if (!i_playP) return;   // the list has stopped the show
    }
    const bool overB = next == SDB_kNoItem || Failed(StepTo(next, preferences.GetBool("Pause between tracks")));
    if (overB && i_playP.Get() == &play) EndShow();   // and nobody began another song while an alert stood
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

// ---- Steps ----

OSErr CPlayControl::StepTo(PLItemID item, bool pausedB) {
    return PlayRow(i_place.ListID(), item, {.pausedB = pausedB, .stepB = true});
}

OSErr CPlayControl::PlayNext() {
    if (i_place.List() == nullptr) return paramErr;
    Log("PlayPrevNext called: Next");
    Log("Going to next song");
    const PLItemID item = i_place.Next(CPlayList::AtEnd::kIgnore);
    if (item == SDB_kNoItem) return fnfErr;
    const Ref<CSongPlay> beforeP = i_playP;
    const bool heardB = beforeP && 2 * CurTime300() > EndTime300() && EndTime300() > 0;
    const OSErr err = StepTo(item);
    if (heardB && i_playP.Get() != beforeP.Get()) FinishSong(*beforeP);
    if (!Failed(err) && i_playP) i_host.ShowMessage("Next: " + i_playP->Spec().name);   // no watcher has stopped it
    return err;
}

OSErr CPlayControl::PlayPrevious() {
    CPlayList* const listP = i_place.List();
    if (listP == nullptr) return paramErr;
    Log("PlayPrevNext called: Previous");
    const bool rotationB = IsRotation(listP->Type());
    const bool pastB = i_playP && CurTime300() > i_playP->Spec().trimStart300 + kRewind_300ths;
    const bool ofShowB = rotationB || listP->Type() == kSourceDB_SINGER_PL_TONIGHT;
    if (i_playP && (listP->Count() <= 1 || (!ofShowB && pastB))) {
        Rewind();
        return noErr;
    }
    if (rotationB && i_place.IsFirst() && listP->PendingSkips() == 0) {
        i_host.ShowMessage("Can't skip back to previous rotation");
        return paramErr;
    }
    const PLItemID item = i_place.Previous();
    if (item == SDB_kNoItem) return fnfErr;
    const OSErr err = StepTo(item);
    if (!Failed(err) && i_playP) i_host.ShowMessage("Previous: " + i_playP->Spec().name);
    return err;
}

void CPlayControl::Rewind() {
    if (!i_playP) return;
    const std::string text = "Rewind: " + i_playP->Spec().name;
    Log(text);
    i_host.ShowMessage(text);
    SeekTo300(i_playP->Spec().trimStart300);
}

void CPlayControl::Seek(double position) {
    position = position >= 0 ? std::min(position, 1.0) : 0;   // what is no number is the start
    if (State() == PlayState::kStarting)
        i_wish = Wish{.position = position};
    else
        SeekTo300(static_cast<long>(position * static_cast<double>(EndTime300())));
}

void CPlayControl::SeekTo300(long time300) {
    if (State() == PlayState::kStarting)
        i_wish = Wish{.time300 = std::max(time300, 0L)};
    else if (i_playP)
        i_playP->SeekTo300(std::clamp(time300, 0L, std::max(EndTime300(), 0L)));
}

void CPlayControl::SetPaused(bool pausedB) {
    if (!i_playP || pausedB == IsPaused()) return;
    i_startPausedB = pausedB;
    i_delayedB = false;
    i_playP->SetPaused(pausedB);
    TellPlay();
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
PlaylistID CPlayControl::CurrentList() const { return i_place.ListID(); }
PLItemID CPlayControl::CurrentItem() const { return i_place.Item(); }

// ---- Of the song that plays ----

void CPlayControl::VideoIdle(bool forcedB) {
    if (i_delayedB && !MustWait(*i_playP)) SetPaused(false);
    if (CClock::Get().SteadyT() >= i_nextLookT) {
        if (!i_playP)
            i_next.Drop();
        else if (i_nextStaleB && State() == PlayState::kPlaying)
            CacheNext();
    }
    if (const Ref<CSongPlay> playP = i_playP) playP->Tick(forcedB);
}

bool CPlayControl::IsQuitting() const { return i_host.IsQuitting(); }
long CPlayControl::GlobalSlip300() const { return i_host.Preferences().GetLong("Global Song Sync Slip (300ths)", 0); }
CGraphicsPorts& CPlayControl::Ports() { return i_host.Ports(); }
CPlayWindowRule CPlayControl::WindowRule() const { return CPlayWindowRule::Read(i_host.Preferences()); }

void CPlayControl::NoteDrawn() { i_host.NoteDrawn(); }

// ---- Watchers ----

template <class Say>
void CPlayControl::Tell(Say&& say) {
    const std::vector<CPlayWatcher*> watchers = i_watchers;
    for (CPlayWatcher* const watcherP : watchers)
        if (std::ranges::count(i_watchers, watcherP) > 0) say(*watcherP);   // one may take another out
}

void CPlayControl::TellPlay() {
    Tell([](CPlayWatcher& watcher) { watcher.PlayChanged(); });
}

void CPlayControl::TellSettings() {
    Tell([](CPlayWatcher& watcher) { watcher.SettingsChanged(); });
}
