#include "Audio/CTimePitchVoice.h"

#include <SoundTouch.h>

#include <algorithm>
#include <array>

#include "Audio/Stereo.h"
#include "Media/SpoolUnits.h"

namespace {}

CTimePitchVoice::CTimePitchVoice() : i_engineP(std::make_unique<soundtouch::SoundTouch>()) {
    i_engineP->setSampleRate(kSamplesPerSecond);
    i_engineP->setChannels(kChannels);
    Grow();
}

CTimePitchVoice::~CTimePitchVoice() = default;

void CTimePitchVoice::Grow() {
    // Each of the engine's buffers is largest at one of the corners. Twice what is ever left in it goes through.
    constexpr std::size_t kGrow_Frames = 16384;
    std::array<float, kPut_Frames * kChannels> silence{};
    for (const int pitch : {-kTimePitch_MostPitch, kTimePitch_MostPitch})
        for (const double tempo : {kTimePitch_LeastTempo, kTimePitch_MostTempo}) {
            SetUp(pitch, tempo);
            for (std::size_t doneL = 0; doneL < kGrow_Frames; doneL += kPut_Frames) {
                i_engineP->putSamples(silence.data(), kPut_Frames);
                if (Ready() > 2 * kReady_Frames) i_engineP->receiveSamples(static_cast<unsigned>(Ready()));
            }
            i_engineP->clear();
        }
    SetUp(0, 1.0);
}

void CTimePitchVoice::SetUp(int pitch, double tempo) {
    i_directB = pitch == 0 && tempo == 1.0;
    i_tempo = tempo;
    // From a clear engine: a pitch that crosses zero turns its two stages round and would carry samples past one of
    // them.
    i_engineP->clear();
    i_engineP->setPitchSemiTones(pitch);
    i_engineP->setTempo(tempo);
}

void CTimePitchVoice::Start(std::uint64_t origin) noexcept {
    if (!i_directB) i_engineP->clear();
    i_originL = origin;
    i_nextInputL = origin;
    i_givenL = 0;
}

void CTimePitchVoice::Put(std::span<const float> stereo) noexcept {
    const std::size_t frames = stereo.size() / kChannels;
    i_engineP->putSamples(stereo.data(), static_cast<unsigned>(frames));
    i_nextInputL += frames;
}

std::size_t CTimePitchVoice::Ready() const noexcept { return i_engineP->numSamples(); }

void CTimePitchVoice::Take(std::span<float> stereo) noexcept {
    const auto frames = static_cast<unsigned>(stereo.size() / kChannels);
    i_givenL += i_engineP->receiveSamples(stereo.data(), frames);
}

void CTimePitchVoice::Passed(std::size_t frames) noexcept {
    i_nextInputL += frames;
    i_givenL += frames;
}
