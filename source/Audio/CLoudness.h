#pragma once
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>

#include "Platform/OSErr.h"

class CMediaAudio;
class CSpooler;

/** What a song's loudness is. */
struct Loudness {
    double lufs = 0;     // integrated, EBU R128; negative infinity for silence
    double peakDB = 0;   // true peak against full scale; negative infinity for silence
    /** What brings it to `targetLUFS`: in dB, as much as the peak allows without going over `ceilingDB`. 0 for silence. */
    [[nodiscard]] double GainDB(double targetLUFS = kTargetLUFS, double ceilingDB = kCeilingDB) const;

    static constexpr double kTargetLUFS = -14;   // where streaming services play: backings of all ages are near it
    static constexpr double kCeilingDB = -1;     // true peak, as EBU R128 asks for
};

/** Measures the loudness of 44.1 kHz stereo that is given block by block, or of a whole song.
    Threads  one at a time; Measure takes as long as decoding the song and belongs on a task of its own.
    Errors   statuses.
    Source   ITU-R BS.1770-4, EBU R128, by libebur128. */
class CLoudness {
public:
    CLoudness();
    ~CLoudness();
    CLoudness(const CLoudness&) = delete;
    CLoudness& operator=(const CLoudness&) = delete;

    OSErr Add(std::span<const std::int16_t> stereo);
    OSErr Result(Loudness& loudness) const;
    /** From where `audio` is to its end. */
    static OSErr Measure(CMediaAudio& audio, Loudness& loudness);
    /** All of `source`, which is opened and closed here. abortErr once `stopB` is set. */
    static OSErr Measure(CSpooler& source, const std::atomic<bool>& stopB, Loudness& loudness);

private:
    struct Meter;   // the library's state
    const std::unique_ptr<Meter> i_meterP;
};
