#include "Play/CSongPlay.h"

#include <algorithm>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Graphics/CGraphicsPorts.h"
#include "Platform/CClock.h"
#include "Play/CT_EndSong.h"
#include "Play/CT_PlayAudio.h"
#include "Play/CT_SeekSound.h"
#include "Threads/CallOnMain.h"
#include "Threads/ThreadInfo.h"

namespace {
constexpr long kApart_300ths = 150;   // what a slow crystal does in an hour is no reason to jump
constexpr double kApart_T = 1;
}   // namespace

CSongPlay::CSongPlay(SongPlayParts parts, CSongPlayOwner& owner)
    : i_parts(std::move(parts)), i_ownerP(&owner), i_sound(i_parts), i_picture(i_parts, *this) {}

void CSongPlay::Post(const char* nameZ, void (CSongPlay::*act)()) {
    // Kept until then; it knows by then whether it was stopped. Without an application nobody plays any more.
    PostToMain(nameZ, [playP = Ref<CSongPlay>(this), act] { (playP.Get()->*act)(); });
}

// ---- Workers ----

OSErr CSongPlay::PreRoll(std::unique_ptr<CS_MainThread_AbortProc> completionP) {
    OSErr err = i_parts.loadP->Load(std::move(completionP));
    if (!Failed(err)) {
        Post("wire up graphics ports", &CSongPlay::WireUpGraphics);
        err = i_sound.Prepare();
    }
    if (i_sound.IsStopped()) err = abortErr;   // whatever broke on the way out
    if (Failed(err)) i_sound.SetErr(err);
    RunSeeks();
    return err;
}

void CSongPlay::RunSeeks() {
    do i_sound.SeekAsAsked();
    while (!i_sound.LeaveWork());
}

// ---- Main thread ----

OSErr CSongPlay::Start(std::unique_ptr<CS_MainThread_AbortProc> completionP) {
    i_sound.SetState(static_cast<long>(PlayState::kStarting));
    LogF("Playing: %s\n", Spec().name.c_str());
    i_sound.BeginWork();
    if (CT_Preemptive::Start(std::make_unique<CT_PlayAudio>(Ref<CSongPlay>(this), std::move(completionP))) != 0)
        return noErr;
    RunSeeks();   // there are none: the work is over
    i_sound.SetState(static_cast<long>(PlayState::kIdle));
    return LogStep(memFullErr, "starting the pre-roll");
}

void CSongPlay::WireUpGraphics() {
    if (i_ownerP == nullptr) return;
    if (const OSErr err = i_picture.WireUp(i_ownerP->Ports()); Failed(err)) PictureFailed(err);
}

void CSongPlay::PreRollOver(OSErr err) {
    if (i_ownerP != nullptr) return i_ownerP->PreRollDone(*this, err);
    if (i_replacedBy.empty())
        Log("### there is no playing song to stop\n");
    else
        LogF("### another song is playing (%s)\n", i_replacedBy.c_str());
}

OSErr CSongPlay::Begin() {
    if (i_ownerP == nullptr) return abortErr;
    if (const OSErr err = i_picture.StartClock(i_sound.Start300(), Spec().tempo, i_sound.Heard()); Failed(err))
        return err;
    i_sound.SetState(static_cast<long>(PlayState::kPlaying));
    return noErr;
}

void CSongPlay::Stop(std::string next) {
    AssertWords(IsMainThread(), "IsMainThread() && \"StopAudio() on a back thread\"");
    if (i_ownerP == nullptr) return;
    i_replacedBy = std::move(next);
    LogF("Stopping audio for Song: %s\n", Spec().name.c_str());
    i_picture.StopClock();
    i_picture.TakeDown();
    i_picture.SetPaused(true);
    i_ownerP = nullptr;
    i_sound.SetState(static_cast<long>(PlayState::kIdle));
    if (!i_sound.Stop()) return;   // the worker ends it
    if (CT_Preemptive::Start(std::make_unique<CT_EndSong>(Ref<CSongPlay>(this))) == 0) Dispose();
}

void CSongPlay::SetPaused(bool pausedB) {
    if (State() != PlayState::kPlaying) return;
    CAudioPlayer* const playerP = i_sound.Player();
    CPlayPace* const paceP = i_picture.Pace();
    i_picture.SetPaused(pausedB);
    if (!pausedB) paceP->Run();   // before the sound goes on: what is given from here on is new
    if (playerP != nullptr && (pausedB || !IsSeeking())) playerP->SetPaused(pausedB);   // else it goes on from there
    if (pausedB) paceP->Pause();
    if (CGraphicsPorts& ports = i_ownerP->Ports();
        i_picture.Graphics() != nullptr && ports.Port(CGraphicsPort::kScreen_VIDEO) != nullptr)
        ports.ApplyRule(i_ownerP->WindowRule(), pausedB ? PlayMode::kPause : PlayMode::kPlay);
}

void CSongPlay::SeekTo300(long time300) {
    if (State() != PlayState::kPlaying) return;
    i_endedB = false;   // sought back in time
    i_picture.SeekTo300(time300);
    if (!HasPlayer()) {
        i_picture.Pace()->EndSeek();
        return;
    }
    if (i_sound.AskSeek(time300)) StartSeekWorker();
}

void CSongPlay::StartSeekWorker() {
    ++i_seekersL;
    if (CT_Preemptive::Start(std::make_unique<CT_SeekSound>(Ref<CSongPlay>(this))) != 0) return;
    Log("### Error no thread for a seek");
    RunSeeks();   // here, then: timers and paint go on
    SeeksDone();
}

void CSongPlay::SeeksDone() {
    if (--i_seekersL > 0 || i_ownerP == nullptr) return;   // the next one has begun before this end was told
    i_picture.Pace()->EndSeek();
    if (!i_picture.IsPaused()) i_sound.Player()->SetPaused(false);   // one that had come to its end paused itself
}

void CSongPlay::Tick(bool forceB) {
    if (i_ownerP == nullptr || State() != PlayState::kPlaying) return;
    const CAudioPlayer* const playerP = i_sound.Player();
    if (const OSErr err = playerP == nullptr ? noErr : FirstOf(playerP->Result(), PlayErr()); Failed(err)) {
        PictureFailed(err);
        return;
    }
    MendDrift();
    i_picture.Tick(forceB);
}

void CSongPlay::MendDrift() {
    const CAudioPlayer* const playerP = i_sound.Player();
    const bool soundB = playerP != nullptr && !playerP->IsStopped() && !IsSeeking() && i_picture.Pace()->IsRunning();
    const long heard300 = soundB ? Heard300() : 0;
    const bool movesB = heard300 != std::exchange(i_lastHeard300, heard300);
    const double nowT = CClock::Get().SteadyT();
    if (!soundB || std::abs(heard300 - CurTime300()) < kApart_300ths) {
        i_apartSinceT = 0;
    } else if (i_apartSinceT == 0) {
        i_apartSinceT = nowT;
    } else if (movesB && nowT - i_apartSinceT > kApart_T) {   // while it stands still a seek would not help
        LogF("sound at %ld, picture at %ld: the sound goes there", heard300, CurTime300());
        i_apartSinceT = 0;
        SeekTo300(CurTime300());
    }
}

OSErr CSongPlay::SetPitchTempo(double pitch, double tempo) {
    if (State() != PlayState::kPlaying) return noErr;
    if (HasPlayer())
        if (const OSErr err = i_sound.Player()->PitchTempoVolume().SetPitchTempo(pitch, tempo); Failed(err)) return err;
    i_picture.Pace()->SetTempo(tempo);
    return noErr;
}

void CSongPlay::SetVocalMode(VocalMode mode) {
    if (State() == PlayState::kPlaying && HasPlayer()) i_sound.Player()->PitchTempoVolume().Volume().SetVocalMode(mode);
}

void CSongPlay::SetOneLevel(bool onB) {
    if (State() == PlayState::kPlaying) i_sound.SetOneLevel(onB);   // else it is set when its player is there
}

long CSongPlay::EndTime300() const {
    if (State() != PlayState::kPlaying) return 0;
    const long end300 = std::max(i_sound.Length300(), i_picture.End300());
    if (Spec().trimEnd300 <= Spec().trimStart300) return end300;
    return end300 > 0 ? std::min(Spec().trimEnd300, end300) : Spec().trimEnd300;   // a mark behind the end is none
}

long CSongPlay::HeardLength300() const {
    if (State() != PlayState::kPlaying || Failed(PlayErr())) return 0;
    const CAudioPlayer* const playerP = i_sound.Player();
    const bool heardB = playerP == nullptr || (playerP->IsHeardOut() && !Failed(playerP->Result()));
    const long drawnL = Files().DrawnPackets();
    return heardB && i_picture.Packets() >= drawnL ? std::max(i_sound.Length300(), drawnL) : 0;
}

long CSongPlay::Heard300() const {
    return State() == PlayState::kPlaying && HasPlayer() ? i_sound.Player()->Heard300() : 0;
}

std::uint64_t CSongPlay::FramesLate() const {
    return State() == PlayState::kPlaying && HasPlayer() ? i_sound.Player()->FramesLate() : 0;
}

// ---- Of the picture ----

bool CSongPlay::IsSoundOver() const {
    if (IsSeeking()) return false;
    return HasPlayer() ? i_sound.Player()->IsHeardOut() : i_parts.loadP->Kind() == SongKind::kGraphics;
}

void CSongPlay::PictureEnded() {
    i_endedB = true;
    Post("PlayNext", &CSongPlay::TellEnded);
}

void CSongPlay::PictureFailed(OSErr err) {
    i_sound.SetErr(err);
    Post("stop song", &CSongPlay::TellFailed);
}

void CSongPlay::TellEnded() {
    if (i_ownerP != nullptr && std::exchange(i_endedB, false)) i_ownerP->SongEnded(*this);
}

void CSongPlay::TellFailed() {
    if (i_ownerP != nullptr) i_ownerP->SongFailed(*this, PlayErr());
}
