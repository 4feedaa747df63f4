#include "Audio/CAS_Wav.h"

#include <algorithm>

#include "Audio/CWavHeader.h"

static_assert(std::endian::native == std::endian::little, "the samples are written as they lie in memory");

OSErr CAS_Wav::Begin(CSafeOutput& out, std::uint64_t frames) {
    i_dataL = 0;
    if (frames > CWavHeader::kMostData / 4) return dskFulErr;   // told before an hour of writing
    return out.Write(CWavHeader::Make(frames * 4));
}

OSErr CAS_Wav::Encode(CSafeOutput& out, std::span<const std::int16_t> stereo) {
    if (stereo.size_bytes() > CWavHeader::kMostData - i_dataL) return dskFulErr;
    i_dataL += stereo.size_bytes();
    return out.Write(std::as_bytes(stereo));
}

OSErr CAS_Wav::End(CSafeOutput& out) { return out.Patch(0, CWavHeader::Make(i_dataL)); }
