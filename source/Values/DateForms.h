#pragma once
#include <string_view>

#include "Values/CCFValue.h"

/** The forms in which dates are printed and read, by their index. */
enum class DateForm {
    kMail,        // "EEE, d MMM y H:mm:ss z"
    kLong,        // "MMMM d, y H:mm:ss a z"
    kWeekday,     // "eeee, MMMM d, y - h:mm a z"
    kSortable,    // "y-M-dd H:mm:ss.SSS Z"
    kDayZone,     // "M/dd/y z"
    kDay,         // "M/dd/y"
    kYearFirst,   // "y/M/dd"
};
inline constexpr int kDateForm_Count = 7;

/** In English, in the zone of that name ("Europe/Berlin"); an empty one is the machine's. Any thread. Empty when the
    date has no form. */
[[nodiscard]] SuperString PrintDate(CFDate date, DateForm form, std::string_view zone = {});
/** The whole text must be of that form; a text without a zone is in `zone`. paramErr when it is not. */
OSErr ParseDate(std::string_view text, DateForm form, CFDate& date, std::string_view zone = {});
/** The first of the forms that fits. */
OSErr ReadDate(std::string_view text, CFDate& date, std::string_view zone = {});
