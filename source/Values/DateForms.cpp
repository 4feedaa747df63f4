#include "Values/DateForms.h"

#include <unicode/gregocal.h>
#include <unicode/parsepos.h>
#include <unicode/smpdtfmt.h>
#include <unicode/timezone.h>
#include <array>
#include <cmath>

#include "Platform/CClock.h"

namespace {

constexpr std::array<const char16_t*, kDateForm_Count> kDateForms = {
    u"EEE, d MMM y H:mm:ss z",
    u"MMMM d, y H:mm:ss a z",
    u"eeee, MMMM d, y - h:mm a z",
    u"y-M-dd H:mm:ss.SSS Z",
    u"M/dd/y z",
    u"M/dd/y",
    u"y/M/dd",
};

/** A formatter for one call: they are not to be shared by threads, and dates are few. Null when ICU has no data. */
std::unique_ptr<icu::SimpleDateFormat> Formatter(const char16_t* patternZ, std::string_view zone) {
    UErrorCode status = U_ZERO_ERROR;
    auto formatP = std::make_unique<icu::SimpleDateFormat>(icu::UnicodeString(patternZ), icu::Locale::getUS(), status);
    if (U_FAILURE(status)) return nullptr;
    if (!zone.empty())
        formatP->adoptTimeZone(icu::TimeZone::createTimeZone(
            icu::UnicodeString::fromUTF8({zone.data(), static_cast<int32_t>(zone.size())})));
    formatP->setLenient(false);
    return formatP;
}

OSErr ParseWith(const char16_t* patternZ, std::string_view text, CFDate& date, std::string_view zone) {
    constexpr std::size_t kMost = 200;   // no date is longer
    const auto formatP = Formatter(patternZ, zone);
    if (formatP == nullptr || text.empty() || text.size() > kMost) return paramErr;
    const auto wide = icu::UnicodeString::fromUTF8({text.data(), static_cast<int32_t>(text.size())});
    icu::ParsePosition position(0);
    const UDate millisecondsT = formatP->parse(wide, position);
    if (position.getErrorIndex() >= 0 || position.getIndex() != wide.length()) return paramErr;
    date.absoluteT = millisecondsT / 1000 - kEpoch2001T;
    return noErr;
}

}   // namespace

SuperString PrintDate(CFDate date, DateForm form, std::string_view zone) {
    const auto formatP = Formatter(kDateForms[static_cast<std::size_t>(form)], zone);
    if (formatP == nullptr || !std::isfinite(date.absoluteT)) return {};
    icu::UnicodeString wide;
    formatP->format(std::round((date.absoluteT + kEpoch2001T) * 1000), wide);
    std::string text;
    wide.toUTF8String(text);
    return text;
}

OSErr ParseDate(std::string_view text, DateForm form, CFDate& date, std::string_view zone) {
    if (form != DateForm::kLong) return ParseWith(kDateForms[static_cast<std::size_t>(form)], text, date, zone);
    // Its hour runs to 23 and says all; ICU would take the half of the day for a second word on the hour.
    for (const char16_t* patternZ : {u"MMMM d, y H:mm:ss 'AM' z", u"MMMM d, y H:mm:ss 'PM' z"})
        if (!Failed(ParseWith(patternZ, text, date, zone))) return noErr;
    return paramErr;
}

OSErr ReadDate(std::string_view text, CFDate& date, std::string_view zone) {
    for (int form = 0; form < kDateForm_Count; ++form)
        if (!Failed(ParseDate(text, static_cast<DateForm>(form), date, zone))) return noErr;
    return paramErr;
}
