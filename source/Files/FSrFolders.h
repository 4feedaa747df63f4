#pragma once
#include <span>

#include "Files/CFileRef.h"

/** Places of the system that FSrFindFolder knows. */
enum class PlatformFolder : short {
    kPreferences = 1,   // "Preferences": the user's configuration folder
    kCaches = 2,        // "Caches"
    kTemporary = 3,     // "Local/Temp"
    kTrash = 4,         // " Trash": of the volume of `near`
    kVolumeTemp = 5,    // " Temp": temporary items on the volume of `near`
};

/** Finds the folder, makes it when missing, and sees that it can be written. `near` names a volume by anything on it;
    empty: that of the home. The temporary one falls back on a folder among the caches. Logs "FSFindFolder: " with the
    kind.
    Threads  any. */
OSErr FSrFindFolder(PlatformFolder kind, const CFileRef& near, CFileRef& folder);

/** "Vopla Temp" on the volume of `near`, made when missing: in the temporary items folder when that is on this volume,
    else hidden beside `near`, since only a rename within a volume is one step. It belongs to this user alone. */
OSErr FSrFindVolumeTemp(const CFileRef& near, CFileRef& folder);
/** True for a path in any of these places; no look at the disc. */
[[nodiscard]] bool IsInTemp(const CFileRef::Path& path);
/** Removes `folder` if it is such a place beside a file and nothing is in it. */
void RemoveHiddenTemp(const CFileRef& folder);

/** Creates and removes a file "write_test" in the folder. A folder that cannot be written is told by an alert. */
OSErr FSrWriteTest(const CFileRef& folder);

enum class PurgePlace : unsigned char { kTemp, kCache };
/** Removes a file or folder from such a place, with the line "## Temp Purging File: path". */
OSErr FSrPurge(const CFileRef& item, PurgePlace place);

/** Removes what earlier runs left in "Vopla Temp" and, in each of `folders`, beside the files. A file that a living
    process holds is passed over. For the start of a program. Reads only the folders themselves, not those below. */
void PurgeTemporary(std::span<const CFileRef> folders);
