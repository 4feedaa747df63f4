#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
/** Sizes of the sub-code of a compact disc and the words of CD+G. One packet is 1/300 s, the unit of the song clock.
    Source   Red Book (IEC 60908), sub-code channels R to W. */
inline constexpr std::size_t kCDSectorSizeCDDA = 2352;    // bytes of audio in a sector
inline constexpr std::size_t kSamplesPerCDSector = 588;   // 4-byte stereo frames in a sector
inline constexpr std::size_t kSubCodeBytesPerSector = 96;
inline constexpr std::size_t kSamplesPerCDSector_SubChan = 24;   // the sub-code of a sector in 4-byte units
inline constexpr std::size_t kPacketsPerCDSector = 4;
inline constexpr std::size_t kSubCodePacket_Bytes = 24;
inline constexpr std::size_t kSubCodeUnit_Bytes = 4;   // streams count in units of four bytes
inline constexpr std::size_t kSubCodePacket_Units = 6;
inline constexpr std::size_t kCDSectorsPerSecond = 75;
inline constexpr std::size_t kSubCodePacketsPerSecond = 300;

inline constexpr std::uint8_t kSubCode_Mask = 0x3F;   // the two high bits belong to channels P and Q
inline constexpr std::uint8_t kSubCode_CDG = 9;       // the command byte of a graphics packet

inline constexpr std::size_t kCDGPlane_Width = 300, kCDGPlane_Height = 216;
inline constexpr std::size_t kCDGTile_Width = 6, kCDGTile_Height = 12;
inline constexpr std::size_t kCDGPlane_Columns = 50, kCDGPlane_Rows = 18;
inline constexpr std::size_t kCDGPlane_Colors = 16;

/** The second byte of a graphics packet, in its low six bits. A value that is not named is ignored. */
enum class CDGInstruction : std::uint8_t {
    kMemoryPreset = 1,
    kBorderPreset = 2,
    kTile = 6,
    kScrollPreset = 20,
    kScrollCopy = 24,
    kTransparent = 28,
    kLoadLow = 30,
    kLoadHigh = 31,
    kTileXOR = 38,
};

/** One packet as it lies in a stream: no padding, so that a byte range can be read as packets. */
struct SubCodePacket {
    std::array<std::uint8_t, kSubCodePacket_Bytes> bytes{};

    [[nodiscard]] bool IsCDG() const noexcept { return (bytes[0] & kSubCode_Mask) == kSubCode_CDG; }
    [[nodiscard]] CDGInstruction Instruction() const noexcept {
        return static_cast<CDGInstruction>(bytes[1] & kSubCode_Mask);
    }
    /** Data byte 0 to 15. */
    [[nodiscard]] std::uint8_t Data(std::size_t n) const noexcept { return bytes[4 + n]; }
    bool operator==(const SubCodePacket&) const = default;
};
static_assert(sizeof(SubCodePacket) == kSubCodePacket_Bytes && alignof(SubCodePacket) == 1);
