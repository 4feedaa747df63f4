#include "Audio/CVolumeStage.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "Audio/Stereo.h"

namespace {
bool IsFactor(float factor) { return std::isfinite(factor) && factor >= 0; }
}   // namespace

CVolumeStage::CVolumeStage() : i_fadeIn(kFade_Frames) {
    for (std::size_t n = 0; n < kFade_Frames; ++n) {
        const double part = (static_cast<double>(n) + 1) / static_cast<double>(kFade_Frames);
        i_fadeIn[n] = static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * part));
    }
}

void CVolumeStage::SetVolume(float factor) noexcept {
    if (IsFactor(factor)) i_volumeF.store(factor, std::memory_order_relaxed);
}

void CVolumeStage::SetGain(float factor) noexcept {
    if (IsFactor(factor)) i_gainF.store(factor, std::memory_order_relaxed);
}

CVolumeStage::Setting CVolumeStage::Wanted() const noexcept { return {IsMuted() ? 0.0F : Volume() * Gain(), Mode()}; }

void CVolumeStage::Apply(const Setting& setting, float& left, float& right) noexcept {
    switch (setting.mode) {
        case VocalMode::kRightOnly:
            left = right;
            break;
        case VocalMode::kLeftOnly:
            right = left;
            break;
        case VocalMode::kVocalCut:
            left = right = right - left;
            break;
        case VocalMode::kBoth:
            break;
    }
    left *= setting.volumeF;
    right *= setting.volumeF;
}

void CVolumeStage::Apply(const Setting& setting, std::span<float> stereo) noexcept {
    if (setting.volumeF == 0) {   // silence, whatever the samples are
        std::ranges::fill(stereo, 0.0F);
        return;
    }
    if (setting.mode == VocalMode::kBoth) {
        if (setting.volumeF == 1.0F) return;
        for (float& sample : stereo) sample *= setting.volumeF;
        return;
    }
    for (std::size_t n = 0; n + 1 < stereo.size(); n += kChannels) Apply(setting, stereo[n], stereo[n + 1]);
}

void CVolumeStage::Process(std::span<float> stereo) noexcept {
    if (i_restartB.exchange(false, std::memory_order_acq_rel)) {
        i_to = Wanted();
        i_fadedL = kFade_Frames;
    }
    while (!stereo.empty()) {
        if (i_fadedL == kFade_Frames) {
            const Setting wanted = Wanted();
            if (wanted == i_to) {
                Apply(i_to, stereo);
                return;
            }
            i_from = i_to;
            i_to = wanted;
            i_fadedL = 0;
        }
        const std::size_t frames = std::min(stereo.size() / kChannels, kFade_Frames - i_fadedL);
        for (std::size_t n = 0; n < frames; ++n) {
            float& left = stereo[kChannels * n];
            float& right = stereo[kChannels * n + 1];
            float oldLeft = left, oldRight = right;
            Apply(i_from, oldLeft, oldRight);
            Apply(i_to, left, right);
            const float part = i_fadeIn[i_fadedL + n];
            left = oldLeft + (left - oldLeft) * part;
            right = oldRight + (right - oldRight) * part;
        }
        i_fadedL += frames;
        if (frames == 0) return;   // half a frame
        stereo = stereo.subspan(frames * kChannels);
    }
}
