#pragma once
#include "Platform/OSErr.h"

/** What is wrong with a zip or with one of its members. Callers that only pass statuses on use StatusOf. */
enum class ZipFault : unsigned char {
    kNone,
    kNotZip,
    kDirectory,
    kTruncated,
    kManyMembers,
    kSplit,
    kEncrypted,
    kMethod,
    kSizes,
    kOverlap,
    kLocalHeader,
    kData,
    kChecksum,
    kRead,
    kAborted,   // the reader's wish, and no fault of the file
};
/** For log lines and alerts, in lower case. */
[[nodiscard]] const char* TextOf(ZipFault fault) noexcept;
/** permErr for encrypted members, memFullErr for too many, paramErr for what is no zip or wants another program, ioErr
    for damage, abortErr for kAborted. Never eofErr, which readers take for the end of a good file. */
[[nodiscard]] OSErr StatusOf(ZipFault fault) noexcept;
