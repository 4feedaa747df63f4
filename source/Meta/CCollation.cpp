#include "Meta/CCollation.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/ustring.h>

#include <algorithm>
#include <vector>

#include "Core/CLog.h"

struct CCollation::Rules {
    std::unique_ptr<const icu::Collator> collator;   // null when ICU has none; asking a finished one is safe anywhere
};

namespace {

constexpr std::size_t kMost = 0x3FFFFFFF;   // ICU counts in 32 bits

icu::StringPiece Piece(std::string_view text) {
    return {text.data(), static_cast<int32_t>(std::min(text.size(), kMost))};
}

}   // namespace

CCollation::CCollation(const std::string& locale) : i_rules(std::make_unique<Rules>()) {
    icu::Locale wanted = locale.empty() ? icu::Locale::getDefault() : icu::Locale(locale.c_str());
    // The "C" locale would order by code; a list of singers wants a people's order even there.
    if (std::string_view(wanted.getVariant()) == "POSIX") wanted = icu::Locale::getRoot();
    UErrorCode status = U_ZERO_ERROR;
    std::unique_ptr<icu::Collator> collator(icu::Collator::createInstance(wanted, status));
    if (U_SUCCESS(status)) {
        collator->setAttribute(UCOL_NUMERIC_COLLATION, UCOL_ON, status);
        collator->setStrength(icu::Collator::SECONDARY);
    }
    if (U_FAILURE(status)) {
        LogF("### Error making the collation: %s", u_errorName(status));
        return;
    }
    i_rules->collator = std::move(collator);
}

CCollation::~CCollation() = default;

const CCollation& CCollation::User() {
    static const auto* const s_userP = new CCollation;   // kept to the end of the process
    return *s_userP;
}

int CCollation::Compare(std::string_view a, std::string_view b) const {
    if (a == b) return 0;
    if (i_rules->collator == nullptr) return a < b ? -1 : 1;
    UErrorCode status = U_ZERO_ERROR;
    return i_rules->collator->compareUTF8(Piece(a), Piece(b), status);
}

std::string CCollation::SortKey(std::string_view text) const {
    std::string key;
    std::u16string wide;
    AppendSortKey(text, key, wide);
    return key;
}

void CCollation::AppendSortKey(std::string_view text, std::string& keys, std::u16string& wide) const {
    if (i_rules->collator == nullptr) {
        // 0 ends a key; texts in which it stands are equal to those that have 1 there.
        for (const char c : text) keys += c == '\0' ? '\1' : c;
        return;
    }
    text = text.substr(0, kMost);
    if (wide.size() < text.size()) wide.resize(text.size());   // never more units than bytes
    UErrorCode status = U_ZERO_ERROR;
    int32_t unitsL = 0;
    u_strFromUTF8WithSub(wide.data(), static_cast<int32_t>(wide.size()), &unitsL, text.data(),
                         static_cast<int32_t>(text.size()), 0xFFFD, nullptr, &status);
    const std::size_t beginL = keys.size();
    keys.resize(beginL + text.size() * 2 + 16);   // enough for most texts
    for (int tries = 0; tries < 2; ++tries) {
        const auto roomL = static_cast<int32_t>(std::min(keys.size() - beginL, kMost));
        const int32_t neededL = i_rules->collator->getSortKey(
            wide.data(), unitsL, reinterpret_cast<std::uint8_t*>(keys.data() + beginL), roomL);
        const bool fitsB = neededL <= roomL;
        keys.resize(beginL + static_cast<std::size_t>(std::max(neededL, 0)));
        if (fitsB) break;
    }
    if (keys.size() > beginL && keys.back() == '\0') keys.pop_back();   // its end is no part of the order
}
