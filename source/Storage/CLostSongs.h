#pragma once
#include <map>
#include <string>
#include <vector>

#include "Library/LibrarySettings.h"
#include "SongFiles/SongFileSets.h"
#include "Storage/CKeptSongs.h"

class CSong;
class CSongDatabase;
class CSongStore;

/** Songs that a damaged file lost, as a kept copy of the library has them: files of the music folder that are one of them
    become that song again, under its id, so that the rows of lists find it.
    Threads  main.
    Owner    the search for orphans. */
class CLostSongs {
public:
    /** Those of the copy that the database has not. */
    CLostSongs(const CSongDatabase& database, std::shared_ptr<CSongStore> storeRef, const CKeptSongs& kept);
    /** The song that these files are, made in the database, with these files: by their places, else by a file's name,
        else by title and artist, where these are the only ones. Null when the files are no lost song's. */
    CSong* Make(const SongFileSet& set);

private:
    using Index = std::multimap<std::string, std::size_t>;
    [[nodiscard]] const std::string* Take(const SongFileSet& set);
    [[nodiscard]] const std::string* TakeOnly(const Index& index, const std::string& key);

    const std::shared_ptr<CSongStore> i_storeRef;
    std::vector<std::string> i_records;   // encoded; empty: it is back
    Index i_byPath, i_byFileName, i_byTitle;
};
