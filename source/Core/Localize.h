#pragma once
#include <cstdint>
#include <filesystem>
#include <initializer_list>
#include <string>
#include <string_view>

// Texts for people, by the catalogue of the program (po/vopla.pot; gettext's form, https://www.gnu.org/software/gettext/manual).
// What stands in the code is the English text. A log is English too, but for what it says again of
// an alert. Any thread, once the catalogue is chosen.

/** `textZ` in the language of the user; as it is where the catalogue lacks it. `commentZ` tells whoever translates it what it
    is about. */
[[nodiscard]] std::string Localize(const char* textZ, const char* commentZ = nullptr);
/** The same, with values in the places of "%1" to "%9". */
[[nodiscard]] std::string Localize(const char* textZ, std::initializer_list<std::string_view> values,
                                   const char* commentZ = nullptr);
/** One text for a number of 1, another for the rest; "%1" is the number. */
[[nodiscard]] std::string LocalizeCount(const char* oneZ, const char* manyZ, std::uint64_t numberL);

/** Marks a text of a table for the catalogue; it is looked up where it is shown. */
[[nodiscard]] constexpr const char* N_(const char* textZ) noexcept { return textZ; }

/** Where the catalogues lie: "<folder>/<language>/LC_MESSAGES/vopla.mo". The environment's TEXTDOMAINDIR goes before it. At the
    start, on the main thread, behind setlocale. */
void ChooseCatalogue(const std::filesystem::path& folder);
