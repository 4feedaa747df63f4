#pragma once
#include <cstdint>

#include "Audio/CAS_AudioRing.h"

/** How a song sounds. */
struct SongSound {
    double pitch = 0;   // semitones
    double tempo = 1;
    float volumeF = 1;   // a linear factor
    float gainF = 1;     // the song's own, such as brings it to the loudness of others
    VocalMode vocal = VocalMode::kBoth;
};

/** Writes a song as it would be heard: source -> pump -> the ring that plays -> 16 bits -> sink, as fast as it goes.
    Threads  Run on a preemptive one: elsewhere the closing of the sink would be over later, and its failure unheard.
    Owner    retains both spools; the ring is its own.
    Errors   the first one of source, ring or sink; the sink is closed in any case and keeps no half file. */
class CSongRender {
public:
    CSongRender(Ref<CSpooler> sourceP, Ref<CSpooler> sinkP)
        : i_sourceP(std::move(sourceP)), i_sinkP(std::move(sinkP)) {}

    OSErr Run(const SongSound& sound);
    /** Frames written. */
    [[nodiscard]] std::uint64_t Frames() const noexcept { return i_framesL; }

    /** What Run answered is of the sink, not of the source. */
    [[nodiscard]] bool HasSinkFailed() const noexcept { return i_sinkFailedB; }

private:
    OSErr Copy(CAS_AudioRing& ring);
    OSErr OfSink(OSErr err) noexcept {
        i_sinkFailedB = i_sinkFailedB || Failed(err);
        return err;
    }

    const Ref<CSpooler> i_sourceP, i_sinkP;
    std::uint64_t i_framesL = 0;
    bool i_sinkFailedB = false;
};
