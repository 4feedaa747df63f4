#pragma once
#include <cstddef>
#include <string_view>

/** One step through bytes that ought to be UTF-8. */
struct UTF8Char {
    char32_t code = 0;
    std::size_t bytesL = 1;   // to go on by; for bytes that are no UTF-8, those to replace by one U+FFFD
    bool validB = false;
};
/** The character at the front of `text`, which is not empty. Overlong forms, surrogates and codes beyond U+10FFFF are
    no UTF-8. Source: RFC 3629. */
[[nodiscard]] UTF8Char NextUTF8(std::string_view text) noexcept;
inline constexpr std::string_view kUTF8_Replacement = "\xEF\xBF\xBD";
