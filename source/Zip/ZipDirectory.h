#pragma once
#include <vector>

#include "Files/CByteSource.h"
#include "Zip/CZipMember.h"

/** The members that the directory at the end of the zip tells of, with every count and place checked; the end record
    may have a comment, and up to 64 KB of other bytes behind it, and bytes in front of the zip move all places.
    `members` is untouched with a fault. */
ZipFault ReadZipDirectory(CByteSource& source, std::vector<CZipMember>& members);
/** The members by the headers in front of them, for a zip whose directory is missing or wrong. One that the end of the
    file cuts is among them. kNotZip when there is not one. */
ZipFault ReadZipHeaders(CByteSource& source, std::vector<CZipMember>& members);
