#pragma once
#include <filesystem>
#include <string>
#include <string_view>

/** True for the names in a library's folders that a load passes over: those that begin with "~", and files that were
    set aside. */
[[nodiscard]] bool IsPassedOver(std::string_view name);

/** A file name for a title, without an extension: nothing that a disc refuses or a load passes over, and short enough
    for an extension and a number behind it. The title itself stands in the file. */
[[nodiscard]] std::string LibraryFileName(std::string_view title);

/** The same for two files that may be one: names that differ by their capitals alone are one name on many discs. */
[[nodiscard]] std::string LibraryFileKey(const std::filesystem::path& file);
