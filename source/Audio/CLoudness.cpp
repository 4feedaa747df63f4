#include "Audio/CLoudness.h"

#include <ebur128.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "Audio/CSpooler.h"
#include "Media/CMediaAudio.h"
#include "Media/SpoolUnits.h"

namespace {
constexpr std::size_t kLoudness_Block = 1U << 14;
}

double Loudness::GainDB(double targetLUFS, double ceilingDB) const {
    if (!std::isfinite(lufs) || !std::isfinite(peakDB)) return 0;
    return std::min(targetLUFS - lufs, ceilingDB - peakDB);
}

struct CLoudness::Meter {
    ebur128_state* stateP = ebur128_init(2, kSamplesPerSecond, EBUR128_MODE_I | EBUR128_MODE_TRUE_PEAK);
    ~Meter() {
        if (stateP != nullptr) ebur128_destroy(&stateP);
    }
};

CLoudness::CLoudness() : i_meterP(std::make_unique<Meter>()) {}
CLoudness::~CLoudness() = default;

OSErr CLoudness::Add(std::span<const std::int16_t> stereo) {
    if (i_meterP->stateP == nullptr) return memFullErr;
    return ebur128_add_frames_short(i_meterP->stateP, stereo.data(), stereo.size() / 2) == EBUR128_SUCCESS ? noErr
                                                                                                           : memFullErr;
}

OSErr CLoudness::Result(Loudness& loudness) const {
    if (i_meterP->stateP == nullptr) return memFullErr;
    double lufs = 0, left = 0, right = 0;
    if (ebur128_loudness_global(i_meterP->stateP, &lufs) != EBUR128_SUCCESS ||
        ebur128_true_peak(i_meterP->stateP, 0, &left) != EBUR128_SUCCESS ||
        ebur128_true_peak(i_meterP->stateP, 1, &right) != EBUR128_SUCCESS)
        return paramErr;
    const double peak = std::max(left, right);
    loudness = {.lufs = lufs, .peakDB = peak > 0 ? 20 * std::log10(peak) : -std::numeric_limits<double>::infinity()};
    return noErr;
}

OSErr CLoudness::Measure(CMediaAudio& audio, Loudness& loudness) {
    CLoudness meter;
    std::vector<std::int16_t> block(kLoudness_Block);
    for (;;) {
        std::size_t gotL = 0;
        const OSErr err = audio.Read(block, gotL);
        if (err == eofErr) return meter.Result(loudness);
        if (Failed(err)) return err;
        if (const OSErr added = meter.Add(std::span(block).first(gotL)); Failed(added)) return added;
    }
}

OSErr CLoudness::Measure(CSpooler& source, const std::atomic<bool>& stopB, Loudness& loudness) {
    std::uint64_t sizeL = 0;
    if (const OSErr err = source.Open(false, sizeL); Failed(err)) return err;
    CLoudness meter;
    std::vector<std::int16_t> block(kSamplesAtATime);
    OSErr err = noErr;
    while (!Failed(err)) {
        std::size_t gotL = 0;
        err = stopB.load() ? abortErr : source.Read(std::as_writable_bytes(std::span(block)), gotL);
        if (!Failed(err)) err = meter.Add(std::span(block).first(gotL / sizeof(std::int16_t)));
    }
    err = FirstOf(err == eofErr ? noErr : err, source.Close(false));
    return FirstOf(err, meter.Result(loudness));
}
