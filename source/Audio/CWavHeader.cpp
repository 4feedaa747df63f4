#include "Audio/CWavHeader.h"

#include <string_view>

#include "Media/SpoolUnits.h"

namespace {

constexpr std::uint32_t kWav_FormatBytes = 16;
constexpr std::uint32_t kWav_BlockAlign = 4, kWav_ByteRate = kSamplesPerSecond * kWav_BlockAlign;

}   // namespace

std::array<std::byte, CWavHeader::kBytes> CWavHeader::Make(std::uint64_t dataBytes) {
    std::array<std::byte, kBytes> bytes{};
    std::size_t at = 0;
    const auto text = [&](std::string_view id) {
        for (const char c : id) bytes[at++] = static_cast<std::byte>(c);
    };
    const auto number = [&](std::uint64_t value, std::size_t count) {
        for (; count > 0; --count, value >>= 8U) bytes[at++] = static_cast<std::byte>(value & 0xFFU);
    };
    text("RIFF"), number(dataBytes + kBytes - 8, 4), text("WAVE");
    text("fmt "), number(kWav_FormatBytes, 4);
    number(1, 2), number(2, 2), number(kSamplesPerSecond, 4), number(kWav_ByteRate, 4), number(kWav_BlockAlign, 2),
        number(16, 2);
    text("data"), number(dataBytes, 4);
    return bytes;
}
