#include "Audio/CSongRender.h"

#include <vector>

#include "Audio/CAS_SpoolRec.h"
#include "Core/Assertions.h"
#include "Media/SampleForms.h"
#include "Threads/ThreadInfo.h"

namespace {
constexpr std::size_t kBlock_Samples = 4096;
constexpr double kPump_TurnT = 0.001;   // until the pump has brought more
}   // namespace

OSErr CSongRender::Run(const SongSound& sound) {
    if (!AssertWords(IsPreemptiveThread(), "a render on a preemptive thread")) return paramErr;
    const Ref<CAS_AudioRing> ringP = MakeAudioRing();
    if (const OSErr err = ringP->SetPitchTempo(sound.pitch, sound.tempo); Failed(err)) return err;
    ringP->Volume().SetVolume(sound.volumeF);
    ringP->Volume().SetVocalMode(sound.vocal);
    ringP->Volume().SetGain(sound.gainF);
    if (const OSErr err = StartSpooling(i_sourceP, ringP, false); Failed(err) && err != eofErr) return err;
    std::uint64_t sizeL = 0;
    OSErr err = ringP->Open(false, sizeL);
    if (!Failed(err)) {
        std::uint64_t sinkL = ringP->GetTotal();   // of the source: at another tempo the sink learns better at its end
        err = OfSink(i_sinkP->Open(true, sinkL));
        if (!Failed(err)) {
            err = Copy(*ringP);
            if (Failed(err)) i_sinkP->SetError(true, err);
            const OSErr closed = i_sinkP->Close(true);
            err = Failed(err) ? err : OfSink(closed);
        }
        err = FirstOf(err, ringP->Close(false));
    }
    const OSErr pumpErr = i_sourceP->WaitPumped();
    return FirstOf(err, CSpooler::IsIgnorable(pumpErr) ? noErr : pumpErr);
}

OSErr CSongRender::Copy(CAS_AudioRing& ring) {
    std::vector<float> floats(kBlock_Samples);
    std::vector<std::int16_t> integers(kBlock_Samples);
    for (;;) {
        std::size_t gotL = 0;
        const OSErr err = ring.Read(std::as_writable_bytes(std::span(floats)), gotL);
        if (err == eofErr) return noErr;
        if (Failed(err)) return err;
        if (gotL == 0) {
            ::Wait(kPump_TurnT, WaitMode::kMain_TimersPaint);
            continue;
        }
        const std::size_t samplesL = gotL / sizeof(float);
        FloatToInteger(std::span(floats).first(samplesL), integers);
        const OSErr sinkErr = OfSink(i_sinkP->Write(std::as_bytes(std::span(integers).first(samplesL))));
        if (Failed(sinkErr)) return sinkErr;
        i_framesL += samplesL / 2;
    }
}
