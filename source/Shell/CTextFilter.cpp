#include "Shell/CTextFilter.h"

#include <algorithm>
#include <array>

#include "Core/SuperString.h"

namespace {

std::string FoldedByICU(std::string_view text, bool plainLettersB) {
    const SuperString lower = SuperString(text).Lowercased();
    return (plainLettersB ? lower.WithoutDiacritics() : lower.Normalized(NormalForm::kC)).UTF8();
}

/** The letters up to U+024F, each folded by itself: what most texts with marks have, at a tenth of the library's time. */
class LatinFolds {
public:
    static constexpr std::size_t kFirst = 0x80, kEnd = 0x250;
    explicit LatinFolds(bool plainLettersB) {
        for (std::size_t code = kFirst; code < kEnd; ++code) {
            const char text[] = {static_cast<char>(0xC0 | code >> 6), static_cast<char>(0x80 | (code & 0x3F))};
            i_folds[code - kFirst] = FoldedByICU({text, 2}, plainLettersB);
        }
    }
    /** Appends; false when there is another letter in it, or no UTF-8. */
    bool Fold(std::string_view text, std::string& folded) const {
        for (std::size_t n = 0; n < text.size(); ++n) {
            const auto lead = static_cast<unsigned char>(text[n]);
            if (lead < 0x80) {
                folded += static_cast<char>(lead >= 'A' && lead <= 'Z' ? lead + ('a' - 'A') : lead);
                continue;
            }
            if (++n == text.size()) return false;
            const auto trail = static_cast<unsigned char>(text[n]);
            const std::size_t code = (lead & 0x1FU) << 6 | (trail & 0x3FU);
            if (lead >> 5 != 6 || trail >> 6 != 2 || code < kFirst || code >= kEnd) return false;
            folded += i_folds[code - kFirst];
        }
        return true;
    }

private:
    std::array<std::string, kEnd - kFirst> i_folds;
};

}   // namespace

std::string CTextFilter::Folded(std::string_view text) const {
    static const LatinFolds s_plain(true), s_marked(false);
    std::string folded;
    folded.reserve(text.size());
    return (i_plainLettersB ? s_plain : s_marked).Fold(text, folded) ? folded : FoldedByICU(text, i_plainLettersB);
}

CTextFilter::CTextFilter(std::string_view typed, bool plainLettersB) : i_plainLettersB(plainLettersB) {
    const std::string folded = Folded(typed);
    constexpr std::string_view kBlanks = " \t\r\n";
    for (std::size_t begin = folded.find_first_not_of(kBlanks); begin != std::string::npos;) {
        const std::size_t end = std::min(folded.find_first_of(kBlanks, begin), folded.size());
        i_words.push_back(folded.substr(begin, end - begin));
        begin = folded.find_first_not_of(kBlanks, end);
    }
}

bool CTextFilter::Matches(std::string_view name, std::string_view artist) const {
    if (i_words.empty()) return true;
    const std::string foldedName = Folded(name), foldedArtist = Folded(artist);   // short ones lie on the stack
    return std::ranges::all_of(i_words, [&](const std::string& word) {
        return foldedName.find(word) != std::string::npos || foldedArtist.find(word) != std::string::npos;
    });
}
