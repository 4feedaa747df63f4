#include "Shell/CTextFilter.h"

#include <algorithm>

#include "Core/SuperString.h"

namespace {

bool IsASCII(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

}   // namespace

std::string CTextFilter::Folded(std::string_view text) const {
    if (!IsASCII(text)) {
        const SuperString lower = SuperString(text).Lowercased();
        return (i_plainLettersB ? lower.WithoutDiacritics() : lower.Normalized(NormalForm::kC)).UTF8();
    }
    std::string folded(text);   // most texts are: no library for those
    for (char& c : folded)
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
    return folded;
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
    const std::string foldedName = Folded(name), foldedArtist = Folded(artist);
    return std::ranges::all_of(i_words, [&](const std::string& word) {
        return foldedName.find(word) != std::string::npos || foldedArtist.find(word) != std::string::npos;
    });
}
