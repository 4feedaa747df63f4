#include "Library/CSongDatabase.h"

#include "Library/ListTest.h"

class SongDatabase : public ListTest {
protected:
    /** Notes what is told. */
    struct Watcher final : CListWatcher {
        void ListAdded(PlaylistID list) override { i_said += "list+" + std::to_string(Number(list)) + " "; }
        void ListRemoved(PlaylistID list) override { i_said += "list-" + std::to_string(Number(list)) + " "; }
        void ItemsChanged(PlaylistID list, ListMessage message, std::span<const PLItemID> items) override {
            i_said += std::string(1, "+-*>"[static_cast<int>(message)]) + std::to_string(items.size()) + "@" +
                      std::to_string(Number(list)) + " ";
        }
        void SongsChanged(std::span<const SongID> songs, std::span<const MetaKey> keys) override {
            i_said += "songs" + std::to_string(songs.size()) + "x" + std::to_string(keys.size()) + " ";
        }
        std::string i_said;
    };
};

TEST_F(SongDatabase, OneCounterThatIsAboveEveryIdThatWasMet) {
    EXPECT_EQ(i_databaseP->PeekNextID(), 2);   // the library's list is 1
    EXPECT_EQ(Number(i_databaseP->CreateSong()->GetSongID()), 2);
    EXPECT_EQ(Number(i_databaseP->AddPlaylist(kSourceDB_PLAYLIST).ID()), 3);
    ASSERT_NE(i_databaseP->CreateSong(SongID{40}), nullptr);
    EXPECT_EQ(Number(i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "A", PlaylistID{60}).ID()), 60);
    EXPECT_EQ(Number(i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "B", PlaylistID{-1}).ID()), 61);
    i_databaseP->NoteID(5);
    EXPECT_EQ(i_databaseP->GetNextID(), 62);
    i_databaseP->NoteID(63);   // the very next one
    EXPECT_EQ(i_databaseP->GetNextID(), 64);
    EXPECT_EQ(i_databaseP->CreateSong(SongID{40}), nullptr);
    EXPECT_EQ(i_databaseP->CreateSong(SongID{0}), nullptr);
    EXPECT_EQ(i_databaseP->AddPlaylist(kSourceDB_SOURCE).ID(), kPlaylistID_Source);
    EXPECT_EQ(i_databaseP->AddPlaylist(kSourceDB_LIBRARY).ID(), kPlaylistID_Library);
    i_databaseP->NoteID(std::numeric_limits<std::int32_t>::max());   // from a damaged file: no way back to 1
    EXPECT_EQ(i_databaseP->GetNextID(), 65);
}

TEST_F(SongDatabase, TwoListsOfOneId) {
    i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "First", PlaylistID{9});
    CPlayList& second = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "Second", PlaylistID{9});
    EXPECT_EQ(Number(second.ID()), 10);
    EXPECT_TRUE(Logged("somehow has the same ID as the already existing playlist <First>"));
    EXPECT_FALSE(Logged("Turns out that playlist belonged to a singer"));
    EXPECT_EQ(i_databaseP->AddPlaylist(kSourceDB_SINGER_PL_HISTORY, "", PlaylistID{9}).Type(), kSourceDB_PLAYLIST);
    EXPECT_TRUE(Logged("Turns out that playlist belonged to a singer"));
    i_above.i_owner = SingerID{77};
    CPlayList& owned = i_databaseP->AddPlaylist(kSourceDB_SINGER_PL_HISTORY, "", PlaylistID{9});
    EXPECT_EQ(owned.Type(), kSourceDB_SINGER_PL_HISTORY);
    EXPECT_EQ(Number(owned.Singer()), 77);
    EXPECT_EQ(i_databaseP->GetPlayList(PlaylistID{9})->Name(), "First");
}

TEST_F(SongDatabase, TheFirstReasonIsLogged) {
    i_above.i_readyB = false;
    i_databaseP->SetDirty(true, "too early");
    EXPECT_FALSE(i_databaseP->IsDirty());
    i_above.i_readyB = true;
    i_databaseP->SetDirty(true, "one");
    i_databaseP->SetDirty(true, "two");
    OnWorker([&] { i_databaseP->SetDirty(false, "not dirty"); });
    ASSERT_TRUE(RunUntil([&] { return !i_databaseP->IsDirty(); }));
    i_databaseP->SetDirty(true, "three");
    EXPECT_EQ(i_above.i_dirty, "dirty clean dirty ");
    EXPECT_TRUE(Logged("** Database dirty because: one"));
    EXPECT_FALSE(Logged("because: two"));
    EXPECT_FALSE(Logged("too early"));
    EXPECT_TRUE(Logged("** Database dirty because: three"));
}

TEST_F(SongDatabase, ChangesAreHandedOnAQuarterOfASecondAfterTheFirst) {
    CSong& song = Song("A");
    CSong& other = Song("B");
    const PLItemID item = i_databaseP->AddSongToLibrary(song);
    EXPECT_EQ(i_databaseP->AddSongToLibrary(song), item);
    Advance(0.3);
    Watcher watcher;
    i_databaseP->AddWatcher(watcher);
    song.Meta().SetString("arts"_key, "X");
    Advance(0.2);
    other.Meta().SetString("name"_key, "Y");
    other.Meta().SetString("Spas"_key, "hidden");
    EXPECT_EQ(watcher.i_said, "");
    Advance(0.06);   // counted from the first
    EXPECT_EQ(watcher.i_said, "*1@1 songs2x2 ");
    Advance(1.0);
    EXPECT_EQ(watcher.i_said, "*1@1 songs2x2 ");
    OnWorker([&] {
        (void)i_databaseP->WithSong(song.GetSongID(), [](CSong& one) { one.Meta().SetString("albm"_key, "Z"); });
    });
    Advance(0.3);
    EXPECT_EQ(watcher.i_said, "*1@1 songs2x2 *1@1 songs1x1 ");
    other.Meta().SetValue("LUFS"_key,
                          CMetaValue(CMetaText::Of("-14")));   // what the table does not know is kept with the song
    Advance(0.3);
    EXPECT_EQ(watcher.i_said, "*1@1 songs2x2 *1@1 songs1x1 songs1x1 ");
    i_databaseP->RemoveWatcher(watcher);
}

TEST_F(SongDatabase, RemovingSongsTakesAllTheirRows) {
    std::vector<SongID> songs;
    for (const char* nameZ : {"A", "B", "C"}) songs.push_back(Song(nameZ).GetSongID());
    i_databaseP->AddSongsToLibrary(songs);
    CPlayList& list = UserList();
    for (const int n : {0, 1, 0, 2, 1}) list.AddItem({songs[static_cast<std::size_t>(n)]});
    const std::vector gone{songs[0], songs[1]};
    i_above.i_playing = songs[1];
    EXPECT_EQ(i_databaseP->RemoveFromLibrary(gone), userCanceledErr);
    EXPECT_EQ(list.Count(), 5U);
    i_above.i_playing = SongID{0};
    EXPECT_EQ(i_databaseP->RemoveFromLibrary(gone), noErr);
    EXPECT_EQ(Songs(list), std::vector{Number(songs[2])});
    EXPECT_EQ(Songs(i_databaseP->Library()), std::vector{Number(songs[2])});
    EXPECT_EQ(i_databaseP->GetSong(songs[0]), nullptr);
    EXPECT_EQ(i_databaseP->Songs()->Count(), 1U);
}

TEST_F(SongDatabase, DuplicatesLeaveTheLibrarysListAlone) {
    CSong& song = Song("A");
    const PLItemID first = i_databaseP->AddSongToLibrary(song);
    const PLItemID twice = i_databaseP->Library().AddItem({song.GetSongID()});
    CPlayList& list = UserList();
    list.AddItem({song.GetSongID()});
    SDB_Selection selection(&i_databaseP->Library());
    selection.SetItems({first, twice});
    EXPECT_EQ(i_databaseP->SongsOf(selection), std::vector{song.GetSongID()});
    selection.SetItems({twice});
    EXPECT_EQ(i_databaseP->RemoveDuplicates(selection), noErr);
    EXPECT_EQ(song.LibraryItem(), first);
    EXPECT_EQ(list.Count(), 1U);
    EXPECT_NE(i_databaseP->GetSong(song.GetSongID()), nullptr);
    selection = SDB_Selection(&list);
    selection.SetItems(list.Items()->UserOrder());
    EXPECT_EQ(i_databaseP->RemoveDuplicates(selection), paramErr);
}

TEST_F(SongDatabase, ABlockIsToldOnceAndAListSaysGoodbye) {
    Watcher watcher;
    i_databaseP->AddWatcher(watcher);
    CPlayList& list = UserList();
    const PlaylistID id = list.ID();
    list.AddItemVec(NewItems({1, 2, 3, 4}));
    EXPECT_EQ(list.RemoveItems(Items({1, 4})), noErr);
    list.MoveItems(Items({3}), 1);
    EXPECT_EQ(i_databaseP->DeletePlaylist(id), noErr);
    EXPECT_EQ(watcher.i_said, "list+2 +4@2 -2@2 >1@2 list-2 ");
    EXPECT_EQ(i_databaseP->DeletePlaylist(id), fnfErr);
    EXPECT_EQ(i_databaseP->DeletePlaylist(kPlaylistID_Library), paramErr);
    i_databaseP->RemoveWatcher(watcher);
}

TEST_F(SongDatabase, WorkersChangeListsByTheirIdsAndReadThemMeanwhile) {
    const PlaylistID id = UserList().ID();
    const auto itemsRef = i_databaseP->GetPlayList(id)->Items();
    std::atomic<int> runningL{3}, wrongL{0};
    const auto worker = [&](int first) {
        std::vector<PLItemID> mine;
        for (int n = 0; n < 40; ++n) {
            if (Failed(i_databaseP->AddToList(id, {SongID{first + n}}, n % 2 == 0 ? 1 : SDB_Index_END, mine))) ++wrongL;
            if (n % 3 == 0 && Failed(i_databaseP->RemoveFromList(id, mine))) ++wrongL;
            const auto page = itemsRef->Page(1, 1000);
            for (std::size_t row = 0; row < page.size(); ++row)
                if (page[row].row != row + 1 || page[row].target.type != SDB_kPLItem_SONG) ++wrongL;
        }
        --runningL;
    };
    for (int n = 0; n < 3; ++n)
        ASSERT_NE(CThreadManager::Fork(
                      ForkKind::kPreemptive,
                      [&worker, n](void*) {
                          worker(1000 * (n + 1));
                          return noErr;
                      },
                      {}, nullptr, "phone"),
                  0);
    ASSERT_TRUE(RunUntil([&] { return runningL == 0; }));
    EXPECT_EQ(wrongL, 0);
    EXPECT_EQ(itemsRef->Count(), 3U * (40 - 14));
    OnWorker([&] {
        std::vector<PLItemID> items;
        std::vector<PLRow> rows;
        EXPECT_EQ(i_databaseP->GetSortedList(id, rows), noErr);
        EXPECT_EQ(rows.size(), 3U * (40 - 14));
        EXPECT_EQ(i_databaseP->MoveInList(id, {rows.back().id}, 1), noErr);
        EXPECT_EQ(itemsRef->AtRow(1)->id, rows.back().id);
        EXPECT_EQ(i_databaseP->AddToList(PlaylistID{9999}, {SongID{1}}, 1, items), fnfErr);
    });
}
