#include "Core/UTF8.h"

UTF8Char NextUTF8(std::string_view text) noexcept {
    const auto byteAt = [&](std::size_t n) { return static_cast<unsigned char>(text[n]); };
    const unsigned char first = byteAt(0);
    if (first < 0x80) return {first, 1, true};
    const std::size_t bytesL = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
    if (first < 0xC2 || first > 0xF4) return {};
    char32_t code = first & (0x7FU >> bytesL);
    for (std::size_t n = 1; n < bytesL; ++n) {
        if (n >= text.size() || (byteAt(n) & 0xC0) != 0x80) return {0, n, false};
        code = code << 6 | (byteAt(n) & 0x3FU);
        // The second byte already tells overlong forms, surrogates and what lies beyond the last plane.
        const bool refusedB = n == 1 && ((first == 0xE0 && byteAt(1) < 0xA0) || (first == 0xED && byteAt(1) > 0x9F) ||
                                         (first == 0xF0 && byteAt(1) < 0x90) || (first == 0xF4 && byteAt(1) > 0x8F));
        if (refusedB) return {};
    }
    return {code, bytesL, true};
}
