#pragma once
#include <optional>
#include <vector>

#include "Storage/LibraryFiles.h"

/** A file of the library that was there and could not be read. */
struct UnreadFile {
    CFileRef file;
    OSErr err = noErr;
};

/** A list, and the file it stands in. */
struct PlaylistFile {
    CFileRef file;
    PlaylistRecord record;
};

/** A folder of a venue: a singer and his lists. */
struct SingerFolder {
    CFileRef folder;
    std::optional<SingerRecord> singer;   // nothing: "Singer.xml" is missing, or could not be read
    std::vector<PlaylistFile> lists;
};

struct VenueFolder {
    CFileRef folder;
    std::vector<SingerRecord> together;   // of "Singers.xml"
    std::vector<SingerFolder> singers;
};

/** The property lists of a library as its files hold them: what a walk found, and what a load makes objects of. */
struct LibraryImage {
    std::optional<LibraryIndex> index;   // nothing: no "Library.xml" that could be read
    std::vector<PlaylistFile> lists;
    std::vector<VenueFolder> venues;
    std::vector<UnreadFile> unread;
    bool storesB = false;   // there is a folder of music stores
};

// The names on the disc.
inline constexpr const char* kStr_LIBRARY_DOT_XML = "Library.xml";
inline constexpr const char* kStr_SINGERS_DOT_XML = "Singers.xml";
inline constexpr const char* kStr_SINGER_DOT_XML = "Singer.xml";
inline constexpr const char* kStr_PLAYLISTS_FOLDER = "Playlists";
inline constexpr const char* kStr_VENUES_FOLDER = "Venues";
inline constexpr const char* kStr_STORES_FOLDER = "Music Stores";
