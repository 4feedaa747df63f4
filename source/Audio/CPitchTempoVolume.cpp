#include "Audio/CPitchTempoVolume.h"

#include <algorithm>
#include <cmath>

OSErr CPitchTempoVolume::SetPitchTempo(double pitch, double tempo) {
    if (!std::isfinite(pitch)) return paramErr;
    constexpr double kMost = kTimePitch_MostPitch;
    return i_timePitch.Set(static_cast<int>(std::clamp(pitch, -kMost, kMost)), tempo);
}
