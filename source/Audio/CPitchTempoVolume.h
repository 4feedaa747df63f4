#pragma once
#include "Audio/CTimePitch.h"
#include "Audio/CVolumeStage.h"

/** What a chain lets its owner set while it is read: pitch, tempo, volume, gain, mute and vocal mode.
    Threads  any. */
class CPitchTempoVolume {
public:
    [[nodiscard]] CTimePitch& TimePitch() noexcept { return i_timePitch; }
    [[nodiscard]] CVolumeStage& Volume() noexcept { return i_volume; }
    [[nodiscard]] const CTimePitch& TimePitch() const noexcept { return i_timePitch; }
    [[nodiscard]] const CVolumeStage& Volume() const noexcept { return i_volume; }

    /** As a song tells them: the pitch may have a fraction, which is cut off. */
    OSErr SetPitchTempo(double pitch, double tempo);

protected:
    CPitchTempoVolume() = default;
    ~CPitchTempoVolume() = default;

private:
    CTimePitch i_timePitch;
    CVolumeStage i_volume;
};
