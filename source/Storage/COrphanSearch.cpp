#include "Storage/COrphanSearch.h"

#include <algorithm>

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Library/CSongDatabase.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "SongFiles/MakeSongOfFiles.h"
#include "Storage/CLostSongs.h"

namespace {

CPlayList& OrphanList(CSongDatabase& database) {
    for (CPlayList* const listP : database.PlayLists())
        if (listP->Type() == kSourceDB_PLAYLIST && listP->Name() == SuperString(COrphanSearch::kList_Name))
            return *listP;
    return database.AddPlaylist(kSourceDB_PLAYLIST, COrphanSearch::kList_Name);
}

}   // namespace

OSErr COrphanSearch::Start(CSongDatabase& database, const std::filesystem::path& musicFolder,
                           std::shared_ptr<CLostSongs> lostRef) {
    Log("Finding Orphans");
    const std::int32_t firstNew = database.PeekNextID();
    const auto end = [&database, firstNew](const AddedFiles& added) {
        std::vector<PLNewItem> rows;
        for (const SongID song : added.songs)
            if (Number(song) >= firstNew) rows.push_back({song});
        const std::size_t backL = added.newL - std::min(added.newL, rows.size());
        LogF("Orphans found: %zu, lost songs: %zu", rows.size(), backL);
        if (added.newL == 0) return;
        std::string words;
        if (!rows.empty())
            words = Localize(
                "%1 songs lay in your music folder and in no playlist.  They are in the Library again, and in "
                "the playlist “Orphaned Songs”.",
                {std::to_string(rows.size())});
        if (backL != 0)
            words += (rows.empty() ? "" : "  ") +
                     Localize(
                         "%1 songs that were lost were found in your music folder.  They are in their playlists "
                         "again.",
                         {std::to_string(backL)});
        if (!rows.empty()) (void)OrphanList(database).AddItemVec(std::move(rows));
        database.SetDirty(true, "scanned for orphans");
        database.Host().Notify(kList_Name, words);
    };
    const auto make = [&database, lostRef](const SongFileSet& set) {
        CSong* const songP = lostRef ? lostRef->Make(set) : nullptr;
        return songP != nullptr ? songP : MakeSongOfFiles(database, set, DateAdded::kFile);
    };
    return AddFilesToLibrary(database, {musicFolder}, end, make);
}
