#pragma once
#include <cstdint>
#include <optional>
#include <string_view>

#include "Core/SuperString.h"

/** "1:23.450", with hours "1:02:03.000"; a negative one has a minus in front. */
[[nodiscard]] SuperString TimeCodeText(std::int64_t milliseconds);
/** "83.45", "1:23", "1:23.45", "1:02:03.5": minutes and seconds behind a colon are below 60. Nothing for another text. */
[[nodiscard]] std::optional<std::int64_t> ParseTimeCode(std::string_view text);
/** To the nearest; there and back again is the same 300th. */
[[nodiscard]] std::int64_t MillisecondsOf300ths(std::int64_t units300);
[[nodiscard]] std::int64_t In300ths(std::int64_t milliseconds);
/** "3:05", with hours "1:02:03"; of 300ths of a second, rounded down. */
[[nodiscard]] SuperString DurationOf300ths(std::int64_t duration300);
