#include "Library/COrphanSearch.h"

#include "Core/CLog.h"
#include "Library/AddFilesToLibrary.h"
#include "Library/CSongDatabase.h"

namespace {

CPlayList& OrphanList(CSongDatabase& database) {
    for (CPlayList* const listP : database.PlayLists())
        if (listP->Type() == kSourceDB_PLAYLIST && listP->Name() == SuperString(COrphanSearch::kList_Name))
            return *listP;
    return database.AddPlaylist(kSourceDB_PLAYLIST, COrphanSearch::kList_Name);
}

}   // namespace

OSErr COrphanSearch::Start(CSongDatabase& database, const std::filesystem::path& musicFolder) {
    Log("Finding Orphans");
    const std::int32_t firstNew = database.PeekNextID();
    return AddFilesToLibrary(database, {musicFolder}, [&database, firstNew](const AddedFiles& added) {
        std::vector<PLNewItem> rows;
        for (const SongID song : added.songs)
            if (Number(song) >= firstNew) rows.push_back({song});
        LogF("Orphans found: %zu", rows.size());
        if (rows.empty()) return;
        Question question;
        question.title = COrphanSearch::kList_Name;
        question.text = std::to_string(rows.size()) +
                        " songs lay in your music folder and in no playlist.  They are in "
                        "the Library again, and in the playlist “Orphaned Songs”.";
        question.buttons = {"OK"};
        (void)OrphanList(database).AddItemVec(std::move(rows));
        database.SetDirty(true, "scanned for orphans");
        database.Host().AskLater(question, [](const Answer&) {});
    });
}
