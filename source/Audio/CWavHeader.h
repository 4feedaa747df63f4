#pragma once
#include <array>
#include <cstddef>
#include <cstdint>

/** The head of a WAV file in the one form that we write: 16-bit stereo at 44.1 kHz, not compressed. Any form is read by
    CMediaAudio.
    Source   Multimedia Programming Interface and Data Specifications 1.0, "RIFF" and "WAVE". */
struct CWavHeader {
    static constexpr std::size_t kBytes = 44;
    static constexpr std::uint64_t kMostData = 0xFFFFFFFFU - (kBytes - 8) - 3;   // what the size fields can tell

    /** The 44 bytes before `dataBytes` bytes of sound, which are not above kMostData. */
    [[nodiscard]] static std::array<std::byte, kBytes> Make(std::uint64_t dataBytes);
};
