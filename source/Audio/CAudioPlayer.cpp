#include "Audio/CAudioPlayer.h"

#include <algorithm>
#include <utility>

#include "Audio/CAutoCue.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Media/SampleForms.h"

namespace {
constexpr std::size_t kEngine_Frames = 8192;   // what the engine takes before it gives, at the start
constexpr double kUntilPaused_T = 0.25;
/** The status of a failure that came as an exception. */
constexpr OSErr kRenderErr = static_cast<OSErr>(-230);
}   // namespace

OSErr CAudioPlayer::Create(const AudioPlayerParts& parts, const AudioPlayerSettings& settings,
                           Ref<CAudioPlayer>& playerP) {
    playerP = nullptr;
    if (!AssertWords(static_cast<bool>(parts.song.AudioSpool()), "songP->i_audioP")) return paramErr;
    Ref<CAudioPlayer> newP(new CAudioPlayer(parts, settings));
    if (const OSErr err = newP->Open(); Failed(err)) return err;
    playerP = newP;
    return noErr;
}

CAudioPlayer::CAudioPlayer(const AudioPlayerParts& parts, const AudioPlayerSettings& settings)
    : i_parts(parts),
      i_settings(settings),
      i_spoolP(parts.song.AudioSpool()),
      i_chain(parts.output, parts.newsP),
      i_floats(settings.Blocks().framesL * kChannels),
      i_seam(settings.Blocks().framesL) {}

OSErr CAudioPlayer::Open() {
    i_chain.AddUnit("AUConverter", FourCC("aufc"), FourCC("conv"));
    CAudioUnit& output = i_chain.AddUnit("AUOutput   ", FourCC("auou"), FourCC("def "));
    output.i_input = {.rateF = kSamplesPerSecond, .formatID = FourCC("lpcm"), .channelsL = kChannels, .bitsL = 16};
    if (i_settings.timePitchUnitB) Log("The time-pitch unit is not on this system: pitch and tempo are the engine's.");
    if (const OSErr err = i_chain.Open(i_settings.device, i_settings.Blocks()); Failed(err)) return err;
    // The ring last: it can be opened once, and the operator may try another device.
    std::uint64_t sizeL = 0;
    if (const OSErr err = i_spoolP->Open(false, sizeL); Failed(err)) return err;
    return i_chain.StartRendering(*this, i_settings.SleepT());
}

CAudioPlayer::~CAudioPlayer() {
    i_chain.StopRendering();
    i_chain.Close();
    Log("finished playing");
}

void CAudioPlayer::SetPaused(bool pausedB) {
    i_pausedB.store(pausedB);
    i_chain.Wake();   // before the first play it sleeps
}

bool CAudioPlayer::IsHeardOut() const noexcept {
    return IsStopped() && i_chain.Output().FramesPlayed() >= i_soundEndL.load();
}

OSErr CAudioPlayer::Seek(double position) {
    const CReadTurn::Others others(i_turn);
    const OSErr err = i_spoolP->Seek(position);
    if (Failed(err)) return err;
    i_jumpsL.fetch_add(1);
    i_stoppedB.store(false);
    return noErr;
}

long CAudioPlayer::AutoCue() {
    while (!IsPaused() && !IsStopped() && !Failed(Result())) Wait(kUntilPaused_T, WaitMode::kMain_EventLoop);
    const CReadTurn::Others others(i_turn);   // silence meanwhile, whoever presses play
    const long first300 = CAutoCue(i_parts.song, *i_spoolP, i_settings).Run();
    i_jumpsL.fetch_add(1);
    i_stoppedB.store(false);
    return first300;
}

OSErr CAudioPlayer::ReadSong(std::span<float> stereo, std::size_t& frames) noexcept try {
    CVolumeStage& volume = i_spoolP->Volume();
    volume.SetVolume(i_parts.level.gainF.load(std::memory_order_relaxed));
    volume.SetMute(!i_parts.level.onB.load(std::memory_order_relaxed));
    std::size_t gotL = 0;
    const OSErr err = i_spoolP->Read(std::as_writable_bytes(stereo), gotL);
    frames = gotL / (kChannels * sizeof(float));
    return err;
} catch (...) {
    frames = 0;
    return kRenderErr;
}

BlockOutlook CAudioPlayer::Outlook() const noexcept {
    if (Failed(i_spoolP->Err())) return BlockOutlook::kWhole;
    // Before the first play no silence is queued for the song to wait behind.
    if (IsPaused()) return i_playedB ? BlockOutlook::kWhole : BlockOutlook::kUnwanted;
    const auto blockF = static_cast<double>(i_seam.Wanted()) * i_spoolP->TimePitch().Tempo();
    const bool directB = i_spoolP->TimePitch().Pitch() == 0 && i_spoolP->TimePitch().Tempo() == 1.0;
    const bool wholeB = i_spoolP->HasFrames(static_cast<std::size_t>(blockF) + (directB ? 0 : kEngine_Frames));
    return wholeB ? BlockOutlook::kWhole : BlockOutlook::kShort;
}

/** What the seam lacks, from the song. `lateB`: it is not there yet. */
OSErr CAudioPlayer::Refill(bool& lateB) noexcept {
    const std::uint64_t fromL = Place();
    if (const long jumpsL = i_jumpsL.load(); std::exchange(i_jumpsSeenL, jumpsL) != jumpsL) {
        i_seam.Cut();
        i_seam.SetBegin(!i_soundedB && fromL == 0);
    }
    const std::span<float> room = i_seam.Room();
    std::size_t gotL = 0;
    OSErr err = noErr;
    for (std::size_t partL = 1; partL > 0 && gotL * kChannels < room.size() && !Failed(err); gotL += partL)
        err = ReadSong(room.subspan(gotL * kChannels), partL);
    i_seam.Added(gotL, fromL, Place());
    lateB = !Failed(err) && gotL * kChannels < room.size();
    return err;
}

OSErr CAudioPlayer::RenderBlock(std::span<std::int16_t> stereo) noexcept {
    const std::size_t blockL = stereo.size() / kChannels;
    const bool pausedB = i_pausedB.load();
    i_playedB = i_playedB || !pausedB;
    OSErr err = noErr;
    bool lateB = false;
    const bool turnB = !pausedB && i_turn.TryBegin();
    if (turnB) {
        err = Refill(lateB);
        // Within the turn, so that a seek comes before or after it and not between; paused first, so that whoever sees
        // the end may press play.
        if (err == eofErr && i_seam.Held() <= blockL && i_parts.song.MayEnd()) {
            i_pausedB.store(true);
            i_stoppedB.store(true);
        }
        i_turn.End();
    } else {
        i_seam.Cut();
    }
    if (Failed(err) && err != eofErr) return err;   // RenderRest has what is held
    const std::span<float> block = std::span(i_floats).first(stereo.size());
    const CSoundSeam::Given given = i_seam.Give(block, lateB);
    FloatToInteger(block, stereo);
    if (given.soundL > 0 && i_shortL > 0) i_lateL.fetch_add(std::exchange(i_shortL, 0), std::memory_order_relaxed);
    if (turnB && !Failed(err)) i_shortL += blockL - given.soundL;
    if (Failed(err) || pausedB) i_shortL = 0;   // the end of the song is not late
    Count(given, blockL, pausedB);
    return noErr;
}

std::size_t CAudioPlayer::RenderRest(std::span<std::int16_t> stereo) noexcept {
    i_seam.Cut();
    const std::span<float> block = std::span(i_floats).first(stereo.size());
    const CSoundSeam::Given given = i_seam.Give(block, false);
    FloatToInteger(block, stereo);
    if (given.endedL > 0) Count(given, given.endedL, true);
    return given.endedL;
}

void CAudioPlayer::Count(const CSoundSeam::Given& given, std::size_t blockL, bool pausedB) noexcept {
    if (given.soundL > 0) {
        // What fades out before a new place belongs to it: the clock of the picture looks for its first frame.
        if (given.endedL > 0) i_positions.Add(given.endedL, given.fromL, given.fromL, 0);
        i_positions.Add(blockL - given.endedL, given.fromL, given.toL, given.soundL);
    } else if (pausedB && given.endedL > 0) {
        i_positions.Add(blockL, given.fromL, given.toL, given.endedL);
    } else {
        i_positions.Add(blockL, Place(), Place(), 0);
    }
    i_soundedB = i_soundedB || given.soundL > 0;
    if (given.endedL + given.soundL > 0) i_soundEndL.store(i_positions.End());
}
