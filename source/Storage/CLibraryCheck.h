#pragma once
#include <map>
#include <string>
#include <vector>

#include "Library/CSongFileSearch.h"
#include "Storage/CSongStore.h"
#include "Storage/LibraryImage.h"
#include "Storage/SongRecord.h"

/** What a check found. */
struct LibraryFindings {
    std::size_t songsL = 0, playlistsL = 0, singersL = 0;
    std::vector<std::string> problems;   // one a line, for people
    OSErr err = noErr;                   // the folder itself could not be read
};

/** Looks at the files of a library from the outside: reads each of them by itself, and compares what one says with what
    the others do. Makes no database, changes nothing.
    Threads  any; blocks as long as the disc does.
    Errors   none: what cannot be read is a problem. */
class CLibraryCheck {
public:
    enum class SongFiles : bool { kLeaveOut, kLookFor };
    CLibraryCheck(const LibraryPlaces& places, SongFiles files)
        : i_places(places), i_files(files), i_modder(places.musicFolder) {}
    [[nodiscard]] LibraryFindings Run();

private:
    struct Song {
        std::uint32_t idL = 0;
        bool listedB = false;   // it has a row in the library's list
    };
    void CheckSongs();
    void CheckSongFiles(const SongRecord& record);
    void CheckSongsMeta();
    void CheckIndex(const LibraryIndex& index);
    void CheckSingers(const LibraryImage& image);
    void CheckSinger(const SingerRecord& singer);
    void CheckList(const PlaylistRecord& list);
    void CheckRows(const PlaylistRecord& list, const std::string& name);
    void CheckCounter();
    void FindSetAside(const CFileRef& folder);
    [[nodiscard]] Song* Find(std::uint32_t id);
    void Note(std::uint32_t id, const std::string& what);
    void Problem(std::string words) { i_found.problems.push_back(std::move(words)); }

    const LibraryPlaces& i_places;
    const SongFiles i_files;
    const CSong_PathModder i_modder;   // what has moved is not missing
    LibraryFindings i_found;
    bool i_songsReadB = false;   // whole: what is not there is nowhere
    std::vector<Song> i_songs;   // by id
    std::uint32_t i_nextIDL = 0;
    std::uint32_t i_highestL = 0;   // of the ids at or above the counter
    std::string i_highest;          // whose it is
    std::size_t i_aboveL = 0;
    std::map<std::uint32_t, std::string> i_lists, i_singers;   // names by id
    std::size_t i_newSingersL = 0;                             // who have no id yet
};
