#pragma once
#include "Audio/CAS_Adapt_FtoI.h"
#include "Audio/CAS_Adapt_ItoF.h"
#include "Audio/CAS_Adapt_PitchTempoVolume.h"
#include "Audio/CAS_Ring.h"

/** The ring of a song that plays: a pump writes 16-bit samples, CAudioPlayer reads floats. */
using CAS_AudioRing = CAS_Adapt_FtoI<CAS_Adapt_PitchTempoVolume<CAS_Adapt_ItoF<CAS_Ring>>>;

/** One whose reader gets floats. */
[[nodiscard]] inline Ref<CAS_AudioRing> MakeAudioRing() {
    Ref<CAS_AudioRing> ringP = MakeRef<CAS_AudioRing>();
    ringP->SetFloatToInteger(false);
    return ringP;
}
