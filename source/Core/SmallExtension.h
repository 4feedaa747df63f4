#pragma once
#include <filesystem>
#include <string>

/** The ending of a file's name in lower case, without its dot: "mp3" of "Song.MP3"; empty for a name without one.
    Letters outside of ASCII stay as they are. */
[[nodiscard]] std::string SmallExtension(const std::filesystem::path& name);
