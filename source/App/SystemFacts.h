#pragma once
#include <string>
#include <vector>

/** The lines about the machine that a log begins with: system, media library, clock speed, processor, memory, network
    address, locale. A fact that the machine does not tell reads "unknown". */
[[nodiscard]] std::vector<std::string> SystemFactLines();

/** The version of the media library as the tests of the start-up compare it: 0x0MmP for M.m.P of FFmpeg's libavcodec. */
[[nodiscard]] unsigned MediaLibraryVersion();
[[nodiscard]] std::string MediaLibraryVersionText();
/** The lowest that the readers were written for. */
inline constexpr unsigned kMediaLibrary_Minimum = 59U << 16;
