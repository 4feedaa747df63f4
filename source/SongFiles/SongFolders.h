#pragma once
#include "Files/CFileRef.h"
#include "Library/LibrarySettings.h"

/** Where the files that the program owns lie. */
enum class SongRoot : unsigned char {
    kMusic,
    kCache,
    kPocket   // songs to be carried away; beside the music folder
};

/** Where the music lies as long as no preference says otherwise: "Vopla Music" in the library's root. One that stands
    beside the root, where it once was, stays in use. */
[[nodiscard]] CFileRef::Path DefaultMusicFolder(const CFileRef::Path& root);

/** The root's folder; made when missing. */
OSErr GetSongRoot(const LibrarySettings& settings, SongRoot root, CFileRef& folder);

/** Where a song's owned files belong: the root, the artist's folder in it, the album's in that, made when missing. A
    song without an artist goes to "Unknown Artist", one without an album into its artist's folder.
    Threads  a worker.
    Errors   that of the folder which cannot be had, logged; dupFNErr when a file has its name. */
OSErr GetFolderForSong(const LibrarySettings& settings, SongRoot root, std::string_view artist, std::string_view album,
                       CFileRef& folder);
