#include "Audio/CAudioPlayer.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

#include "Audio/CAutoCue.h"
#include "Audio/SampleForms.h"
#include "Audio/Stereo.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"

namespace {
constexpr std::size_t kFade_Frames = 441;
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
      i_fadeIn(kFade_Frames),
      i_floats(settings.Blocks().framesL * kChannels) {
    for (std::size_t n = 0; n < kFade_Frames; ++n) {
        const double part = (static_cast<double>(n) + 0.5) / static_cast<double>(kFade_Frames);
        i_fadeIn[n] = static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * part));
    }
}

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
    if (!Failed(err)) i_stoppedB.store(false);
    return err;
}

long CAudioPlayer::AutoCue() {
    while (!IsPaused() && !IsStopped() && !Failed(Result())) Wait(kUntilPaused_T, WaitMode::kMain_EventLoop);
    const CReadTurn::Others others(i_turn);   // silence meanwhile, whoever presses play
    const long first300 = CAutoCue(i_parts.song, *i_spoolP, i_settings).Run();
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

void CAudioPlayer::Fade(std::span<float> stereo, bool inB) const noexcept {
    const std::size_t frames = std::min(stereo.size() / kChannels, kFade_Frames);
    for (std::size_t n = 0; n < frames; ++n) {
        const float part = inB ? i_fadeIn[n] : i_fadeIn[kFade_Frames - 1 - n];
        stereo[kChannels * n] *= part;
        stereo[kChannels * n + 1] *= part;
    }
}

BlockOutlook CAudioPlayer::Outlook() const noexcept {
    if (Failed(i_spoolP->Err())) return BlockOutlook::kWhole;
    // Before the first play no silence is queued for the song to wait behind.
    if (IsPaused()) return i_playedB ? BlockOutlook::kWhole : BlockOutlook::kUnwanted;
    const auto blockF = static_cast<double>(i_floats.size() / kChannels) * i_spoolP->TimePitch().Tempo();
    const bool directB = i_spoolP->TimePitch().Pitch() == 0 && i_spoolP->TimePitch().Tempo() == 1.0;
    const bool wholeB = i_spoolP->HasFrames(static_cast<std::size_t>(blockF) + (directB ? 0 : kEngine_Frames));
    return wholeB ? BlockOutlook::kWhole : BlockOutlook::kShort;
}

OSErr CAudioPlayer::RenderBlock(std::span<std::int16_t> stereo) noexcept {
    const std::size_t blockL = stereo.size() / kChannels;
    const bool pausedB = i_pausedB.load();
    i_playedB = i_playedB || !pausedB;
    const std::span<float> block = std::span(i_floats).first(stereo.size());
    std::uint64_t fromL = i_spoolP->GetPos() / kChannels, toL = fromL;
    std::size_t soundL = 0;
    OSErr err = noErr;
    // A pause in the middle of the song takes the first 10 ms with it, to fade out.
    const std::size_t wantedL = !pausedB ? blockL : i_soundingB ? std::min(kFade_Frames, blockL) : 0;
    if (wantedL > 0 && i_turn.TryBegin()) {
        fromL = i_spoolP->GetPos() / kChannels;
        err = ReadSong(block.first(wantedL * kChannels), soundL);
        toL = i_spoolP->GetPos() / kChannels;
        // Within the turn, so that a seek comes before or after it and not between; paused first, so that whoever sees
        // the end may press play.
        if (err == eofErr && !pausedB && i_parts.song.MayEnd()) {
            i_pausedB.store(true);
            i_stoppedB.store(true);
        }
        i_turn.End();
        if (i_fadedOutB && soundL > 0) Fade(block.first(soundL * kChannels), true);
        i_fadedOutB = pausedB && soundL > 0;
        if (i_fadedOutB) Fade(block.first(soundL * kChannels), false);
        if (soundL > 0 && i_shortL > 0) i_lateL.fetch_add(std::exchange(i_shortL, 0), std::memory_order_relaxed);
        if (!pausedB && !Failed(err)) i_shortL += blockL - soundL;
        if (Failed(err) || pausedB) i_shortL = 0;   // the end of the song is not late
    }
    i_soundingB = !pausedB && soundL > 0;
    std::ranges::fill(block.subspan(soundL * kChannels), 0.0F);
    FloatToInteger(block, stereo);
    i_positions.Add(blockL, fromL, toL, soundL);
    if (soundL > 0) i_soundEndL.store(i_positions.End());
    return err == eofErr ? noErr : err;
}
