#pragma once
#include <functional>
#include <map>
#include <string>

#include "Storage/CPlaylistLoader.h"

/** Which file holds what: lists, the folders of singers, the folders of venues. */
struct LibraryFileMap {
    std::map<PlaylistID, CFileRef> lists;
    std::map<SingerID, CFileRef> singers;
    std::map<PlaylistID, CFileRef> venues;
};

/** Makes the singers of the venues, and their lists. A singer's own folder wins over "Singers.xml"; one whose
    "Singer.xml" is missing gets a new account, a list that is missing is made again, one too many becomes a user playlist; the second of two singers with one
    id is left out, and his files stay as they are. Within a CLoadingScope.
    Threads  main. */
class CSingerLoader {
public:
    CSingerLoader(CSongDatabase& database, CPlaylistLoader& lists, LibraryFileMap& files,
                  std::vector<std::string>& problems)
        : i_database(database), i_lists(lists), i_files(files), i_problems(problems) {}
    void LoadVenue(VenueFolder& venue);
    /** Something is not as the files have it: it must be saved. */
    [[nodiscard]] bool Changed() const noexcept { return i_changedB; }

private:
    void LoadFolder(CPlayList& venue, SingerFolder& folder, std::vector<SingerRecord>& together);
    void LoadSinger(CPlayList& venue, const SingerRecord& record, const CFileRef& folder,
                    std::vector<PlaylistFile> lists);
    void LoadLists(CSinger& singer, std::vector<PlaylistFile> lists);
    using TakeList = std::function<PlaylistID(const PlaylistFile& file, SourceType type)>;
    void TakeLeftOver(CSinger& singer, const PlaylistFile& file, const TakeList& take);
    [[nodiscard]] SingerRecord NewAccount(const SingerFolder& folder);
    void Problem(std::string words);

    CSongDatabase& i_database;
    CPlaylistLoader& i_lists;
    LibraryFileMap& i_files;
    std::vector<std::string>& i_problems;
    bool i_changedB = false;
};
