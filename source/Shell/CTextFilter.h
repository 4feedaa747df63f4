#pragma once
#include <string>
#include <string_view>
#include <vector>

/** What a person typed to find a song: every word must be in the name or the artist, in any order, whatever the case
    and, when wanted, whatever the marks on the letters.
    Threads  any; it does not change. */
class CTextFilter {
public:
    CTextFilter() = default;
    CTextFilter(std::string_view typed, bool plainLettersB);

    /** Nothing to look for: everything matches. */
    [[nodiscard]] bool IsEmpty() const noexcept { return i_words.empty(); }
    [[nodiscard]] bool Matches(std::string_view name, std::string_view artist) const;
    friend bool operator==(const CTextFilter&, const CTextFilter&) = default;

private:
    [[nodiscard]] std::string Folded(std::string_view text) const;

    std::vector<std::string> i_words;   // folded
    bool i_plainLettersB = true;
};
