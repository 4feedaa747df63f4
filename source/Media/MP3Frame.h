#pragma once
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

/** What the four bytes at the front of an MPEG audio frame say. A value; pure.
    Source  ISO/IEC 11172-3, 13818-3; MPEG 2.5 as its encoders write it. */
struct MP3Frame {
    std::uint32_t bytesL = 0;      // of the whole frame
    std::uint32_t samplesL = 0;    // of each channel
    std::uint32_t rateL = 0;       // samples a second
    std::uint32_t kilobitsL = 0;   // a second
    std::uint32_t stream = 0;      // what all frames of a stream have in common
    bool paddedB = false;          // by a slot, so that the bit rate comes true
    std::uint32_t sideInfoL = 0;   // bytes between the header and what an encoder hides in an empty frame (layer III)

    static constexpr std::size_t kHeader_Bytes = 4;

    /** Nothing when `bytes`, at least four, begin no frame. Frames of a free bit rate do not tell their size, and are
        none. */
    [[nodiscard]] static std::optional<MP3Frame> Read(std::span<const std::byte> bytes);
};
