#include "Core/Base64.h"

#include <array>
#include <cstdint>

namespace {

constexpr std::string_view kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::int8_t kNoDigit = -1;

constexpr std::array<std::int8_t, 256> MakeDigits() {
    std::array<std::int8_t, 256> digits{};
    digits.fill(kNoDigit);
    for (std::size_t n = 0; n < kAlphabet.size(); ++n)
        digits[static_cast<unsigned char>(kAlphabet[n])] = static_cast<std::int8_t>(n);
    return digits;
}
constexpr std::array<std::int8_t, 256> kDigits = MakeDigits();

constexpr std::string_view kSpaces = " \t\n\r";

}   // namespace

std::string EncodeBase64(std::span<const std::byte> bytes) {
    std::string text;
    text.reserve(bytes.size() / 3 * 4 + 4);
    for (; !bytes.empty(); bytes = bytes.subspan(std::min<std::size_t>(3, bytes.size()))) {
        std::uint32_t bits = 0;
        for (std::size_t n = 0; n < 3; ++n)
            bits = bits << 8 | (n < bytes.size() ? std::to_integer<std::uint32_t>(bytes[n]) : 0);
        for (std::size_t n = 0; n < 4; ++n) text += n <= bytes.size() ? kAlphabet[bits >> (18 - 6 * n) & 63] : '=';
    }
    return text;
}

std::optional<std::vector<std::byte>> DecodeBase64(std::string_view text) {
    std::vector<std::byte> bytes;
    bytes.reserve(text.size() / 4 * 3);
    std::uint32_t bits = 0;
    int digitsL = 0;   // of the group of four that is being read
    int padsL = 0;
    for (const char c : text) {
        if (kSpaces.find(c) != kSpaces.npos) continue;
        const std::int8_t digit = kDigits[static_cast<unsigned char>(c)];
        if (c == '=') {
            // Padding fills a group that has two or three digits, and nothing follows it.
            if (digitsL + padsL < 2 || digitsL + padsL > 3 || digitsL < 2) return std::nullopt;
            ++padsL;
            continue;
        }
        if (digit == kNoDigit || padsL > 0) return std::nullopt;
        bits = bits << 6 | static_cast<std::uint32_t>(digit);
        if (++digitsL < 4) continue;
        for (const int shift : {16, 8, 0}) bytes.push_back(static_cast<std::byte>(bits >> shift & 0xFF));
        bits = 0;
        digitsL = 0;
    }
    if (digitsL == 0 && padsL == 0) return bytes;
    if (digitsL + padsL != 4) return std::nullopt;
    bits <<= 6 * padsL;
    bytes.push_back(static_cast<std::byte>(bits >> 16 & 0xFF));
    if (digitsL == 3) bytes.push_back(static_cast<std::byte>(bits >> 8 & 0xFF));
    return bytes;
}
