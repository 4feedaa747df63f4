#include "Media/MP3Frame.h"

#include <array>

namespace {

constexpr std::uint32_t kFrame_SameBits = 0xFFFE0C00;   // sync, version, layer and rate

constexpr std::array<std::array<std::uint16_t, 15>, 5> kKilobits = {
    {{0, 32, 64, 96, 128, 160, 192, 224, 256, 288, 320, 352, 384, 416, 448},   // version 1, layer I
     {0, 32, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 384},      // version 1, layer II
     {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320},       // version 1, layer III
     {0, 32, 48, 56, 64, 80, 96, 112, 128, 144, 160, 176, 192, 224, 256},      // versions 2 and 2.5, layer I
     {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160}}};         // the same, layers II and III
constexpr std::array<std::uint32_t, 3> kRates = {44100, 48000, 32000};

enum Version : std::uint32_t { kVersion_25 = 0, kVersion_None = 1, kVersion_2 = 2, kVersion_1 = 3 };
enum Layer : std::uint32_t { kLayer_None = 0, kLayer_III = 1, kLayer_II = 2, kLayer_I = 3 };
constexpr std::uint32_t kMode_Mono = 3;

}   // namespace

std::optional<MP3Frame> MP3Frame::Read(std::span<const std::byte> bytes) {
    if (bytes.size() < kHeader_Bytes) return std::nullopt;
    std::uint32_t word = 0;
    for (std::size_t n = 0; n < kHeader_Bytes; ++n) word = word << 8U | std::to_integer<std::uint32_t>(bytes[n]);
    const std::uint32_t version = word >> 19U & 3U, layer = word >> 17U & 3U, bitRate = word >> 12U & 15U;
    const std::uint32_t rate = word >> 10U & 3U, padding = word >> 9U & 1U;
    const bool syncB = word >> 21U == 0x7FFU;
    if (!syncB || version == kVersion_None || layer == kLayer_None || rate == 3 || bitRate == 0 || bitRate == 15)
        return std::nullopt;
    const bool firstB = version == kVersion_1;
    const std::size_t table = firstB ? 3 - layer : layer == kLayer_I ? 3 : 4;
    MP3Frame frame;
    frame.kilobitsL = kKilobits[table][bitRate];
    frame.rateL = kRates[rate] >> (firstB ? 0U : version == kVersion_2 ? 1U : 2U);
    frame.samplesL = layer == kLayer_I ? 384 : layer == kLayer_III && !firstB ? 576 : 1152;
    const std::uint32_t slotL = layer == kLayer_I ? 4 : 1;   // bytes that a frame's size is counted in
    frame.bytesL = (frame.samplesL / 8 / slotL * frame.kilobitsL * 1000 / frame.rateL + padding) * slotL;
    frame.paddedB = padding != 0;
    frame.stream = word & kFrame_SameBits;
    const bool monoB = (word >> 6U & 3U) == kMode_Mono;
    frame.sideInfoL = firstB ? (monoB ? 17 : 32) : (monoB ? 9 : 17);
    return frame;
}
