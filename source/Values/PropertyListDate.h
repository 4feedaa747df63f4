#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "Values/CCFValue.h"

/** The date of a property list, "2009-04-01T12:00:00Z"; nothing when the text is not of that form. */
[[nodiscard]] std::optional<CFDate> ParsePropertyListDate(std::string_view text);
/** Whole seconds. A date outside the years 1 to 9999, or none at all, becomes the nearest that has a form. */
[[nodiscard]] std::string PropertyListDate(CFDate date);
