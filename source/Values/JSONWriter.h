#pragma once
#include <string>
#include <string_view>

#include "Values/CCFValue.h"

/** Appends a value as JSON (RFC 8259): numbers that are whole without a decimal point, dates as "/Date(ms+0000)/", data
    in base64, the text "null" as the bare word, a number that is none as null. Any thread. */
void ForEach_CopyToJSON(const CCFValue& value, std::string& json);
[[nodiscard]] std::string CopyToJSON(const CCFValue& value);

/** Appends `text` escaped, between double quotes. UTF-8 passes; bytes that are none become U+FFFD. For texts of our
    own, where "null" is a text like any other. */
void AppendJSONString(std::string_view text, std::string& json);
[[nodiscard]] std::string JSONString(std::string_view text);

/** "/Date(1234567890123+0000)/"; the milliseconds are UTC, whatever zone follows them, and the zone may be missing. Any
    other text is read by the date formats of the locale "en_US". paramErr when it is no date. */
OSErr ReadJSONDate(std::string_view text, CFDate& date);
