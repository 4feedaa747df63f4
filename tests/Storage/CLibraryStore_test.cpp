#include "Storage/LibraryStoreTest.h"

namespace {

TEST_F(CLibraryStoreTest, ALibraryComesBackAsItWas) {
    ASSERT_EQ(i_storeP->LoadLibrary(), noErr);
    EXPECT_TRUE(i_storeP->Report().emptyB);
    MakeLibrary();
    Save();
    EXPECT_FALSE(i_databaseP->IsDirty());
    const Loaded other(i_places);
    ASSERT_EQ(other.err, noErr);
    EXPECT_EQ(Show(other.database), Show(*i_databaseP));
    EXPECT_EQ(other.storeP->Report().problems, std::vector<std::string>());
    EXPECT_EQ(other.storeP->Report().dirtyReason, "");
    EXPECT_EQ(other.database.Facts(), i_databaseP->Facts());
    EXPECT_GE(other.database.PeekNextID(), i_databaseP->PeekNextID());
}

TEST_F(CLibraryStoreTest, AnotherProgramSeesTheSameLibrary) {
    MakeLibrary();
    Save();
    EXPECT_EQ(Witness("saved " + (i_root / "lib").string()),
              "version 1 7 Zum Löwen ['/music', '/musik']\n"
              "list Library.xml 1 1 Library {} 0\n"
              "row [('ID', 1), ('Item Type', 1), ('Song ID', 2)]\n"
              "row [('ID', 2), ('Item Type', 1), ('Song ID', 3)]\n"
              "row [('ID', 3), ('Item Type', 1), ('Song ID', 4)]\n"
              "list Playlists/A_B: _c._.xml 5 3 A/B: *c. {'name': 120} 1\n"
              "row [('ID', 2), ('Item Type', 1), ('Song ID', 4)]\n"
              "row [('ID', 1), ('Item Type', 1), ('PICH', -2), ('Play', True), ('Song ID', 3)]\n"
              "row [('ID', 3), ('Item Type', 1), ('Song ID', 3)]\n"
              "list Playlists/a_b: _C._ 2.xml 6 3 a/b: *C. {} 0\n"
              "list Venues/Zum Löwen/Ann/Favorites.xml 10 8 Favorites {} 0\n"
              "list Venues/Zum Löwen/Ann/History.xml 11 9 History {} 0\n"
              "singer Venues/Zum Löwen/Ann/Singer.xml Ann 8 9 10 11 secret {'2': {'tsng': 4}}\n"
              "list Venues/Zum Löwen/Ann/Tonight.xml 9 7 Tonight {} 0\n"
              "row [('ID', 1), ('Item Type', 1), ('Song ID', 4)]\n");
}

TEST_F(CLibraryStoreTest, WhatIsWrongWithIdsAndAccountsIsMended) {
    (void)Witness("trouble " + (i_root / "lib").string());
    ASSERT_EQ(i_storeP->LoadLibrary(), noErr);
    const CSongDatabase& database = *i_databaseP;
    EXPECT_EQ(database.Songs()->Count(), 3U);
    CMeta& three = database.GetSong(SongID{3})->Meta();
    EXPECT_EQ(three.GetString("SUBg"_key), SuperString("words"));
    EXPECT_EQ(three.GetInteger("drtn"_key), 300);
    EXPECT_EQ(three.GetSongFile(SongFileKey(SDB_SongFile_AUDIO)).ref.GetPath(), "/music/3.mp3");
    EXPECT_EQ(Songs(database.Library()), (std::vector<std::int32_t>{2, 3, 4}));   // 99 is gone, 3 and 4 had no row
    EXPECT_GT(database.PeekNextID(), 5000);
    const auto named = [&](const char* nameZ) {
        const auto lists = database.PlayLists();
        const auto it = std::ranges::find(lists, SuperString(nameZ), &CPlayList::Name);
        return it == lists.end() ? nullptr : *it;
    };
    EXPECT_EQ(named("Hidden"), nullptr);
    ASSERT_NE(named("Singer"), nullptr);
    EXPECT_EQ(named("One")->ID(), PlaylistID{40});
    EXPECT_EQ(Songs(*named("One")), (std::vector<std::int32_t>{2, 3}));
    EXPECT_EQ(named("One")->OtherKeys().Size(), 1U);
    EXPECT_GT(Number(named("Two")->ID()), 5000);
    EXPECT_EQ(named("High")->ID(), PlaylistID{5000});
    EXPECT_EQ(named("Mine")->Type(), kSourceDB_PLAYLIST);
    ASSERT_EQ(database.Singers().size(), 3U);   // Ann, Bob, and a new account for Lost; not her twin
    CSinger& ann = *database.GetSinger(SingerID{77});
    EXPECT_EQ(ann.Name(), SuperString("Ann"));
    EXPECT_EQ(Songs(*database.GetPlayList(ann.List(SingerList::kTonight))), (std::vector<std::int32_t>{3, 4}));
    EXPECT_EQ(ann.List(SingerList::kHistory), PlaylistID{53});   // made again
    CSinger& lost = *database.GetSingerByName("Lost");
    EXPECT_EQ(lost.List(SingerList::kHistory), PlaylistID{61});
    ASSERT_EQ(s_alerts.size(), 1U);
    EXPECT_TRUE(s_alerts[0].starts_with("“Lost” somehow lost their account.")) << s_alerts[0];
    EXPECT_TRUE(Logged("Duplicate Singer: 77, Ann, Twin"));
    EXPECT_EQ(i_storeP->Report().dirtyReason, "new db version and updated playlists");

    const std::string twin = Bytes(Lib("Venues/Club/Twin/Singer.xml"));
    Save();
    EXPECT_EQ(Bytes(Lib("Venues/Club/Twin/Singer.xml")), twin);
    const Loaded other(i_places);
    EXPECT_EQ(Show(other.database), Show(database));
    EXPECT_EQ(other.storeP->Report().dirtyReason, "");
    EXPECT_EQ(other.storeP->Report().problems.size(), 1U);   // the twin
    EXPECT_TRUE(other.database.Facts().otherKeys.Has("Further key"));
}

/** Copies that a synchronising disc makes of files in use: they have the ids of the true ones, and come before them. */
TEST_F(CLibraryStoreTest, CopiesOfListsDoNotTakeTheirPlaces) {
    MakeLibrary();
    Save();
    const fs::path ann = Lib("Venues/Zum Löwen/Ann");
    const auto copy = [](const fs::path& from, const fs::path& to, const char* fromZ, const char* toZ) {
        std::string text = Bytes(from);
        if (const std::size_t at = text.find(fromZ); at != std::string::npos) text.replace(at, std::strlen(fromZ), toZ);
        std::ofstream(to, std::ios::binary) << text;
    };
    copy(ann / "Tonight.xml", ann / "Tonight (conflict copy).xml", "<integer>4</integer>", "<integer>2</integer>");
    copy(ann / "History.xml", ann / "Another.xml", "<integer>11</integer>", "<integer>700</integer>");   // of its kind
    fs::copy(ann, Lib("Venues/Zum Löwen/An Ann"), fs::copy_options::recursive);
    copy(Lib("Playlists/A_B: _c._.xml"), Lib("Playlists/ (conflict copy).xml"), "A/B: *c.", "stale");
    s_alerts.clear();
    const Loaded loaded(i_places);
    const CSinger& singer = *loaded.database.GetSinger(SingerID{8});
    EXPECT_EQ(loaded.storeP->Files().singers.at(SingerID{8}).GetName(), "Ann");
    EXPECT_EQ(Songs(*loaded.database.GetPlayList(singer.List(SingerList::kTonight))), std::vector<std::int32_t>{4});
    EXPECT_EQ(singer.List(SingerList::kHistory), PlaylistID{11});
    EXPECT_EQ(loaded.database.GetPlayList(PlaylistID{5})->Name(), "A/B: *c.");
    std::set<std::string> names;
    for (const CPlayList* const listP : loaded.database.PlayLists())
        if (listP->Type() == kSourceDB_PLAYLIST) names.insert(listP->Name().UTF8());
    EXPECT_TRUE(names.contains("Ann: Tonight (conflict copy)") && names.contains("Ann: Another"));
    EXPECT_EQ(s_alerts.size(), 2U);
}

TEST_F(CLibraryStoreTest, OnlyWhatHasChangedIsWritten) {
    MakeLibrary();
    Save();
    i_above.i_rename = [&](const CPlayList& renamed, const SuperString& name) {
        return i_storeP->RenameListFile(renamed, name);
    };
    using Names = std::set<std::string>;
    CPlayList& list = *i_databaseP->GetPlayList(PlaylistID{5});
    CSinger& ann = *i_databaseP->GetSinger(SingerID{8});
    const std::string annFolder = "Venues/Zum Löwen/Ann/";
    EXPECT_EQ(WrittenBy([] {}), Names());
    EXPECT_EQ(WrittenBy([&] { list.MoveItems(Items({3}), 1); }), (Names{"Playlists/A_B: _c._.xml"}));
    EXPECT_EQ(WrittenBy([&] { ann.Meta().SetString("Bio "_key, "sings"); }), (Names{annFolder + "Singer.xml"}));
    EXPECT_EQ(WrittenBy([&] { Add(*i_databaseP->GetPlayList(ann.List(SingerList::kHistory)), 2); }),
              (Names{annFolder + "History.xml"}));
    EXPECT_EQ(WrittenBy([&] { i_databaseP->GetSong(SongID{2})->Meta().SetString("arts"_key, "Other"); }),
              (Names{"Songs.vlb"}));
    EXPECT_EQ(WrittenBy([&] { (void)NewSong("new"); }), (Names{"Songs.vlb", "Library.xml"}));
    EXPECT_EQ(WrittenBy([&] { EXPECT_EQ(list.Rename("~Singer"), noErr); }),
              (Names{"Library.xml", "Playlists/_~Singer.xml"}));
    EXPECT_EQ(WrittenBy([&] { EXPECT_EQ(i_databaseP->DeletePlaylist(list.ID()), noErr); }), (Names{"Library.xml"}));
    EXPECT_FALSE(fs::exists(Lib("Playlists/_~Singer.xml")));
    const Loaded other(i_places);
    EXPECT_EQ(Show(other.database), Show(*i_databaseP));
}

TEST_F(CLibraryStoreTest, ASaveRunsBesideEditsSortsAndReaders) {
    ASSERT_EQ(i_storeP->LoadLibrary(), noErr);
    std::vector<SongID> songs;
    for (int n = 0; n < 400; ++n) songs.push_back(Song("Song " + std::to_string(n)).GetSongID());
    (void)i_databaseP->AddSongsToLibrary(songs);
    CPlayList& list = UserList();
    for (const SongID song : songs) Add(list, Number(song));
    std::atomic<bool> stopB{false};
    std::vector<std::jthread> readers;
    for (int n = 0; n < 2; ++n)
        readers.emplace_back(
            [&stopB, songs, this, listRef = list.Items()] {   // a copy: songs that go are asked for too
                TagThread(NextThreadIndex(), true);
                while (!stopB) {
                    for (const SongID song : songs)
                        i_databaseP->WithSong(song, [](CSong& found) { (void)found.Meta().Stored("name"_key); });
                    (void)listRef->UserOrder();
                    i_databaseP->QueueChange(songs[0], "name"_key);
                }
            });
    for (int round = 0; round < 6; ++round) {
        std::size_t toGoL = 5;   // however long a save takes: the songs below 350 stay
        ASSERT_EQ(i_storeP->SaveLibrary(SaveForce::kAll), noErr);
        EXPECT_EQ(i_storeP->SaveLibrary(SaveForce::kDirty), queueNotDoneErr);   // one at a time
        for (int n = 0; i_storeP->IsSaving(); n = (n + 1) % 300) {
            i_databaseP->GetSong(songs[static_cast<std::size_t>(300 + n % 20)])
                ->Meta()
                .SetString("arts"_key, std::to_string(n));
            list.MoveItems(Items({static_cast<std::int32_t>(100 + n % 50)}), 1);
            list.SetRowValue(PLItemID{200}, "PICH"_key, CMetaValue(n % 8));
            list.SetSort({{n % 2 != 0 ? "name"_key : "arts"_key}});
            (void)NewSong("while it is saved");
            if (n % 10 == 0 && toGoL != 0) {
                --toGoL;
                const std::vector<SongID> gone = {songs.back()};
                songs.pop_back();
                ASSERT_EQ(i_databaseP->RemoveFromLibrary(gone), noErr);
            }
            i_host.RunLoopPass();
        }
        EXPECT_EQ(i_storeP->LastSaveErr(), noErr);
    }
    stopB = true;
    readers.clear();
    ASSERT_TRUE(RunUntil([&] { return !list.IsSorting(); }));
    Save(SaveForce::kAll);
    const Loaded other(i_places);
    const std::string here = Show(*i_databaseP), there = Show(other.database);
    const auto at = std::ranges::mismatch(here, there).in1 - here.begin();
    EXPECT_TRUE(here == there) << here.substr(static_cast<std::size_t>(std::max(at - 80, std::ptrdiff_t{0})), 160)
                               << "\nand\n"
                               << there.substr(static_cast<std::size_t>(std::max(at - 80, std::ptrdiff_t{0})), 160);
}

}   // namespace
