#include "Storage/CSingerLoader.h"

#include <algorithm>
#include <array>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Library/CSinger.h"
#include "Storage/CDupeSinger.h"
#include "Storage/SingerAccounts.h"

namespace {

/** How surely a file is this list of a singer: his account names its id, else its file has the list's name, else it says
    to be of the kind. A copy that some program made of a file has its id too. 0 for a file that is another list. */
int SurenessOf(const PlaylistFile& file, SingerList which, PlaylistID wanted) {
    const SourceType type = SourceTypeOf(which);
    const bool idB = Number(wanted) > 0 && PlaylistIDOf(file.record.ID()) == wanted;
    const bool nameB = file.file.GetName() == std::string(GetSourceName(type)) + ".xml";
    const bool typeB = file.record.Type() == static_cast<std::int64_t>(type);
    return (idB ? 4 : 0) + (nameB ? 2 : 0) + (typeB ? 1 : 0);
}

/** The files of a singer's three lists, the surest first; they leave `lists`. */
std::array<std::optional<PlaylistFile>, kSingerLists.size()> TakeOwnLists(const CSinger& singer,
                                                                          std::vector<PlaylistFile>& lists) {
    std::array<std::optional<PlaylistFile>, kSingerLists.size()> own;
    for (;;) {
        int best = 0;
        std::size_t bestList = 0, bestFile = 0;
        for (std::size_t n = 0; n < own.size(); ++n)
            for (std::size_t at = 0; !own[n] && at < lists.size(); ++at) {
                const int sure = SurenessOf(lists[at], kSingerLists[n], singer.List(kSingerLists[n]));
                if (sure <= best) continue;
                best = sure;
                bestList = n;
                bestFile = at;
            }
        if (best == 0) return own;
        own[bestList] = std::move(lists[bestFile]);
        lists.erase(lists.begin() + static_cast<std::ptrdiff_t>(bestFile));
    }
}

}   // namespace

void CSingerLoader::LoadVenue(VenueFolder& venue) {
    CPlayList& list = i_database.AddPlaylist(kSourceDB_VENUE, SuperString(venue.folder.GetName()));
    i_files.venues[list.ID()] = venue.folder;
    // A folder under its singer's name before a copy of it; those with an account first: their ids and lists are theirs.
    std::stable_partition(venue.singers.begin(), venue.singers.end(), [](const SingerFolder& folder) {
        return folder.singer && NameOf(*folder.singer) == SuperString(folder.folder.GetName());
    });
    for (SingerFolder& folder : venue.singers)
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
    const std::string words = Localize(
        "“%1” somehow lost their account.  A new account has been created, and we will attempt to recover "
        "their playlists.",
        {folder.folder.GetName()});
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
        if (IsSingerList(type)) listP->SetSinger(singer.GetSingerID());
        i_files.lists[listP->ID()] = file.file;
        if (listP->ID() != PlaylistIDOf(file.record.ID())) i_changedB = true;
        return listP->ID();
    };
    const auto own = TakeOwnLists(singer, lists);
    for (std::size_t n = 0; n < own.size(); ++n) {
        const SingerList which = kSingerLists[n];
        if (own[n]) {
            singer.SetList(which, take(*own[n], SourceTypeOf(which)));
            continue;
        }
        Problem(std::string("the list ") + GetSourceName(SourceTypeOf(which)) + " of “" + singer.Name().UTF8() +
                "” is missing and is made again");
        const PlaylistID id = singer.List(which);
        const bool freeB = Number(id) > 0 && i_database.GetPlayList(id) == nullptr;
        (void)i_database.AddSingerList(singer, which, freeB ? id : kPlaylistID_New);
    }
    for (const PlaylistFile& file : lists) TakeLeftOver(singer, file, take);
}

/** A list more than a singer has, which another program left there perhaps: nothing shows it but as a playlist. */
void CSingerLoader::TakeLeftOver(CSinger& singer, const PlaylistFile& file, const TakeList& take) {
    const bool knownB = file.record.Type() == static_cast<std::int64_t>(kSourceDB_SINGER_PL_OTHER) ||
                        file.record.Type() == static_cast<std::int64_t>(kSourceDB_PLAYLIST);
    if (knownB) return (void)take(file, static_cast<SourceType>(file.record.Type()));
    const std::string name = singer.Name().UTF8() + ": " + file.file.GetPath().stem().string();
    PlaylistFile named = file;
    named.record.keys.Set("Name", SuperString(name));
    (void)take(named, kSourceDB_PLAYLIST);
    const std::string words =
        Localize("“%1” has one list too many.  It is the playlist “%2”.", {singer.Name().UTF8(), name});
    Problem(words);
    ShowAlert(words, file.file.GetPath().string());
}

void CSingerLoader::Problem(std::string words) {
    LogF("### %s", words.c_str());
    i_problems.push_back(std::move(words));
    i_changedB = true;
}
