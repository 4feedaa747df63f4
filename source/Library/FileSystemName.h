#pragma once
#include <string>
#include <string_view>

/** `text` as one part of a file's name that every file system takes, those of sticks and of other systems too: no
    separators, no control characters, none of their forbidden signs, no blank or dot at its ends. "_" for nothing. */
[[nodiscard]] std::string FileSystemName(std::string_view text);

/** The front of `text` in at most `bytesL` bytes, cut between characters. */
[[nodiscard]] std::string_view FrontOf(std::string_view text, std::size_t bytesL);

inline constexpr std::size_t kFileName_MaxBytes = 255;
