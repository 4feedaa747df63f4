#include "Meta/TitleText.h"

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>

#include <algorithm>
#include <array>

namespace {

/** Most titles: printable ASCII, single blanks, none at the ends. These need no look by ICU. */
bool IsPlainTitle(std::string_view text) noexcept {
    char before = ' ';   // as if a blank stood in front: one at the start is not plain
    for (const char c : text) {
        if (c < ' ' || c > '~' || (c == ' ' && before == ' ')) return false;
        before = c;
    }
    return text.empty() || before != ' ';
}

}   // namespace

std::string NormalizedTitle(std::string_view text) {
    if (IsPlainTitle(text)) return std::string(text);
    constexpr std::size_t kMost = 0x3FFFFFFF;   // ICU counts in 32 bits
    const auto wide = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(std::min(text.size(), kMost))});
    icu::UnicodeString kept;
    bool blankB = false;
    for (int32_t at = 0; at < wide.length(); at = wide.moveIndex32(at, 1)) {
        const UChar32 c = wide.char32At(at);
        if (u_isUWhiteSpace(c)) {   // before the next test: a tab is a control character too
            blankB = true;
            continue;
        }
        if (u_charType(c) == U_CONTROL_CHAR) continue;
        if (blankB && !kept.isEmpty()) kept.append(u' ');
        blankB = false;
        kept.append(c);
    }
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* normalizerP = icu::Normalizer2::getNFCInstance(status);
    if (normalizerP != nullptr) {
        const icu::UnicodeString composed = normalizerP->normalize(kept, status);
        if (U_SUCCESS(status)) kept = composed;
    }
    std::string result;
    kept.toUTF8String(result);
    return result;
}

std::string ArticleAtEnd(std::string_view text) {
    constexpr std::array<std::string_view, 5> kArticles = {"The", "La", "Las", "El", "Los"};
    std::string result(text);
    for (const std::string_view article : kArticles) {
        const std::size_t sizeL = article.size();
        if (!result.starts_with(article) || result.size() <= sizeL || result[sizeL] != ' ') continue;
        result = result.substr(sizeL + 1).append(", ").append(article);
    }
    return result;
}
