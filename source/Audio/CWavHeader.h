#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

#include "Core/CByteSource.h"

/** The head of a WAV file in the one form that we write and take as raw sound: 16-bit stereo at 44.1 kHz, not
   compressed. Other WAV files are read by CMediaAudio. Source   Multimedia Programming Interface and Data
   Specifications 1.0, "RIFF" and "WAVE". */
struct CWavHeader {
    std::uint64_t dataAtL = 0;      // first byte of the sound
    std::uint64_t dataBytesL = 0;   // whole frames that are really in the file

    static constexpr std::size_t kBytes = 44;
    static constexpr std::uint64_t kMostData = 0xFFFFFFFFU - (kBytes - 8) - 3;   // what the size fields can tell

    /** From the start of `source`, over chunks that do not matter. paramErr for any other form, eofErr for one cut off
        before the sound. A length that reaches beyond the file, as in one that was never closed, ends with the file. */
    OSErr Read(CByteSource& source);
    /** The 44 bytes before `dataBytes` bytes of sound, which are not above kMostData. */
    [[nodiscard]] static std::array<std::byte, kBytes> Make(std::uint64_t dataBytes);
};
