#pragma once
#include <cstdint>

#include "Core/SuperString.h"

/** Numbers as people read them. Any thread. */

/** "512 bytes", "1.5 KB", "3 MB": steps of 1024, one decimal, none when it is 0. */
[[nodiscard]] SuperString SizeText(std::uint64_t bytesL);
/** "2 Days 3 Hours 20 Minutes 1 Second": units of 0 are left out; fractions of a second too; "0 Seconds" for nothing. A
    negative or impossible duration is nothing. */
[[nodiscard]] SuperString DurationText(double secondsT);
/** Minutes, then seconds with three decimals: CD frames are 1/75 s. 150 gives "00:2.000". */
[[nodiscard]] SuperString CDFrameText(std::int64_t framesL);
