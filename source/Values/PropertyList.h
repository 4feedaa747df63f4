#pragma once
#include <filesystem>
#include <span>
#include <string>

#include "Values/CCFValue.h"

/** Property lists that fit in memory: settings, playlists, store catalogues. See CCFXmlParser and CCFXmlWriter for the
    form, and for files with rows without number.
    Threads  any. */

inline constexpr std::size_t kPList_MaxBytes = std::size_t{512} << 20;

/** `value` is untouched on failure: eofErr for a text that is cut, paramErr for any other that does not parse. */
OSErr ReadPropertyList(std::span<const std::byte> bytes, CCFValue& value);
/** fnfErr: no file; paramErr: a folder or device; memFullErr: more than `maxBytes`; else as above, or the disk's. */
OSErr ReadPropertyListFile(const std::filesystem::path& file, CCFValue& value, std::size_t maxBytes = kPList_MaxBytes);
/** The whole text. paramErr when the value lies too deep. */
OSErr WritePropertyList(const CCFValue& value, std::string& text);
