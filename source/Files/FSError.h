#pragma once
#include <filesystem>

#include "Platform/OSErr.h"

/** The file manager's status for an `errno`; one that has none of the same meaning stays as it is, positive. */
OSErr MapErrno(int errnoL) noexcept;

/** The same for the failed call `callZ`, with the line "### FS Error <call>: reason: \n Path1: <path>" in the log.
    0 is noErr and logs nothing. */
OSErr FSError(int errnoL, const char* callZ, const std::filesystem::path& path1);
