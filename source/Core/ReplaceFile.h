#pragma once
#include <filesystem>
#include <functional>
#include <span>

#include "Platform/OSErr.h"

/** Puts `bytes` in the place of a file; afterwards the file holds all of them, or is as it was. Any thread. */
using FileReplacer = std::function<OSErr(const std::filesystem::path& file, std::span<const std::byte> bytes)>;

/** The plain way: a file beside the old one, written and synced, renamed over it, the folder synced. Missing folders
    are made; a link is followed, so that settings kept elsewhere stay there. dskFulErr on a full disk. */
OSErr ReplaceFile(const std::filesystem::path& file, std::span<const std::byte> bytes);
