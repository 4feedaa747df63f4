#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Core/Localize.h"

/** The tokens of a name template; the first six stand for a value each. */
enum class NameToken : std::uint8_t {
    kLabel = 0,
    kTrack = 1,
    kSong = 2,
    kArtist = 3,
    kIgnored = 4,
    kVersion = 5,
    kHyphen = 6,
    kLineStart = 7,
    kLineEnd = 8,
    kParenLeft = 9,
    kParenRight = 10,
    kBracketLeft = 11,
    kBracketRight = 12,
    kLevel = 13,
    kDot = 14,
    kBlank = 15,
    kSeparator = 16   // " - "
};
inline constexpr std::size_t kName_Values = 6;
[[nodiscard]] constexpr bool IsNameValue(NameToken token) { return static_cast<std::size_t>(token) < kName_Values; }
/** The text that a token is written as. */
[[nodiscard]] std::string_view NameTokenText(NameToken token);
inline constexpr const char* kName_IllegalZ =
    N_("You have entered an illegal character in one of your templates. Legal characters are LTRSI-()/. and Space.");

/** Between kLineStart and kLineEnd; nothing for a character that is none of the language. */
[[nodiscard]] std::optional<std::vector<NameToken>> NameTokens(std::string_view text);

/** The values of a song by their token; an empty one is not known. */
using NameValues = std::array<std::string, kName_Values>;

/** A name built by a template. */
struct BuiltName {
    std::string text;
    bool unknownsB = false;   // a value is not known, "$$" stands in its place
};
/** Of a template with folders the last level counts. Two labels with a separator between them are one value, the album,
    which has its separator in it. Nothing for an illegal template. */
[[nodiscard]] std::optional<BuiltName> BuildName(std::string_view text, const NameValues& values);
