#include "Library/CSingerLoader.h"

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Library/CDupeSinger.h"
#include "Library/SingerAccounts.h"

namespace {

bool IsListOf(const PlaylistFile& file, SingerList which, PlaylistID wanted) {
    const SourceType type = SourceTypeOf(which);
    return file.record.Type() == static_cast<std::int64_t>(type) ||
           (Number(wanted) > 0 && PlaylistIDOf(file.record.ID()) == wanted) ||
           file.file.GetName() == std::string(GetSourceName(type)) + ".xml";
}

}   // namespace

void CSingerLoader::LoadVenue(VenueFolder& venue) {
    CPlayList& list = i_database.AddPlaylist(kSourceDB_VENUE, SuperString(venue.folder.GetName()));
    i_files.venues[list.ID()] = venue.folder;
    for (SingerFolder& folder : venue.singers)   // those with an account first: their ids and lists are theirs
        if (folder.singer) LoadFolder(list, folder, venue.together);
    for (SingerFolder& folder : venue.singers)
        if (!folder.singer) LoadFolder(list, folder, venue.together);
    for (const SingerRecord& record : venue.together) LoadSinger(list, record, CFileRef(), {});
    std::vector<PLNewItem> rows;   // by their ids, whatever their folders are called
    for (const CSinger* const singerP : i_database.Singers())
        if (singerP->Venue() == list.ID()) rows.push_back({singerP->GetSingerID()});
    (void)list.AddItemVec(std::move(rows));
}

void CSingerLoader::LoadFolder(CPlayList& venue, SingerFolder& folder, std::vector<SingerRecord>& together) {
    const auto it = AccountOf(folder, together);
    if (!folder.singer && it == together.end() && folder.lists.empty()) return;   // an empty folder
    SingerRecord record;
    if (folder.singer)
        record = *folder.singer;
    else if (it != together.end())
        record = *it;
    else
        record = NewAccount(folder);
    if (it != together.end()) together.erase(it);
    LoadSinger(venue, record, folder.folder, std::move(folder.lists));
}

SingerRecord CSingerLoader::NewAccount(const SingerFolder& folder) {
    SingerRecord record;
    record.meta.Set("SNGR", SuperString(folder.folder.GetName()));
    const std::string words = "“" + folder.folder.GetName() +
                              "” somehow lost their account.  A new account has been created, and we will attempt to "
                              "recover their playlists.";
    Problem(words);
    ShowAlert(words, "");
    return record;
}

void CSingerLoader::LoadSinger(CPlayList& venue, const SingerRecord& record, const CFileRef& folder,
                               std::vector<PlaylistFile> lists) {
    const PlaylistID id = PlaylistIDOf(record.ID());   // one counter for all: one rule for what is an id
    CSinger* const singerP = i_database.AddSinger(venue.ID(), SingerID{Number(id)});
    if (singerP == nullptr) {
        CSinger* const firstP = i_database.GetSinger(SingerID{Number(id)});
        const SuperString first = firstP == nullptr ? SuperString() : firstP->Name();
        CDupeSinger::Report(i_database.Host(), SingerID{Number(id)}, first, NameOf(record), folder);
        i_problems.push_back("two singers with the id " + std::to_string(Number(id)) + ": " + first.UTF8() + ", " +
                             NameOf(record).UTF8());
        return;
    }
    singerP->Load(record);
    if (folder.IsEmpty())
        i_changedB = true;   // gets a folder of his own
    else
        i_files.singers[singerP->GetSingerID()] = folder;
    if (Number(id) < 0) i_changedB = true;
    LoadLists(*singerP, std::move(lists));
}

void CSingerLoader::LoadLists(CSinger& singer, std::vector<PlaylistFile> lists) {
    const auto take = [&](const PlaylistFile& file, SourceType type) {
        CPlayList* const listP = i_lists.Load(file.record, type);
        if (listP == nullptr) return kPlaylistID_New;
        listP->SetSinger(singer.GetSingerID());
        i_files.lists[listP->ID()] = file.file;
        if (listP->ID() != PlaylistIDOf(file.record.ID())) i_changedB = true;
        return listP->ID();
    };
    for (const SingerList which : kSingerLists) {
        const auto it = std::ranges::find_if(
            lists, [&](const PlaylistFile& file) { return IsListOf(file, which, singer.List(which)); });
        if (it != lists.end()) {
            singer.SetList(which, take(*it, SourceTypeOf(which)));
            lists.erase(it);
            continue;
        }
        Problem(std::string("the list ") + GetSourceName(SourceTypeOf(which)) + " of “" + singer.Name().UTF8() +
                "” is missing and is made again");
        const PlaylistID id = singer.List(which);
        const bool freeB = Number(id) > 0 && i_database.GetPlayList(id) == nullptr;
        (void)i_database.AddSingerList(singer, which, freeB ? id : kPlaylistID_New);
    }
    for (const PlaylistFile& file : lists) (void)take(file, kSourceDB_SINGER_PL_OTHER);
}

void CSingerLoader::Problem(std::string words) {
    LogF("### %s", words.c_str());
    i_problems.push_back(std::move(words));
    i_changedB = true;
}
