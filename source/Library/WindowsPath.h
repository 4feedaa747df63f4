#pragma once
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

/** Paths as a library from Windows has them. */

/** "C:\Music\a.mp3", "\\server\share\a.mp3", "\Music\a.mp3": whole, and no place of this system. No look at the disc. */
[[nodiscard]] bool IsWindowsPath(std::string_view path);
/** With "/" between the parts, and without drive or server: "Music/a.mp3". */
[[nodiscard]] std::string WindowsTail(std::string_view path);

/** The file of this name below `root`, whatever the capitals of its folders and its own; where both are there, the exact
    one. A folder is read once as long as it does not change. Any thread; looks at the disc. */
[[nodiscard]] std::optional<std::filesystem::path> FindIgnoringCase(const std::filesystem::path& root,
                                                                    const std::filesystem::path& tail);
