#include "Play/CSongSound.h"

#include "Audio/CAutoCue.h"
#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/Localize.h"

namespace {

/** The player's positions, for the clock of the picture. It keeps the player. */
class PlayersSound final : public CHeardSound {
public:
    explicit PlayersSound(Ref<CAudioPlayer> playerP) : i_playerP(std::move(playerP)) {}
    std::uint64_t FramesPlayed() const override { return i_playerP->Chain().Output().FramesPlayed(); }
    std::uint64_t FramesGiven() const override { return i_playerP->Positions().End(); }
    double PlaceOf(std::uint64_t outputL) const override {
        return i_playerP->Positions().At(outputL) / kFramesPer300th;
    }
    bool IsOver() const override { return i_playerP->IsStopped() || Failed(i_playerP->Result()); }

private:
    const Ref<CAudioPlayer> i_playerP;
};

}   // namespace

void CSongSound::SetErr(OSErr err) noexcept {
    OSErr none = noErr;
    i_err.compare_exchange_strong(none, err);
}

OSErr CSongSound::Prepare() {
    if (!HasSound()) return noErr;
    if (!i_parts.outputP->Take(i_stopB)) return abortErr;
    i_outputTakenB = true;
    if (const OSErr err = MakePlayer(); Failed(err)) return err;
    return GoToStart();
}

OSErr CSongSound::MakePlayer() {
    const SongPlaySpec& spec = i_parts.spec;
    CPlayOutput& output = *i_parts.outputP;
    AudioPlayerSettings settings = i_parts.settings;
    settings.device = output.Device();
    const OSErr err = CAudioPlayer::Create({.song = *this,
                                            .output = output.Output(),
                                            .level = output.Level(),
                                            .newsP = i_parts.anyDeviceB ? &output.News() : nullptr},
                                           settings, i_playerP);
    if (Failed(err)) {
        i_lacksPlayerB.store(true);
        return err;
    }
    if (const OSErr pitchErr =
            LogStep(i_playerP->PitchTempoVolume().SetPitchTempo(spec.pitch, spec.tempo), "pitch and tempo");
        Failed(pitchErr))
        return pitchErr;
    i_playerP->PitchTempoVolume().Volume().SetVocalMode(spec.vocal);
    i_playerP->PitchTempoVolume().Volume().SetGain(GainF());
    i_playerP->ClearStopped();
    return noErr;
}

float CSongSound::GainF() const {
    const std::optional<SongLevel>& level = i_parts.spec.level;
    const bool knownB = i_oneLevelB.load() && level && level->stamp == i_parts.loadP->SoundStamp();
    return i_parts.spec.gainF * (knownB ? level->GainF() : 1.0F);
}

void CSongSound::SetOneLevel(bool onB) {
    i_oneLevelB.store(onB);
    if (i_playerP) i_playerP->PitchTempoVolume().Volume().SetGain(GainF());
}

OSErr CSongSound::FindStart(const AudioPlayerSettings& settings, long& start300) {
    start300 = 0;
    const Ref<CAS_AudioRing> ringP = AudioSpool();
    if (!ringP) return fnfErr;
    std::uint64_t sizeL = 0;
    if (const OSErr err = ringP->Open(false, sizeL); Failed(err)) return err;
    start300 = CAutoCue(*this, *ringP, settings).Run();
    const OSErr err = ringP->Err();   // first: the closing aborts the ring
    return FirstOf(err, ringP->Close(false));
}

OSErr CSongSound::GoToStart() {
    if (i_parts.startAt300 >= 0)
        i_start300 = i_parts.startAt300;
    else if (i_parts.autoCueB || TrimStart() != 0)
        i_start300 = i_playerP->AutoCue();
    if (const long length300 = Length300(); length300 > 0 && i_start300 >= length300) {
        ShowAlert(Localize("The trim start of “%1” lies behind its end.", {i_parts.spec.name}),
                  Localize("It plays from the beginning. Clear the column “Trim Start”, or set an earlier time."));
        i_start300 = 0;
    }
    if (i_start300 <= 0) return Err();
    if (const OSErr err = LogStep(SeekPlayer(i_start300), "going to the start of the song"); Failed(err)) {
        if (err != eofErr) return err;
        i_start300 = 0;   // a source that cannot be sought plays from where it is
    }
    return Err();
}

OSErr CSongSound::SeekPlayer(long time300) {
    const long length300 = Length300();
    const double position = length300 > 0 ? static_cast<double>(time300) / static_cast<double>(length300) : 0;
    return i_playerP->Seek(std::clamp(position, 0.0, 1.0));
}

void CSongSound::BeginWork() {
    const std::scoped_lock guard(i_workLock);
    i_workingB = true;
}

bool CSongSound::LeaveWork() {
    {
        const std::scoped_lock guard(i_workLock);
        if (i_wanted300 >= 0 && i_playerP && !i_stopB.load()) return false;
        i_workingB = false;
        if (!i_stopB.load()) return true;
    }
    Dispose();
    return true;
}

bool CSongSound::Stop() {
    SetErr(abortErr);
    bool freeB = false;
    {
        const std::scoped_lock guard(i_workLock);
        i_stopB.store(true);
        freeB = !i_workingB;
    }
    i_parts.loadP->Abort();
    i_parts.outputP->Nudge();
    return freeB;
}

void CSongSound::Dispose() {
    if (i_playerP) i_playerP = nullptr;   // waits for the render thread, and closes the device
    i_parts.loadP->Abort();
    if (i_outputTakenB) i_parts.outputP->Release();
    i_outputTakenB = false;
}

bool CSongSound::AskSeek(long time300) {
    const std::scoped_lock guard(i_workLock);
    i_wanted300 = time300;
    if (i_workingB || i_stopB.load()) return false;
    i_workingB = true;
    return true;
}

void CSongSound::SeekAsAsked() {
    for (;;) {
        long wanted300 = -1;
        {
            const std::scoped_lock guard(i_workLock);
            wanted300 = std::exchange(i_wanted300, -1);
            if (wanted300 < 0 || !i_playerP || i_stopB.load()) return;
        }
        if (const OSErr err = SeekPlayer(wanted300); Failed(err) && !i_stopB.load())
            if (Failed(LogStep(err, "seek")) && err != eofErr) SetErr(err);
    }
}

std::shared_ptr<const CHeardSound> CSongSound::Heard() const {
    return i_playerP ? std::make_shared<PlayersSound>(i_playerP) : nullptr;
}

long CSongSound::Length300() const {
    return HasSound() ? static_cast<long>(i_parts.loadP->Audio()->GetTotal() / (2 * kFramesPer300th)) : 0;
}
