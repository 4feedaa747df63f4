#include "Library/CSongDatabase.h"

#include <unordered_set>

#include "Core/AlertHook.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Library/CSinger.h"
#include "Library/CT_SongChanges.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"
#include "Values/PreferenceTable.h"

namespace {

constexpr const char* kOwnerless = N_(
    "Turns out that playlist belonged to a singer. But I don't know which one.  So I'm going to just make it a regular "
    "playlist, sorry.  You can try to find that singer and drag the items back into their playlist.");

}   // namespace

void CSongDatabaseHost::StopWarning(BoolPref /*preference*/) {}

void CSongDatabaseHost::Notify(std::string_view words, std::string_view detail, std::string_view /*label*/,
                               std::function<void()> /*act*/) {
    Log(std::string(words) + ": " + std::string(detail));
}

CSongDatabase::CSongDatabase(CSongDatabaseHost& host)
    : i_host(host),
      i_songsRef(std::make_shared<CMutex_SongMap>()),
      i_singersRef(std::make_shared<CMutex_SingerMap>()),
      i_singerValuesRef(std::make_shared<CSingerMapValues>(i_singersRef)) {
    auto libraryP = std::make_unique<CPlayList>(*this, kSourceDB_LIBRARY, SuperString(), kPlaylistID_Library);
    i_libraryP = libraryP.get();
    (void)i_lists.Add(kPlaylistID_Library, std::move(libraryP));
    i_changesTimer = (new CT_SongChanges(i_self.Handle()))->GetForkID();
}

CSongDatabase::~CSongDatabase() {
    i_self.Empty();
    Log("Waiting for purges");   // whoever purges finds the database gone
    Log("reverting library");
    Log("disposing song database backend");
    Log("Clearing Song List");
    i_songsRef->Clear();
    Log("Closing Database");
    CT_Timer::SetInterval(i_changesTimer, 0.0);   // its next turn finds the database gone, and is its last
    Log("disposing singers (if any)");
    i_singersRef->Clear();
    Log("disposing playlists");
    i_lists.Clear();
}

// ---- Ids ----

std::int32_t CSongDatabase::GetNextID() {
    return i_nextID.With(
        [](std::int32_t& next) { return next == std::numeric_limits<std::int32_t>::max() ? next : next++; });
}

void CSongDatabase::NoteID(std::int32_t id) {
    i_nextID.With([&](std::int32_t& next) {
        if (id >= next && id < std::numeric_limits<std::int32_t>::max()) next = id + 1;
    });
}

// ---- Songs ----

CSong* CSongDatabase::CreateSong(SongID id) {
    if (Number(id) < 0) id = SongID{GetNextID()};
    if (Number(id) <= 0) {
        LogF("### Error a song with the id %d", static_cast<int>(Number(id)));
        return nullptr;
    }
    NoteID(Number(id));
    auto songP = std::make_unique<CSong>(this, id);
    CSong* const madeP = songP.get();
    if (i_songsRef->Add(id, std::move(songP))) {
        ++i_songsRevisionL;
        return madeP;
    }
    LogF("### Error a second song with the id %d", static_cast<int>(Number(id)));
    return nullptr;
}

CSong* CSongDatabase::GetSong(SongID id) const {
    if (!AssertWords(Number(id) != 0, "id != 0")) return nullptr;
    return i_songsRef->Find(id);
}

PLItemID CSongDatabase::AddSongToLibrary(CSong& song) {
    if (song.LibraryItem() != SDB_kNoItem) return song.LibraryItem();
    return Library().AddItem({song.GetSongID()});
}

std::vector<PLItemID> CSongDatabase::AddSongsToLibrary(std::span<const SongID> songs) {
    std::vector<PLNewItem> items;
    items.reserve(songs.size());
    for (const SongID id : songs)
        if (const CSong* const songP = GetSong(id); songP != nullptr && songP->LibraryItem() == SDB_kNoItem)
            items.push_back({id});
    return Library().AddItemVec(std::move(items));
}

void CSongDatabase::SongsEnteredLibrary(CPlayList& library, std::span<const PLItemID> items) {
    for (const PLItemID id : items)
        if (const auto row = library.Items()->Get(id); row && row->target.type == SDB_kPLItem_SONG)
            if (CSong* const songP = i_songsRef->Find(SongID{row->target.idL}); songP != nullptr) {
                if (songP->LibraryItem() == SDB_kNoItem)
                    songP->SetLibraryItem(id);
                else if (songP->LibraryItem() != id)
                    ++i_secondRowsL;
            }
}

void CSongDatabase::SongsLeaveLibrary(CPlayList& library, std::span<const PLItemID> items) {
    for (const PLItemID id : items)
        if (const auto row = library.Items()->Get(id); row && row->target.type == SDB_kPLItem_SONG)
            if (CSong* const songP = i_songsRef->Find(SongID{row->target.idL}); songP != nullptr) {
                if (songP->LibraryItem() == id)
                    songP->SetLibraryItem(SDB_kNoItem);
                else if (i_secondRowsL > 0)
                    --i_secondRowsL;
            }
}

void CSongDatabase::NoteFile(SongID song, const CMetaValue& file) const {
    if (CSongFollower* const followerP = Follower()) followerP->FileNamed(song, file);
}

void CSongDatabase::NoteMissing(SongID song, bool missingB) {
    if (missingB)
        i_missing.insert(Number(song));
    else
        i_missing.erase(Number(song));
}

std::vector<SongID> CSongDatabase::MissingSongs() const {
    std::vector<SongID> songs;
    for (const std::int32_t id : i_missing) songs.push_back(SongID{id});
    return songs;
}

void CSongDatabase::SetSettings(LibrarySettings settings) {
    i_settings.Set(std::make_shared<const LibrarySettings>(std::move(settings)));
}

void CSongDatabase::SetPlayingSong(SongID song) {
    (void)Assert(IsMainThread());
    const SongID before = i_songP.Exchange(song);
    CSongFollower* const followerP = Follower();
    if (before != song && followerP != nullptr) followerP->PlayingSongChanged(before);
}

// ---- Lists ----

CPlayList& CSongDatabase::AddPlaylist(SourceType type, const SuperString& name, PlaylistID id) {
    (void)Assert(IsMainThread());
    if (type == kSourceDB_LIBRARY) return Library();
    if (type == kSourceDB_SOURCE) id = kPlaylistID_Source;
    SingerID singer{SDB_kUninitializedID};
    const bool newB = Number(id) == SDB_kUninitializedID || Number(id) == SDB_kOrphanID;
    if (const CPlayList* const otherP = newB ? nullptr : i_lists.Find(id)) {
        if (type == kSourceDB_SOURCE) return *i_lists.Find(id);
        LogF("the playlist <%s> somehow has the same ID as the already existing playlist <%s>", name.CString(),
             otherP->Name().CString());
        if (IsSingerList(type)) {
            singer = OwnerOf(id);
            if (Number(singer) == SDB_kUninitializedID) {
                Log(kOwnerless);
                ShowAlert(Localize(kOwnerless), "");
                type = kSourceDB_PLAYLIST;
            }
        }
        id = PlaylistID{GetNextID()};
    } else if (newB) {
        id = PlaylistID{GetNextID()};
    } else {
        NoteID(Number(id));
    }
    const bool untitledB = type == kSourceDB_PLAYLIST && name.Empty();
    auto listP = std::make_unique<CPlayList>(*this, type, untitledB ? SuperString("Untitled Playlist") : name, id);
    CPlayList& list = *listP;
    if (Number(singer) != SDB_kUninitializedID) list.SetSinger(singer);
    (void)i_lists.Add(id, std::move(listP));
    if (type == kSourceDB_PLAYLIST) SetDirty(true, "add playlist");
    Tell([&](CListWatcher& watcher) { watcher.ListAdded(id); });
    return list;
}

CPlayList* CSongDatabase::GetPlayList(PlaylistID id) const { return i_lists.Find(id); }

CPlayList* CSongDatabase::GetPlayList(SourceType type) const {
    const auto lists = PlayLists();
    const auto it = std::ranges::find(lists, type, &CPlayList::Type);
    return it == lists.end() ? nullptr : *it;
}

std::vector<CPlayList*> CSongDatabase::PlayLists() const {
    std::vector<PlaylistID> ids = i_lists.Ids();
    std::ranges::sort(ids);
    std::vector<CPlayList*> lists;
    for (const PlaylistID id : ids) lists.push_back(i_lists.Find(id));
    return lists;
}

OSErr CSongDatabase::DeletePlaylist(PlaylistID id) {
    (void)Assert(IsMainThread());
    if (id == kPlaylistID_Library || id == kPlaylistID_Source) return paramErr;
    if (i_lists.Find(id) == nullptr) return fnfErr;
    Tell([&](CListWatcher& watcher) { watcher.ListRemoved(id); });
    const std::unique_ptr<CPlayList> goneP = i_lists.Take(id);
    SetDirty(true, "delete playlist");
    return noErr;
}

// ---- Commands ----

std::vector<SongID> CSongDatabase::SongsOf(const SDB_Selection& selection) const {
    Log("Converting Library selection to Song List");
    std::vector<SongID> songs;
    if (selection.List() == nullptr) return songs;
    std::unordered_set<std::int32_t> seen;
    for (const PLItemID id : selection.Items())
        if (const auto row = selection.List()->Items()->Get(id); row && row->target.type == SDB_kPLItem_SONG)
            if (seen.insert(row->target.idL).second) songs.push_back(SongID{row->target.idL});
    return songs;
}

OSErr CSongDatabase::RemoveFromLibrary(std::span<const SongID> songs) {
    (void)Assert(IsMainThread());
    for (const SongID id : songs)
        if (!i_host.MayDelete(id)) return userCanceledErr;
    std::unordered_set<std::int32_t> gone;
    for (const SongID id : songs) gone.insert(Number(id));
    const auto isGone = [&](const PLTarget& target) {
        return target.type == SDB_kPLItem_SONG && gone.contains(target.idL);
    };
    Log("Removing Songs from all playlists");
    const std::vector<CPlayList*> lists = PlayLists();
    OSErr err = noErr;
    for (CPlayList* const listP : lists)
        if (listP != i_libraryP) err = FirstOf(err, listP->RemoveItems(listP->Items()->FindAll(isGone)));
    Log("Removing Songs from Library");
    err = FirstOf(err, Library().RemoveItems(Library().Items()->FindAll(isGone)));
    Log("Deleting Songs from Database");
    for (const SongID id : songs) {
        (void)i_songsRef->Take(id);
        i_missing.erase(Number(id));
    }
    ++i_songsRevisionL;
    SetDirty(true, "songs removed");
    return err;
}

OSErr CSongDatabase::RemoveDuplicates(const SDB_Selection& selection) {
    return selection.List() == i_libraryP ? Library().RemoveItems(DuplicatesIn(selection)) : paramErr;
}

std::vector<PLItemID> CSongDatabase::DuplicatesIn(const SDB_Selection& selection) const {
    std::vector<PLItemID> items;
    if (selection.List() != i_libraryP || i_secondRowsL == 0) return items;
    for (const PLItemID item : selection.Items())
        if (const auto row = i_libraryP->Items()->Get(item); row && row->target.type == SDB_kPLItem_SONG)
            if (const CSong* const songP = i_songsRef->Find(SongID{row->target.idL});
                songP != nullptr && songP->LibraryItem() != SDB_kNoItem && songP->LibraryItem() != item)
                items.push_back(item);
    return items;
}
