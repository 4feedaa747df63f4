// What must be saved, and who hears of changed songs.
#include <algorithm>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Library/CSongDatabase.h"
#include "Library/CT_SongChanges.h"
#include "Threads/CallOnMain.h"
#include "Threads/ThreadInfo.h"

void CSongDatabase::SetDirty(bool dirtyB, std::string_view reason) {
    if (!IsMainThread()) {
        const auto set = [dirtyB, why = std::string(reason)](CSongDatabase& database) {
            database.SetDirty(dirtyB, why);
        };
        if (!PostToMain("MT_SetDirty", i_self.Handle(), set)) Log("### Error posting set dirty");
        return;
    }
    if (IsLoading() || !i_host.IsReady()) return;
    if (dirtyB && !reason.empty() && !i_reasonToldB) {
        i_reasonToldB = true;
        LogF("** Database dirty because: %.*s\n", static_cast<int>(std::min(reason.size(), std::size_t{1000})),
             reason.data());
    }
    if (!dirtyB) i_reasonToldB = false;
    if (std::exchange(i_dirtyB, dirtyB) != dirtyB) i_host.DirtyChanged(dirtyB);
}

void CSongDatabase::QueueChange(SongID song, MetaKey key) {
    if (i_loadingB.load(std::memory_order_relaxed)) return;
    const bool firstB = i_changes.With([&](std::vector<SongChange>& changes) {
        changes.push_back({song, key, IsInBatch()});
        return changes.size() == 1;
    });
    if (firstB) CT_Timer::SetInterval(i_changesTimer, CT_SongChanges::kDelayT);
}

void CSongDatabase::SetFacts(LibraryFacts facts) {
    if (facts == i_facts) return;
    i_facts = std::move(facts);
    SetDirty(true, "library settings");
}

void CSongDatabase::FlushChanges() {
    const std::vector<SongChange> changes = i_changes.Exchange({});
    if (i_singersChangedB.exchange(false)) SetDirty(true, "singer changed");
    if (changes.empty()) return;
    ++i_songsRevisionL;
    std::vector<SongID> songs;
    std::vector<MetaKey> keys;
    for (const SongChange& change : changes) {
        songs.push_back(change.song);
        keys.push_back(change.key);
    }
    const auto makeUnique = [](auto& all) {
        std::ranges::sort(all);
        all.erase(std::unique(all.begin(), all.end()), all.end());
    };
    makeUnique(songs);
    makeUnique(keys);
    UpdateItems(songs, keys);
    SetDirty(true, "songs changed");
    if (CSongFollower* const followerP = Follower()) followerP->SongsWereChanged(changes);
}

/** The rows of these songs, which are sorted and no more than once each. A song knows its row in the library's list:
    looking through a million rows would cost 16 ms a key press. */
std::vector<PLItemID> CSongDatabase::ItemsOf(const CPlayList& list, std::span<const SongID> songs) const {
    if (&list == i_libraryP && i_secondRowsL == 0 && songs.size() < list.Count()) {
        std::vector<PLItemID> items;
        for (const SongID id : songs)
            if (const CSong* const songP = i_songsRef->Find(id);
                songP != nullptr && songP->LibraryItem() != SDB_kNoItem)
                items.push_back(songP->LibraryItem());
        return items;
    }
    return list.Items()->RowsOfSongs(songs);
}

void CSongDatabase::UpdateItems(std::span<const SongID> songs, std::span<const MetaKey> keys) {
    (void)Assert(IsMainThread());
    std::vector<SongID> sorted(songs.begin(), songs.end());
    std::ranges::sort(sorted);
    for (CPlayList* const listP : PlayLists()) {
        const std::vector<PLItemID> items = sorted.empty() ? std::vector<PLItemID>() : ItemsOf(*listP, sorted);
        if (!items.empty()) listP->ItemsChanged(items, keys);
    }
    Tell([&](CListWatcher& watcher) { watcher.SongsChanged(songs, keys); });
}
