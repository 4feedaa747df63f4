#include <algorithm>

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Platform/CClock.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"

// What the operator does with what plays: the rows around it, the song that was cut off, the places in a song.

namespace {
/** Back within this of the start is the row before, later it is a rewind. */
constexpr long kRewind_300ths = 2 * 300;
/** A song that was heard for less does not take the place of the one that it cut off itself: two stray presses in a row
    are still one mishap. */
constexpr double kHeard_T = 5;
}   // namespace

// ---- Steps ----

OSErr CPlayControl::StepTo(PLItemID item, const StartHow& how) {
    StartHow step = how;
    step.stepB = true;
    return PlayRow(i_orderP->ListID(), item, step);
}

OSErr CPlayControl::PlayNext() {
    if (!i_orderP->IsThere()) return paramErr;
    Log("PlayPrevNext called: Next");
    Log("Going to next song");
    const PLItemID item = i_orderP->Next();
    if (item == SDB_kNoItem) return fnfErr;
    const Ref<CSongPlay> beforeP = i_playP;
    const bool heardB = beforeP && !i_countedB && 2 * CurTime300() > EndTime300() && EndTime300() > 0;
    const OSErr err = StepTo(item, {.handB = true});
    if (heardB && i_playP.Get() != beforeP.Get()) {
        FinishSong(*beforeP);
        i_interrupted.NoteCounted(beforeP->Spec().song);
    }
    if (!Failed(err) && i_playP)
        i_host.ShowMessage(Localize("Next: %1", {i_playP->Spec().name}));   // no watcher has stopped it
    return err;
}

OSErr CPlayControl::PlayPrevious() {
    if (!i_orderP->IsThere()) return paramErr;
    Log("PlayPrevNext called: Previous");
    const bool pastB = i_playP && CurTime300() > i_playP->Spec().trimStart300 + kRewind_300ths;
    const PLItemID back = i_orderP->Previous();
    const bool aloneB = back == i_orderP->Next() && (back == i_orderP->Item() || i_orderP->Item() == SDB_kNoItem);
    if (i_playP && (aloneB || (i_orderP->RewindsFirst() && pastB))) {
        Rewind();
        return noErr;
    }
    if (const std::string_view why = i_orderP->WhyNotBack(); !why.empty()) {
        i_host.ShowMessage(why);
        return paramErr;
    }
    if (back == SDB_kNoItem) return fnfErr;
    const OSErr err = StepTo(back, {.handB = true});
    if (!Failed(err) && i_playP) i_host.ShowMessage(Localize("Previous: %1", {i_playP->Spec().name}));
    return err;
}

// ---- Back to what was cut off ----

SongPlaySpec CPlayControl::SpecAsNow() const {
    SongPlaySpec spec = i_playP->Spec();
    spec.pitch = i_pitchS;
    spec.tempo = i_tempo;
    spec.vocal = i_vocal;
    spec.slipT = i_slipT;
    spec.volumeF = 0;   // the level of now goes by itself
    return spec;
}

void CPlayControl::KeepInterrupted(bool wentBackB) {
    if (State() != PlayState::kPlaying || i_overB) return;
    const bool heardB = CClock::Get().SteadyT() - i_beganT >= kHeard_T;
    if (!heardB && (wentBackB || i_interrupted.IsKept())) return;
    SongPlaySpec spec = SpecAsNow();
    spec.launch = {};   // its companion was opened
    i_interrupted.Keep({.spec = std::move(spec),
                        .order = i_orderP->Clone(),
                        .at300 = CurTime300(),
                        .levelF = Volume(),
                        .pausedB = IsPaused() && !i_delayedB,
                        .countedB = i_countedB});
    TellGoBack();
}

OSErr CPlayControl::GoBack() {
    if (IsQuitting()) return abortErr;
    std::optional<CInterruptedSong::Song> song = i_interrupted.Take();
    if (!song) return fnfErr;
    LogF("Going back to: %s", song->spec.name.c_str());
    KeepInterrupted(true);
    i_orderP = std::move(song->order);
    StartHow how{.pausedB = song->pausedB, .countedB = song->countedB, .at300 = song->at300};
    if (song->levelF != i_volumeF) how.levelF = song->levelF;
    const OSErr err = PlaySong(song->spec, how);
    TellGoBack();
    if (!Failed(err)) i_host.ShowMessage(Localize("Back to: %1", {song->spec.name}));
    return err;
}

// ---- Within the song ----

void CPlayControl::Rewind() {
    if (!i_playP) return;
    Log("Rewind: " + i_playP->Spec().name);
    i_host.ShowMessage(Localize("Rewind: %1", {i_playP->Spec().name}));
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
