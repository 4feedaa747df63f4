#include "Audio/CAutoCue.h"

#include <cmath>
#include <vector>

#include "Audio/Stereo.h"
#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/Localize.h"

namespace {
constexpr std::size_t kCue_Frames = 1024;
constexpr long kPlayState_Playing = 2;

/** 0.006802721 of them to a frame, without its rounding. */
long As300ths(std::uint64_t frame) { return static_cast<long>(frame / kFramesPer300th); }
}   // namespace

long CAutoCue::Run() {
    if (const long trim300 = i_song.TrimStart(); trim300 != 0) {
        Log("AutoCue: trim start != 0");
        if (Failed(LogStep(i_song.Seek(0.0), "auto cue, seek")))
            return trim300;   // the caller seeks next, and will tell
        return trim300;
    }
    Log("--------------\nAutoCue: trim start == 0");
    LogF("begin firstL: %ld", As300ths(i_spool.GetPos() / kChannels));
    const bool seekingB = i_song.ExchangeSeeking(false);
    i_spool.SetCue(true);
    long first300 = 0;
    if (!Failed(i_spool.Seek(0)) && !Failed(i_song.PlayErr())) first300 = Search();
    i_spool.SetCue(false);
    i_song.ExchangeSeeking(seekingB);
    if (Failed(LogStep(i_spool.Seek(0), "auto cue, seek"))) return 0;
    return first300;
}

long CAutoCue::Search() {
    LogF("begin progress: %llu", static_cast<unsigned long long>(i_spool.GetPos()));
    std::vector<float> buffer(kCue_Frames * kChannels);
    for (bool firstB = true;; firstB = false) {
        if (i_song.IsCooperative() && i_song.PlayState() != kPlayState_Playing) WaitOneTurn();
        std::size_t frames = 0;
        const OSErr err = ReadFrames(buffer, frames);
        if (err == abortErr) {
            Log("autoCue: abortErr");
            return 0;
        }
        const std::uint64_t endL = i_spool.GetPos() / kChannels;
        if (err == eofErr) {
            Log("autoCue: eofErr");
            return 0;
        }
        if (Failed(err)) {
            ShowAlert(
                Localize(
                    "You may get silent audio.  If so, stop the song and clear your cache, then try again.  If the "
                    "problem persists, turn off “Auto-cue”."),
                {});
            LogF("error auto cue, read: %llu, total: %llu", static_cast<unsigned long long>(i_spool.GetPos()),
                 static_cast<unsigned long long>(i_spool.GetTotal()));
            return 0;
        }
        const std::size_t at = FirstLoud(std::span(buffer).first(frames * kChannels));
        if (at == frames) continue;
        if (firstB) Log("Found on first search");
        LogF("found firstL: %llu", static_cast<unsigned long long>(endL));
        const std::uint64_t firstL =
            endL - std::min<std::uint64_t>(endL, frames - at);   // the frame, not the buffer's end
        LogF("after resize: %llu", static_cast<unsigned long long>(firstL));
        return Found(firstL);
    }
}

OSErr CAutoCue::ReadFrames(std::span<float> stereo, std::size_t& frames) {
    for (;;) {
        std::size_t gotL = 0;
        const OSErr err = i_spool.Read(std::as_writable_bytes(stereo), gotL);
        frames = gotL / (kChannels * sizeof(float));
        if (Failed(err) || frames > 0) return err;
        if (const OSErr songErr = i_song.PlayErr(); Failed(songErr)) return songErr;
        WaitOneTurn();   // the pump is late
    }
}

std::size_t CAutoCue::FirstLoud(std::span<const float> stereo) const noexcept {
    const auto thresholdF = static_cast<float>(i_settings.cueThreshold);
    std::size_t n = 0;
    while (n < stereo.size() && !(std::abs(stereo[n]) >= thresholdF)) ++n;
    return n / kChannels;
}

long CAutoCue::Found(std::uint64_t firstFrame) const {
    long first300 = As300ths(firstFrame);
    LogF("after firstL: %ld", first300);
    constexpr double kPerSecond = 300, kMost_T = 3600;
    if (!(i_settings.cueRollbackT > 0)) return first300;
    const auto rollback300 = static_cast<long>(std::min(i_settings.cueRollbackT, kMost_T) * kPerSecond);
    if (first300 > rollback300) {
        first300 -= rollback300;
        LogF("adjusted firstL: %ld", first300);
    }
    return first300;
}
