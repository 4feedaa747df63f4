#include "Core/Conform.h"

#include <unicode/uchar.h>
#include <unicode/unistr.h>

namespace {

/** With their blanks: the first and the last word of a name stay as they are. */
constexpr const char* kConform_SmallWords[] = {
    " A ",    " An ",   " And ",  " At ",  " But ", " By ", " Del ",  " For ", " From ", " In ",
    " Into ", " Is ",   " Nor ",  " Not ", " Of ",  " On ", " Onto ", " Or ",  " So ",   " That ",
    " The ",  " This ", " With ", " To ",  " Y ",   " El ", " Los ",  " La ",  " las ",
};

struct ConformRow {
    const char* fromZ;
    const char* toZ;
};
/** In this order: later rows see what the earlier ones made. Case does not matter on the left. */
constexpr ConformRow kConform_Names[] = {
    {"Cavs", "CAVS"},
    {"Abba", "ABBA"},
    {"Sabbath", "Sabbath"},
    {"Ac/Dc", "AC/DC"},
    {"Zz Top", "ZZ Top"},
    {"Xtc", "XTC"},
    {"Ub40", "UB40"},
    {" mc", " MC"},
    {"mc-5", "MC-5"},
    {" dj ", " DJ "},
    {" bj ", " BJ "},
    {" tv ", " tv "},
    {"leann", "LeAnn"},
    {"bbmak", "BBMak"},
    {"dna", "DNA"},
    {"lmc", "LMC"},
    {"elo", "ELO"},
    {"nyc", "NYC"},
    {"omc", "OMC"},
    {"omd", "OMD"},
    {"tlc", "TLC"},
    {"ymca", "YMCA"},
    {"10Cc", "10CC"},
    {"Tv Theme", "TV Theme"},
    {" Ii ", " II "},
    {"-Nsync", "'N Sync"},
    {"Adam Ant", "Adam and the Ants"},
    {"Adam & the Ants", "Adam and the Ants"},
    {"Ac-Dc", "AC/DC"},
    {"Ac Dc", "AC/DC"},
    {"AcDc", "AC/DC"},
    {"inxs", "INXS"},
    {"Alanis Morrisette", "Alanis Morrisete"},   // spelled so in the libraries that are out there
    {" Folder", ""},
    {".zip", ""},
};

bool IsWordChar(UChar32 c) { return u_isalnum(c) != 0 || (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0; }

/** True when `at` lies between a character of a word and one that is none, or at an end of the text. */
bool IsWordEdge(const icu::UnicodeString& text, int32_t at) {
    if (at <= 0 || at >= text.length()) return true;
    return !IsWordChar(text.char32At(text.moveIndex32(at, -1))) || !IsWordChar(text.char32At(at));
}

/** True when `from` stands at `at`, whatever its case, and does not cut a word in two. */
bool Matches(const icu::UnicodeString& text, int32_t at, const icu::UnicodeString& from) {
    const int32_t endL = at + from.length();
    if (endL > text.length()) return false;
    for (int32_t n = 0; n < from.length(); ++n)
        if (u_foldCase(text[at + n], U_FOLD_CASE_DEFAULT) != u_foldCase(from[n], U_FOLD_CASE_DEFAULT)) return false;
    if (u_isalnum(from[0]) && !IsWordEdge(text, at)) return false;
    return !u_isalnum(from[from.length() - 1]) || IsWordEdge(text, endL);
}

/** All that match, from the left. The blank that ends one match may begin the next: " La La " holds two. */
icu::UnicodeString ReplaceRow(const icu::UnicodeString& text, const icu::UnicodeString& from,
                              const icu::UnicodeString& to) {
    icu::UnicodeString result;
    const bool sharesBlankB = from.endsWith(u" ", 1) && to.endsWith(u" ", 1);
    int32_t at = 0;
    while (at < text.length()) {
        if (!Matches(text, at, from)) {
            result.append(text[at++]);
            continue;
        }
        result.append(to);
        at += from.length();
        if (sharesBlankB) {
            result.truncate(result.length() - 1);
            --at;
        }
    }
    return result;
}

/** Upper case for the letter behind each `mark`, and for the mark's own: "o'brien", " mccartney". */
void RaiseBehind(icu::UnicodeString& text, const icu::UnicodeString& mark, int32_t ownLetter) {
    for (int32_t at = 0; at + mark.length() < text.length(); ++at) {
        const bool foundB = text.caseCompare(at, mark.length(), mark, U_FOLD_CASE_DEFAULT) == 0;
        if (!foundB || (u_isalnum(mark[0]) && !IsWordEdge(text, at))) continue;
        const int32_t behind = at + mark.length();
        const UChar32 letter = text.char32At(behind);
        if (!u_isalpha(letter)) continue;
        text.replace(at + ownLetter, 1, static_cast<UChar32>(u_toupper(text[at + ownLetter])));
        text.replace(behind, U16_LENGTH(letter), u_toupper(letter));
    }
}

}   // namespace

SuperString Conform(const SuperString& name, ConformOptions options) {
    icu::UnicodeString text = icu::UnicodeString::fromUTF8(name.Lowercased().Capitalized().UTF8());
    if (!options.keepLineEndsB) {
        text.findAndReplace(u"\r", u"");
        text.findAndReplace(u"\n", u"");
    }
    std::string trimmed;
    text.toUTF8String(trimmed);
    text = icu::UnicodeString::fromUTF8(SuperString(std::move(trimmed)).Trimmed().UTF8());

    if (options.lowerSmallWordsB)
        for (const char* wordZ : kConform_SmallWords) {
            const icu::UnicodeString word = icu::UnicodeString::fromUTF8(wordZ);
            text = ReplaceRow(text, word, icu::UnicodeString(word).toLower());
        }
    for (const ConformRow& row : kConform_Names)
        text = ReplaceRow(text, icu::UnicodeString::fromUTF8(row.fromZ), icu::UnicodeString::fromUTF8(row.toZ));
    // As written, case and all: what a row above made of a name stays ("Young MC").
    text.findAndReplace(u" mc", u" Mc").findAndReplace(u",mc", u",Mc");
    text = ReplaceRow(text, u"o'", u"O'");
    RaiseBehind(text, u"o'", 0);
    RaiseBehind(text, u" mc", 1);
    RaiseBehind(text, u",mc", 1);
    if (text == u"Beatles") text = u"The Beatles";
    std::string result;
    text.toUTF8String(result);
    return result;
}
