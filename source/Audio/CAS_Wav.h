#pragma once
#include "Audio/CAS_SoundWriter.h"

/** A sink that writes a WAV file: 16-bit stereo at 44.1 kHz. The size fields have 32 bits: what would not fit is
    refused with dskFulErr. */
class CAS_Wav final : public CAS_SoundWriter {
public:
    explicit CAS_Wav(const CFileRef& file) : CAS_SoundWriter(file, "WAV File") {}

protected:
    OSErr Begin(CSafeOutput& out, std::uint64_t frames) override;
    OSErr Encode(CSafeOutput& out, std::span<const std::int16_t> stereo) override;
    OSErr End(CSafeOutput& out) override;

private:
    std::uint64_t i_dataL = 0;   // bytes
};
