#include "Audio/CTimePitch.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

#include "Audio/Stereo.h"

namespace {

float Product(const float* oneP, const float* otherP, std::size_t countL) noexcept {
    // Four sums: the order of one would keep the machine from adding them side by side.
    float sums[4] = {};
    std::size_t n = 0;
    for (; n + 4 <= countL; n += 4)
        for (std::size_t m = 0; m < 4; ++m) sums[m] += oneP[n + m] * otherP[n + m];
    for (; n < countL; ++n) sums[0] += oneP[n] * otherP[n];
    return sums[0] + sums[1] + sums[2] + sums[3];
}

}   // namespace

CTimePitch::CTimePitch()
    : i_fadeIn(kFade_Frames),
      i_old(kFade_Frames * kChannels),
      i_new(kFit_All * kChannels),
      i_oldMono(kFade_Frames),
      i_newMono(kFit_All),
      i_silence(CTimePitchVoice::kPut_Frames * kChannels) {
    for (std::size_t n = 0; n < kFade_Frames; ++n) {
        const double part = (static_cast<double>(n) + 0.5) / static_cast<double>(kFade_Frames);
        i_fadeIn[n] = static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * part));
    }
}

OSErr CTimePitch::Set(int pitch, double tempo) {
    if (!std::isfinite(tempo)) return paramErr;
    const int pitchL = std::clamp(pitch, -kTimePitch_MostPitch, kTimePitch_MostPitch);
    const double tempoF = std::clamp(tempo, kTimePitch_LeastTempo, kTimePitch_MostTempo);
    const std::lock_guard guard(i_settingLock);
    if (pitchL == Pitch() && tempoF == Tempo()) return noErr;
    i_pitch.store(pitchL, std::memory_order_relaxed);
    i_tempo.store(tempoF, std::memory_order_relaxed);
    i_spareP->SetUp(pitchL, tempoF);
    i_changedB = true;
    return noErr;
}

OSErr CTimePitch::SetPitch(int pitch) { return Set(pitch, Tempo()); }
OSErr CTimePitch::SetTempo(double tempo) { return Set(Pitch(), tempo); }

void CTimePitch::BeginAnew() noexcept {
    i_history.Clear();
    if (i_changingB) {
        std::swap(i_voiceP, i_otherP);
        i_changingB = false;
    }
    i_voiceP->Start(0);
    i_begunB = false;
    i_sourceDoneB = false;
    i_sourceErr = noErr;
    i_stagedAt = kFit_All;
}

void CTimePitch::TakeSetting(CTimePitchSource& source) noexcept {
    if (!i_changingB) {
        const std::unique_lock guard(i_settingLock, std::try_to_lock);
        if (!guard.owns_lock() || !i_changedB) return;   // being set right now: at the next block, then
        std::swap(i_spareP, i_otherP);
        i_changedB = false;
        i_changingB = true;
    }
    if (!i_begunB) {
        std::swap(i_voiceP, i_otherP);
        i_voiceP->Start(0);
        i_changingB = false;
    } else if (i_stagedAt == kFit_All && ChangeVoice(source)) {
        i_changingB = false;
    }
}

bool CTimePitch::ChangeVoice(CTimePitchSource& source) noexcept {
    // Both get what they need before either gives anything, so that a source that is late changes nothing.
    CTimePitchVoice& next = *i_otherP;
    const double place = i_voiceP->Position();
    const double backF = static_cast<double>(kFit_Skip + kFit_Frames) * next.Tempo();
    const double originF = std::max(0.0, std::round(place - backF));
    next.Start(static_cast<std::uint64_t>(originF));
    if (Prepare(*i_voiceP, kFade_Frames, source) < kFade_Frames || Prepare(next, kFit_All, source) < kFit_All)
        return false;
    Take(*i_voiceP, i_old);
    Take(next, i_new);
    const auto trueAt = static_cast<std::size_t>(std::lround((place - originF) / next.Tempo()));
    const std::size_t at = BestFit(std::min(trueAt, kFit_Skip + kFit_Frames));
    for (std::size_t n = 0; n < kFade_Frames * kChannels; ++n) {
        float& sample = i_new[at * kChannels + n];
        sample = i_old[n] + (sample - i_old[n]) * i_fadeIn[n / kChannels];
    }
    i_stagedAt = at;
    std::swap(i_voiceP, i_otherP);
    return true;
}

std::size_t CTimePitch::BestFit(std::size_t trueAt) noexcept {
    const auto mix = [](std::span<const float> stereo, std::span<float> mono) {
        for (std::size_t n = 0; n < mono.size(); ++n) mono[n] = stereo[kChannels * n] + stereo[kChannels * n + 1];
    };
    mix(i_old, i_oldMono);
    mix(i_new, i_newMono);
    const auto fit = [&](std::size_t at) {
        const float likeF = Product(i_oldMono.data(), &i_newMono[at], kFade_Frames);
        const float powerF = Product(&i_newMono[at], &i_newMono[at], kFade_Frames);
        return likeF / std::sqrt(powerF + 1e-9F);
    };
    // The true place wins where others are no better, so that silence and steady tones do not wander.
    std::size_t best = trueAt;
    float bestF = fit(trueAt) * (1 + 1e-4F);
    for (std::size_t at = trueAt - std::min(trueAt, kFit_Frames); at <= trueAt + kFit_Frames; ++at)
        if (const float fitF = fit(at); fitF > bestF) {
            bestF = fitF;
            best = at;
        }
    return best;
}

bool CTimePitch::Pull(std::uint64_t upTo, CTimePitchSource& source) noexcept {
    while (i_history.End() < upTo && !i_sourceDoneB) {
        std::size_t frames = 0;
        const OSErr err = source.ReadFrames(i_history.Room(static_cast<std::size_t>(upTo - i_history.End())), frames);
        i_history.Added(frames);
        if (Failed(err)) {
            i_sourceDoneB = true;
            if (err != eofErr) i_sourceErr = err;
        } else if (frames == 0) {
            return false;
        }
    }
    return true;
}

std::size_t CTimePitch::Prepare(CTimePitchVoice& voice, std::size_t frames, CTimePitchSource& source) noexcept {
    const std::uint64_t first = voice.NextInput();
    if (voice.IsDirect()) {
        if (Pull(first + frames, source)) return frames;
        return static_cast<std::size_t>(i_history.End() - std::min(first, i_history.End()));
    }
    while (voice.Ready() < frames) {
        const std::uint64_t next = voice.NextInput();
        std::size_t putL = CTimePitchVoice::kPut_Frames;
        if (!Pull(next + putL, source)) {
            putL = static_cast<std::size_t>(i_history.End() - std::min(next, i_history.End()));
            if (putL == 0) break;
        }
        const std::span<const float> kept = i_history.View(next, putL);
        voice.Put(kept.empty() ? std::span<const float>(i_silence).first(putL * kChannels) : kept);   // after the end
    }
    return std::min(frames, voice.Ready());
}

void CTimePitch::Take(CTimePitchVoice& voice, std::span<float> stereo) noexcept {
    if (!voice.IsDirect()) {
        voice.Take(stereo);
        return;
    }
    i_history.Copy(voice.NextInput(), stereo);
    voice.Passed(stereo.size() / kChannels);
}

double CTimePitch::Place() const noexcept {
    return i_voiceP->Position() - static_cast<double>(kFit_All - i_stagedAt) * i_voiceP->Tempo();
}

std::size_t CTimePitch::FramesLeft() const noexcept {
    if (!i_sourceDoneB) return std::numeric_limits<std::size_t>::max();
    constexpr double kRounding = 1e-6;   // of a sum of frames, far below one
    const double leftF = (static_cast<double>(i_history.End()) - Place()) / i_voiceP->Tempo();
    return static_cast<std::size_t>(std::ceil(std::max(0.0, leftF - kRounding)));
}

OSErr CTimePitch::Render(std::span<float> stereo, std::size_t& frames, CTimePitchSource& source) noexcept {
    frames = 0;
    if (i_restartB.exchange(false, std::memory_order_acq_rel)) BeginAnew();
    TakeSetting(source);
    constexpr std::size_t kStep_Frames = 1024;
    const std::size_t wantedL = stereo.size() / kChannels;
    while (frames < wantedL) {
        const std::size_t stagedL = kFit_All - i_stagedAt;
        std::size_t stepL = std::min(wantedL - frames, stagedL > 0 ? stagedL : kStep_Frames);
        if (stagedL == 0) stepL = Prepare(*i_voiceP, stepL, source);
        stepL = std::min(stepL, FramesLeft());   // only now is it known whether the source goes on
        if (stepL == 0) break;
        const std::span<float> step = stereo.subspan(frames * kChannels, stepL * kChannels);
        if (stagedL > 0) {
            std::ranges::copy(std::span(i_new).subspan(i_stagedAt * kChannels, step.size()), step.begin());
            i_stagedAt += stepL;
        } else {
            Take(*i_voiceP, step);
        }
        frames += stepL;
        i_begunB = true;
    }
    // A change in the last few ms may fit best a little beyond the end.
    const double endF = i_sourceDoneB ? static_cast<double>(i_history.End()) : std::numeric_limits<double>::max();
    i_position.store(std::min(Place(), endF), std::memory_order_relaxed);
    if (Failed(i_sourceErr)) {
        frames = 0;
        return i_sourceErr;
    }
    return frames == 0 && wantedL > 0 && IsDone() ? eofErr : noErr;
}

bool CTimePitch::IsDone() const noexcept {
    return !i_restartB.load(std::memory_order_acquire) && i_sourceDoneB && FramesLeft() == 0;
}

double CTimePitch::Held() const noexcept { return static_cast<double>(i_history.End()) - Place(); }
