#include "Audio/CAudioPlayerSettings.h"

#include <algorithm>
#include <cmath>

#include "Values/CCFPrefDictionary.h"

namespace {
constexpr std::size_t kRender_Frames = 2048;
constexpr int kBlocks_Least = 2, kBlocks_Most = 25;
}   // namespace

AudioPlayerSettings AudioPlayerSettings::Read(const CCFPrefDictionary& preferences) {
    AudioPlayerSettings settings;
    const std::string device = preferences.GetString("Audio Output Device").UTF8();
    if (!device.empty()) settings.device = device;
    settings.blocksL = preferences.GetLong("Pre-Fetched Audio Blocks (must be > 2)");
    settings.sleepMillisecondsL = preferences.GetLong("Audio Engine sleep time (should be zero)");
    const double threshold = preferences.GetFloat("Auto Cue Threshold (0..1) (smaller is more sensitive)");
    if (!std::isnan(threshold)) settings.cueThreshold = std::clamp(threshold, 0.0, 1.0);
    settings.cueRollbackT = preferences.GetFloat("Auto Cue rollback (seconds)");
    settings.timePitchUnitB = preferences.GetBool("Use Apple AUTimePitch for pitch bending");
    settings.bestPitchB = preferences.GetBool("Use maximum quality for pitch bending");
    return settings;
}

AudioBlocks AudioPlayerSettings::Blocks() const noexcept {
    return {.framesL = kRender_Frames,
            .countL = static_cast<std::size_t>(std::clamp(blocksL, kBlocks_Least, kBlocks_Most))};
}

double AudioPlayerSettings::SleepT() const noexcept {
    constexpr double kMillisecond = 0.001;
    constexpr double kMost_T = 1;
    if (sleepMillisecondsL > 0) return std::min(sleepMillisecondsL * kMillisecond, kMost_T);
    return std::floor(static_cast<double>(kRender_Frames) * 1'000'000 / kAudioOutput_Rate / 500) * kMillisecond;
}
