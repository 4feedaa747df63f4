#pragma once
#include "Core/SuperString.h"
#include "Library/LibraryIDs.h"
#include "Library/LibrarySettings.h"
#include "Library/NameTemplate.h"

class CMeta;

/** The forms of a song's name. */
enum class SongNameFormat : short {
    kName = 0,
    kNameToo = 2,
    kTrackGraphics = 7,      // "5 Yesterday.cdg"
    kConformed = 31,         // by the preference "Conform song name template"
    kOnDisc = 128,           // of the song's main file
    kDefaultTemplate = 256   // by the template that the preference has from the start
};
/** Whether the parts are made fit for a file's name; the bit 32 of a format as a number. */
enum class SongNameUse : bool { kShown, kFile };

/** The name of a song by a template, fit for a file; without an extension. Any thread. */
[[nodiscard]] std::optional<BuiltName> ConformedName(const CMeta& song, std::string_view nameTemplate,
                                                     SongNameUse use = SongNameUse::kFile);

/** The name of a file in the cache folder: the song's id, a blank, its name, the extension of the place. */
[[nodiscard]] std::string CacheFileName(SongID song, const SuperString& name, SDB_SongFile type);
/** The song of such a file; 0 for other names. */
[[nodiscard]] SongID SongOfCacheFile(std::string_view name);
