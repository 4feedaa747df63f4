#include "Core/SuperString.h"

#include <unicode/coll.h>
#include <unicode/locid.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/ucnv.h>
#include <unicode/unistr.h>
#include <array>
#include <atomic>

#include "Core/CLog.h"

namespace {

constexpr int kEncoding_NotSet = -1;
std::atomic<int> s_defaultEncoding{kEncoding_NotSet};

icu::UnicodeString Wide(std::string_view text) {
    // ICU counts in 32 bits; a text of 2 GB and more is no name, and is cut rather than wrapped.
    constexpr std::size_t kMost = 0x7FFFFFFF;
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(std::min(text.size(), kMost))});
}

SuperString Narrow(const icu::UnicodeString& wide) {
    std::string text;
    wide.toUTF8String(text);
    return text;
}

const char* ConverterName(TextEncoding encoding) {
    switch (encoding) {
        case TextEncoding::kUTF8:
            return "UTF-8";
        case TextEncoding::kUTF16BE:
            return "UTF-16BE";
        case TextEncoding::kUTF16LE:
            return "UTF-16LE";
        case TextEncoding::kUTF16:
            return "UTF-16";
        case TextEncoding::kMacRoman:
            return "macintosh";
        case TextEncoding::kWindows1252:
            return "windows-1252";
        case TextEncoding::kISOLatin1:
            return "ISO-8859-1";
    }
    return "UTF-8";
}

/** A converter that stops at the first thing it cannot carry over; null when the machine's ICU lacks the table. */
struct Converter {
    explicit Converter(TextEncoding encoding) {
        UErrorCode status = U_ZERO_ERROR;
        i_converterP.reset(ucnv_open(ConverterName(encoding), &status));
        if (i_converterP == nullptr) return;
        ucnv_setToUCallBack(i_converterP.get(), UCNV_TO_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFromUCallBack(i_converterP.get(), UCNV_FROM_U_CALLBACK_STOP, nullptr, nullptr, nullptr, &status);
        ucnv_setFallback(i_converterP.get(), false);   // a likeness of a character is not the character
        if (U_FAILURE(status)) i_converterP.reset();
    }
    std::unique_ptr<UConverter, decltype(&ucnv_close)> i_converterP{nullptr, &ucnv_close};
};

/** The collator of the user's language. Made once; comparing with it is safe from any thread. */
const icu::Collator* UserCollator(icu::Collator::ECollationStrength strength) {
    const auto make = [](icu::Collator::ECollationStrength wanted) -> const icu::Collator* {
        icu::Locale locale = icu::Locale::getDefault();
        // The "C" locale would order by code; a list of singers wants a people's order even there.
        if (std::string_view(locale.getVariant()) == "POSIX") locale = icu::Locale::getRoot();
        UErrorCode status = U_ZERO_ERROR;
        icu::Collator* collatorP = icu::Collator::createInstance(locale, status);
        if (U_FAILURE(status)) {
            LogF("### Error making the collator: %s", u_errorName(status));
            delete collatorP;
            return nullptr;
        }
        collatorP->setStrength(wanted);
        return collatorP;
    };
    static const icu::Collator* const s_fullP = make(icu::Collator::TERTIARY);   // kept to the end of the process
    static const icu::Collator* const s_noCaseP = make(icu::Collator::SECONDARY);
    return strength == icu::Collator::TERTIARY ? s_fullP : s_noCaseP;
}

int CollateWith(icu::Collator::ECollationStrength strength, const SuperString& a, const SuperString& b) {
    const icu::Collator* collatorP = UserCollator(strength);
    if (collatorP == nullptr) return Wide(a).compare(Wide(b));
    UErrorCode status = U_ZERO_ERROR;
    return collatorP->compare(Wide(a), Wide(b), status);
}

const icu::Normalizer2* Normalizer(NormalForm form) {
    UErrorCode status = U_ZERO_ERROR;
    switch (form) {
        case NormalForm::kC:
            return icu::Normalizer2::getNFCInstance(status);
        case NormalForm::kD:
            return icu::Normalizer2::getNFDInstance(status);
        case NormalForm::kKC:
            return icu::Normalizer2::getNFKCInstance(status);
        case NormalForm::kKD:
            return icu::Normalizer2::getNFKDInstance(status);
    }
    return nullptr;
}

}   // namespace

SuperString::SuperString(std::string text) {
    if (!text.empty()) i_textRef = std::make_shared<const std::string>(std::move(text));
}
SuperString::SuperString(std::string_view text) : SuperString(std::string(text)) {}
SuperString::SuperString(const char* textZ) : SuperString(std::string(textZ == nullptr ? "" : textZ)) {}

const std::string& SuperString::UTF8() const noexcept {
    static const std::string s_empty;
    return i_textRef == nullptr ? s_empty : *i_textRef;
}

std::size_t SuperString::Length() const { return static_cast<std::size_t>(Wide(*this).countChar32()); }

SuperString SuperString::Lowercased() const { return Narrow(Wide(*this).toLower(icu::Locale::getRoot())); }
SuperString SuperString::Uppercased() const { return Narrow(Wide(*this).toUpper(icu::Locale::getRoot())); }

SuperString SuperString::Capitalized() const {
    const icu::UnicodeString wide = Wide(*this);
    icu::UnicodeString result;
    bool inWordB = false;
    for (int32_t at = 0; at < wide.length(); at = wide.moveIndex32(at, 1)) {
        const UChar32 c = wide.char32At(at);
        const bool letterB = u_isalpha(c) != 0;
        result.append(letterB && !inWordB ? u_totitle(c) : c);
        const bool joinsB = c == '\'' || c == 0x2019 || (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0;
        inWordB = letterB || (inWordB && joinsB);
    }
    return Narrow(result);
}

SuperString SuperString::Trimmed() const {
    const icu::UnicodeString wide = Wide(*this);
    int32_t begin = 0;
    int32_t end = wide.length();
    while (begin < end && u_isUWhiteSpace(wide.char32At(begin))) begin = wide.moveIndex32(begin, 1);
    while (end > begin && u_isUWhiteSpace(wide.char32At(wide.moveIndex32(end, -1)))) end = wide.moveIndex32(end, -1);
    return begin == 0 && end == wide.length() ? *this : Narrow(wide.tempSubStringBetween(begin, end));
}

SuperString SuperString::Normalized(NormalForm form) const {
    const icu::Normalizer2* normalizerP = Normalizer(form);
    if (normalizerP == nullptr) return *this;
    UErrorCode status = U_ZERO_ERROR;
    const icu::UnicodeString result = normalizerP->normalize(Wide(*this), status);
    return U_FAILURE(status) ? *this : Narrow(result);
}

SuperString SuperString::WithoutDiacritics() const {
    const icu::UnicodeString apart = Wide(Normalized(NormalForm::kD));
    icu::UnicodeString bare;
    for (int32_t at = 0; at < apart.length(); at = apart.moveIndex32(at, 1)) {
        const UChar32 c = apart.char32At(at);
        if (u_charType(c) != U_NON_SPACING_MARK) bare.append(c);
    }
    return Narrow(bare).Normalized(NormalForm::kC);
}

SuperString SuperString::Replaced(std::string_view from, std::string_view to) const {
    const std::string& text = UTF8();
    if (from.empty() || text.find(from) == std::string::npos) return *this;
    std::string result;
    std::size_t at = 0;
    for (std::size_t found = 0; (found = text.find(from, at)) != std::string::npos; at = found + from.size())
        result.append(text, at, found - at).append(to);
    return result.append(text, at);
}

int SuperString::Collate(const SuperString& other) const { return CollateWith(icu::Collator::TERTIARY, *this, other); }
int SuperString::CollateNoCase(const SuperString& other) const {
    return CollateWith(icu::Collator::SECONDARY, *this, other);
}
bool SuperString::EqualNoCase(const SuperString& other) const {
    return Wide(*this).caseCompare(Wide(other), U_FOLD_CASE_DEFAULT) == 0;
}

OSErr SuperString::FromBytes(std::span<const std::byte> bytes, TextEncoding encoding, SuperString& text) {
    const Converter converter(encoding);
    if (converter.i_converterP == nullptr || bytes.size() > 0x3FFFFFFF) return paramErr;
    const auto* bytesP = reinterpret_cast<const char*>(bytes.data());
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString wide(bytesP, static_cast<int32_t>(bytes.size()), converter.i_converterP.get(), status);
    // Without bytes ICU answers a bogus string, which is the empty one here.
    if (U_FAILURE(status) || (wide.isBogus() && !bytes.empty())) return paramErr;
    text = bytes.empty() ? SuperString() : Narrow(wide);
    return noErr;
}

OSErr SuperString::ToBytes(TextEncoding encoding, std::vector<std::byte>& bytes) const {
    const Converter converter(encoding);
    if (converter.i_converterP == nullptr || UTF8().size() > 0x3FFFFFFF) return paramErr;
    icu::UnicodeString wide = Wide(*this);
    if (encoding == TextEncoding::kUTF16) wide.insert(0, static_cast<char16_t>(0xFEFF));
    UErrorCode status = U_ZERO_ERROR;
    std::vector<std::byte> result(static_cast<std::size_t>(wide.length()) * 4 + 16);
    auto* resultP = reinterpret_cast<char*>(result.data());
    char* const endP = resultP + result.size();
    const char16_t* fromP = wide.getBuffer();
    const char16_t* const fromEndP = fromP + wide.length();
    auto* writeP = resultP;
    const Converter plain(encoding == TextEncoding::kUTF16 ? TextEncoding::kUTF16BE : encoding);
    ucnv_fromUnicode(plain.i_converterP.get(), &writeP, endP, &fromP, fromEndP, nullptr, true, &status);
    if (U_FAILURE(status)) return paramErr;
    result.resize(static_cast<std::size_t>(writeP - resultP));
    bytes = std::move(result);
    return noErr;
}

void SuperString::SetDefaultEncoding(TextEncoding encoding) noexcept {
    s_defaultEncoding.store(static_cast<int>(encoding), std::memory_order_relaxed);
}

TextEncoding SuperString::DefaultEncoding() {
    const int encoding = s_defaultEncoding.load(std::memory_order_relaxed);
    if (encoding != kEncoding_NotSet) return static_cast<TextEncoding>(encoding);
    Log("$$$ Default encoding not set!\n");
    return TextEncoding::kUTF8;
}

SuperString SuperString::FromOSType(OSType code) {
    std::array<std::byte, 4> bytes{};
    for (std::size_t n = 0; n < 4; ++n) bytes[n] = static_cast<std::byte>(code >> (24 - 8 * n) & 0xFF);
    SuperString text;
    // MacRoman has a character for each of the 256 bytes.
    if (Failed(FromBytes(bytes, TextEncoding::kMacRoman, text))) return {};
    return text;
}

OSErr SuperString::ToOSType(OSType& code) const {
    std::vector<std::byte> bytes;
    if (const OSErr err = ToBytes(TextEncoding::kMacRoman, bytes); Failed(err)) return err;
    if (bytes.size() != 4) return paramErr;
    code = 0;
    for (const std::byte byte : bytes) code = code << 8 | std::to_integer<OSType>(byte);
    return noErr;
}
