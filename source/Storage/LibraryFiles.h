#pragma once
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "Files/CFileRef.h"
#include "Library/SingerRecord.h"
#include "Storage/PlaylistRecord.h"

/** The property-list files of the library, read and written as plain records. Keys of a file that this program does
    not know is kept and written again.
    Threads  any; blocks as long as the disc does.
    Errors   of reading: fnfErr, eofErr for a text that is cut, paramErr for one that is no such file; the record is
             untouched then, and the file must not be written over (SetAsideDamaged). Writing goes by a safe save.
             Nothing is shown. */

/** "Library.xml". */
struct LibraryIndex {
    static constexpr std::int64_t kMajor = 1, kMinor = 7;

    std::int64_t majorL = kMajor, minorL = kMinor;
    std::uint32_t nextID = 1;
    SuperString currentVenue, applicationVersion;
    std::vector<SuperString> searchPaths;
    std::vector<PlaylistRecord> playlists;   // the library's own whole, the others by name
    CCFDictionary otherKeys;
    friend bool operator==(const LibraryIndex&, const LibraryIndex&) = default;
};
/** Takes the old root key too. */
OSErr ReadLibraryIndex(const CFileRef& file, LibraryIndex& index);
OSErr WriteLibraryIndex(const CFileRef& file, const LibraryIndex& index);
/** The same; `writeFirst` writes the first member of "Playlists", the library's own list with its rows. */
OSErr WriteLibraryIndex(const CFileRef& file, const LibraryIndex& index,
                        const std::function<void(CCFXmlWriter&)>& writeFirst);

/** A file of "Playlists", or "Tonight.xml", "Favorites.xml", "History.xml". Its items are there even if none stand in
    it. */
OSErr ReadPlaylistFile(const CFileRef& file, PlaylistRecord& playlist);
OSErr WritePlaylistFile(const CFileRef& file, const PlaylistRecord& playlist);

/** "Singer.xml", or a member of "Singers.xml". */
OSErr ReadSingerFile(const CFileRef& file, SingerRecord& singer);
OSErr WriteSingerFile(const CFileRef& file, const SingerRecord& singer);
OSErr ReadSingersFile(const CFileRef& file, std::vector<SingerRecord>& singers);
OSErr WriteSingersFile(const CFileRef& file, const std::vector<SingerRecord>& singers);
/** All singers of a venue: those that have a folder as their folder tells, then the others of "Singers.xml". */
[[nodiscard]] std::vector<SingerRecord> MergeSingers(std::vector<SingerRecord> folders,
                                                     std::vector<SingerRecord> together);

/** Where a file of songs keeps them. */
enum class SongTable : bool {
    kTracks,   // "Songs.xml": under the key "Tracks"
    kMeta      // "Songs Meta.xml": the root itself
};
using SongDictionaries = std::map<std::uint32_t, CCFDictionary>;
/** An entry that is no song's id, or no dictionary, is logged and left out. */
OSErr ReadSongTable(const CFileRef& file, SongTable form, SongDictionaries& songs);
OSErr WriteSongTable(const CFileRef& file, SongTable form, const SongDictionaries& songs);

/** Gives a file that could not be read whole another name beside it, "Library (damaged 2024-02-29 12.00.01).xml", so
    that no save takes its place. `file` names it there afterwards. Nothing is ever replaced by it. */
OSErr SetAsideDamaged(CFileRef& file);
