#pragma once
#include <filesystem>
#include <string>

/** The address of a file or folder for programs that take addresses: what is no plain sign is written by its number,
    byte by byte, so that names of any kind come through. Any thread.
    Source   RFC 8089, RFC 3986. */
[[nodiscard]] std::string FileURL(const std::filesystem::path& path);
