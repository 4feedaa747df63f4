#pragma once
#include <atomic>
#include <span>
#include <string>

#include "Files/CFileRef.h"

/** A file and the name of the member that shall hold it. */
struct PackedFile {
    CFileRef file;
    std::string member;
};

/** Opens the sound and decodes its first second. Worker. paramErr, or what the decoder says, for a broken file. */
OSErr VerifyAudio(const CFileRef& file);

/** Reads the zip back, whole: it holds these members and no other, byte for byte the files, with right sizes and check
    sums. Worker; `abortB` may be set by any thread. ioErr for any difference, abortErr. */
OSErr VerifyZip(const CFileRef& zip, std::span<const PackedFile> files, const std::atomic<bool>& abortB);
