#pragma once
#include <filesystem>
#include <functional>
#include <span>

#include "Platform/OSErr.h"

/** Puts `bytes` in the place of a file; afterwards the file holds all of them, or is as it was. Any thread. */
using FileReplacer = std::function<OSErr(const std::filesystem::path& file, std::span<const std::byte> bytes)>;

/** The safe save of a whole file; missing folders are made. dskFulErr on a full disk. */
OSErr ReplaceFile(const std::filesystem::path& file, std::span<const std::byte> bytes);
