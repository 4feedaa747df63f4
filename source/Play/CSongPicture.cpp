#include "Play/CSongPicture.h"

#include <algorithm>
#include <cmath>

#include "Core/CLog.h"
#include "Graphics/CDGConstants.h"
#include "Graphics/CGraphics.h"
#include "Graphics/CGraphicsPorts.h"
#include "Graphics/CHq4x.h"
#include "Play/CSongMovie.h"
#include "Play/CT_DriftFree_Graphics.h"

namespace {

/** Empty when the picture is shown as it is. */
GraphicsUpscaler MakeUpscaler(bool hq4xB) {
    if (!hq4xB) return {};
    return [filterP = std::make_shared<CHq4x>()](const CPixels& source, CPixels& dest) {
        return filterP->Scale(source, dest);
    };
}

}   // namespace

CSongPicture::CSongPicture(const SongPlayParts& parts, CSongPictureOwner& owner)
    : i_parts(parts), i_owner(owner), i_slipT(parts.spec.slipT), i_delayL(parts.pictureDelayL) {}

CSongPicture::~CSongPicture() { StopClock(); }

OSErr CSongPicture::WireUp(CGraphicsPorts& ports) {
    const Ref<CAS_QuickTimeVideo>& movieP = i_parts.loadP->Movie();
    if (Stream() == nullptr && !movieP) return noErr;
    OSErr err = noErr;
    i_graphicsP = CGraphics::Make(ChannelMask(), MakeUpscaler(i_parts.hq4xB), err);
    if (i_graphicsP == nullptr) return LogStep(err, "making graphics");
    i_graphicsP->SetSong(*this);
    if (movieP) i_movieP = std::make_unique<CSongMovie>(movieP, *i_graphicsP, i_clock);
    SetDelay(i_delayL);
    return LogStep(ports.WireUp(nullptr, i_graphicsP->Overlay()), "wiring up graphics ports");
}

OSErr CSongPicture::StartClock(long start300, double tempo, std::shared_ptr<const CHeardSound> soundP) {
    i_clock.Start(i_slipT);
    i_clock.Seek(start300);
    i_paceP = std::make_shared<CPlayPace>(i_clock);
    i_paceP->SetSound(soundP);
    i_paceP->SetTempo(tempo);
    if (i_movieP)
        i_movieP->Lead(soundP, i_paceP,
                       [this, silentB = soundP == nullptr] { return silentB || i_owner.IsSoundOver(); });
    auto threadP = std::make_unique<CT_DriftFree_Graphics>(i_paceP);
    i_threadP = threadP.get();
    i_paceP->SetWake([threadP = i_threadP] { threadP->Wake(); });
    if (CT_Preemptive::Start(std::move(threadP)) != 0) return noErr;
    i_threadP = nullptr;
    i_paceP->Detach();
    return LogStep(memFullErr, "starting the clock of the graphics");
}

void CSongPicture::StopClock() {
    if (i_paceP) i_paceP->Detach();
    if (i_threadP != nullptr) i_threadP->Stop();   // its fork deletes it, on this thread, so it lives here
    i_threadP = nullptr;
}

void CSongPicture::TakeDown() {
    i_movieP.reset();
    i_graphicsP.reset();
}

void CSongPicture::Rewind() {
    if (i_graphicsP && Stream() != nullptr && Failed(LogStep(Stream()->Rewind(), "rewinding the graphics"))) return;
}

void CSongPicture::SeekTo300(long time300) {
    // By what the stream has given: with a slip the picture is not where the time is.
    if (Stream() != nullptr && time300 + i_clock.StartSync() + SyncSlip300() < Packets()) Rewind();
    i_endToldB = false;
    if (i_graphicsP) i_graphicsP->ForgetEnd();
    if (i_paceP) i_paceP->BeginSeek(time300);
    if (i_movieP) i_movieP->SeekTo300(time300);
}

void CSongPicture::SetPaused(bool pausedB) {
    i_pausedB = pausedB;
    if (i_movieP) i_movieP->Movie().SetPaused(pausedB);
}

void CSongPicture::SetSlipT(double seconds) {
    i_slipT = seconds;   // which the clock starts with
    if (!i_paceP) return;
    i_slipMoved300 = std::lround(seconds * kSubCodePacketsPerSecond) - static_cast<long>(i_clock.StartSync());
}

void CSongPicture::SetDelay(long milliseconds) {
    i_delayL = milliseconds;
    if (i_movieP) i_movieP->Movie().SetPictureDelay(milliseconds);
}

long CSongPicture::SyncSlip300() const {
    return Lead300() + i_slipMoved300 + i_parts.show->globalSlip300 -
           i_delayL * static_cast<long>(kSubCodePacketsPerSecond) / 1000;
}

/** What is drawn stands until the next look, a fifteenth of a second later: so it is that of the middle of this time,
    or it would be late by up to all of it, and by another part of it in each song. */
long CSongPicture::Lead300() const {
    constexpr double kLook_300ths = 300.0 / 15;
    return i_paceP && i_paceP->IsRunning() ? std::lround(i_paceP->Tempo() * kLook_300ths / 2) : 0;
}

bool CSongPicture::IsAtEnd() const {
    const long end300 = i_parts.spec.trimEnd300;
    if (end300 > i_parts.spec.trimStart300) return Time300() >= end300;
    // What lies behind the last packet that draws keeps nobody waiting once the sound is over.
    return i_graphicsP && !i_pausedB && i_parts.loadP->Graphics() != nullptr &&
           Packets() >= i_parts.loadP->DrawnPackets() && i_owner.IsSoundOver();
}

/** The pictures of a movie go on where its sound is shorter. */
bool CSongPicture::IsAudioFinished() const {
    return i_owner.IsSoundOver() && (!i_movieP || i_movieP->Movie().IsEnded());
}

void CSongPicture::Tick(bool forceB) {
    if (i_graphicsP) {
        i_graphicsP->Tick(forceB);
        return;
    }
    if (i_endToldB || i_owner.IsEnding() || (!IsAtEnd() && !IsAudioFinished())) return;
    i_endToldB = true;
    PostPlayNext();
}

long CSongPicture::Packets() const {
    const CSubCodeStream* streamP = i_graphicsP ? i_parts.loadP->Graphics() : nullptr;   // not while it is loaded
    return streamP == nullptr ? 0 : static_cast<long>(streamP->Position() / kSubCodePacket_Units);
}

MovieCounts CSongPicture::Pictures() const { return i_movieP ? i_movieP->Movie().Counts() : MovieCounts{}; }

long CSongPicture::End300() const {
    if (i_movieP) return i_movieP->Movie().Length300();
    const long drawnL = i_parts.loadP->DrawnPackets();
    return drawnL == 0 ? 0 : std::max(0L, drawnL - static_cast<long>(i_clock.StartSync()) - SyncSlip300());
}
