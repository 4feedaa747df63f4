#include "Storage/CLibraryStore.h"

#include <sys/stat.h>

#include <cstring>
#include <fstream>

#include "Core/AlertHook.h"
#include "Library/CSinger.h"
#include "Library/ListTest.h"
#include "Platform/CFileCalls_Faults.h"
#include "Platform/CFolders.h"
#include "SongFiles/FileWorkTest.h"
#include "Storage/COrphanSearch.h"
#include "Storage/LibraryFileName.h"
#include "Storage/TestLibraryHost.h"

namespace {

namespace fs = std::filesystem;

/** What a database holds, for comparing two: songs, lists with their rows and values, singers. */
std::string Show(const CSongDatabase& database) {
    std::string text;
    const auto line = [&text](const auto&... parts) {
        const auto add = [&text](const auto& part) {
            if constexpr (std::is_convertible_v<decltype(part), std::string_view>)
                text += part;
            else
                text += std::to_string(part);
            text += ' ';
        };
        (add(parts), ...);
        text += '\n';
    };
    std::vector<SongID> ids = database.Songs()->Ids();
    std::ranges::sort(ids);
    for (const SongID id : ids) line("song", Number(id), database.GetSong(id)->Name().UTF8());
    std::vector<CPlayList*> lists = database.PlayLists();
    std::ranges::stable_partition(lists, [](const CPlayList* listP) { return listP->Type() != kSourceDB_VENUE; });
    for (const CPlayList* const listP : lists) {   // a venue has another id in each run
        const int type = static_cast<int>(listP->Type());
        line("list", type == 5 ? 0 : Number(listP->ID()), type, listP->Name().UTF8(), Number(listP->SelectedItem()),
             MetaKeyText(MainKey(listP->Spec())), listP->Spec().front().ascendingB ? "up" : "down",
             Number(listP->Singer()), listP->Columns().Size(), listP->OtherKeys().Size());
        for (const PLItemID item : listP->Items()->UserOrder()) {
            const PLRow row = *listP->Items()->Get(item);
            line("row", Number(item), static_cast<int>(row.target.type), row.target.idL);
            for (const auto& [key, value] : listP->Items()->RowDictionary(item, row.stampL))
                line("own", key, CFTypeName(value.Type()),
                     value.Integer().value_or(value.Bool().value_or(false) ? 1 : 0));
        }
    }
    for (CSinger* const singerP : database.Singers()) {
        line("singer", Number(singerP->GetSingerID()), singerP->Name().UTF8(), singerP->SongInfo().Size());
        for (const SingerList which : kSingerLists) line("has", Number(singerP->List(which)));
    }
    return text;
}

class CLibraryStoreTest : public FileWorkTest {
protected:
    CLibraryStoreTest() {
        s_alerts.clear();
        SetAlertHook([](std::string_view message, std::string_view) { s_alerts.emplace_back(message); });
        std::string pattern = "/dev/shm/library-XXXXXX";
        i_root = ::mkdtemp(pattern.data());
        CFolders::SetRoot(i_root);
        fs::create_directories(i_root / "lib");
        i_places = {CFileRef(i_root / "lib"), i_root / "music", "/cache"};
        i_storeP = std::make_unique<CLibraryStore>(*i_databaseP, i_places, i_library);
    }
    ~CLibraryStoreTest() override {
        i_storeP.reset();
        CFileCalls::Install(nullptr);
        SetAlertHook(nullptr);
        CFolders::SetRoot({});
        fs::remove_all(i_root);
    }
    fs::path Lib(const fs::path& name) const { return i_root / "lib" / name; }
    static std::string Bytes(const fs::path& file) {
        std::ifstream in(file, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    void Save(SaveForce force = SaveForce::kDirty) { ASSERT_EQ(i_storeP->SaveLibraryNow(force), noErr); }
    /** A database of its own that loaded the same folder. */
    struct Loaded {
        TestDatabaseHost host;
        TestLibraryHost library{host.i_ui};
        CSongDatabase database{host};
        CSongFileWork files{database};
        std::unique_ptr<CLibraryStore> storeP;
        OSErr err = noErr;
        explicit Loaded(const LibraryPlaces& places)
            : storeP(std::make_unique<CLibraryStore>(database, places, library)) {
            err = storeP->LoadLibrary();
        }
    };
    /** A song of the library. */
    SongID NewSong(std::string_view name) {
        CSong& song = Song(name);
        (void)i_databaseP->AddSongToLibrary(song);
        return song.GetSongID();
    }
    /** Three songs, two lists, a venue with a singer who has rows. */
    void MakeLibrary() {
        std::vector<SongID> songs;
        for (const char* nameZ : {"One", "Two", "Ёлочка"}) songs.push_back(Song(nameZ, "Artist").GetSongID());
        (void)i_databaseP->AddSongsToLibrary(songs);
        CPlayList& list = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "A/B: *c.");
        const PLItemID row = Add(list, Number(songs[1]));
        Add(list, Number(songs[0]));
        Add(list, Number(songs[1]));
        ASSERT_EQ(list.RemoveItem(Items({2})[0]), noErr);   // a hole
        Add(list, Number(songs[2]), 1);
        list.SetRowValue(row, "PICH"_key, CMetaValue(-2));
        list.SetRowValue(row, "PLME"_key, CMetaValue(BoolValueType::kTrue));
        list.SetSelectedItem(row);
        list.SetColumns({{"name", 120}});
        i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "a/b: *C.");   // the same name on many discs
        CPlayList& venue = i_databaseP->AddPlaylist(kSourceDB_VENUE, "Zum Löwen");
        CSinger& singer = i_databaseP->NewSinger(venue.ID(), "Ann");
        Add(*i_databaseP->GetPlayList(singer.List(SingerList::kTonight)), Number(songs[2]));
        singer.Meta().SetBool("PSNT"_key, true);
        singer.Meta().SetString("Spas"_key, "secret");
        singer.SetSongInfo({{"2", CCFDictionary{{"tsng", 4}}}});
        i_databaseP->SetFacts({"Zum Löwen", {"/music", "/musik"}, {}});
    }

    static std::string Witness(const std::string& arguments) {
        const std::string command = "python3 " VOPLA_SOURCE_DIR "/tests/Storage/library_witness.py " + arguments;
        FILE* pipe = ::popen(command.c_str(), "r");
        std::string all;
        std::array<char, 65536> part{};
        while (const std::size_t got = std::fread(part.data(), 1, part.size(), pipe)) all.append(part.data(), got);
        EXPECT_EQ(::pclose(pipe), 0) << arguments;
        return all;
    }
    /** The number of each file of the library: a save that writes a file gives it another one. */
    std::map<std::string, ino_t> Inodes() const {
        std::map<std::string, ino_t> inodes;
        for (const auto& entry : fs::recursive_directory_iterator(i_root / "lib")) {
            struct stat info {};
            const std::string name = entry.path().lexically_relative(i_root / "lib").string();
            if (!name.starts_with("~") && entry.is_regular_file() && ::stat(entry.path().c_str(), &info) == 0)
                inodes[name] = info.st_ino;
        }
        return inodes;
    }
    /** Which files a save writes. */
    std::set<std::string> WrittenBy(const std::function<void()>& change) {
        change();
        std::vector<std::unique_ptr<std::ifstream>> held;   // their numbers are not given to others
        const auto before = Inodes();
        for (const auto& [name, inode] : before) held.push_back(std::make_unique<std::ifstream>(Lib(name)));
        Save();
        std::set<std::string> written;
        for (const auto& [name, inode] : Inodes())
            if (const auto it = before.find(name); it == before.end() || it->second != inode) written.insert(name);
        return written;
    }

    static inline std::vector<std::string> s_alerts;
    fs::path i_root;
    LibraryPlaces i_places;
    TestLibraryHost i_library{i_above.i_ui};
    std::unique_ptr<CLibraryStore> i_storeP;
};

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

TEST_F(CLibraryStoreTest, DamagedFilesAreToldAndNeverWrittenOver) {
    MakeLibrary();
    Save();
    const std::string full = Bytes(Lib("Library.xml"));
    for (const char* nameZ : {"Library.xml", "Playlists/a_b: _C._ 2.xml", "Venues/Zum Löwen/Ann/Singer.xml"})
        fs::resize_file(Lib(nameZ), fs::file_size(Lib(nameZ)) / 2);
    const std::string cut = Bytes(Lib("Library.xml")), cutList = Bytes(Lib("Playlists/a_b: _C._ 2.xml"));
    Loaded other(i_places);
    ASSERT_EQ(other.err, noErr);
    EXPECT_EQ(other.storeP->Report().damaged.size(), 3U);
    EXPECT_EQ(other.database.Library().Count(), 3U);   // every song has its row again
    EXPECT_NE(other.database.GetSingerByName("Ann"), nullptr);
    ASSERT_EQ(other.storeP->SaveLibraryNow(SaveForce::kAll), noErr);
    EXPECT_EQ(Bytes(Lib("Playlists/a_b: _C._ 2.xml")), cutList);   // nothing takes its place
    std::vector<std::string> kept;
    for (const auto& entry : fs::recursive_directory_iterator(i_root / "lib"))
        if (const std::string name = entry.path().filename().string(); name.find(" (damaged ") != std::string::npos)
            kept.push_back(name.substr(0, 8) + (Bytes(entry.path()) == cut ? "whole" : ""));
    std::ranges::sort(kept);
    EXPECT_EQ(kept, (std::vector<std::string>{"Library whole", "Singer ("}));
    const Loaded third(i_places);
    EXPECT_EQ(third.storeP->Report().damaged.size(), 1U);   // the list's, which stands where it stood
    EXPECT_EQ(third.database.Library().Count(), 3U);
}

TEST_F(CLibraryStoreTest, ALaterProgramsLibraryIsNeverSaved) {
    MakeLibrary();
    Save();
    std::string index = Bytes(Lib("Library.xml"));
    index.replace(index.find("<integer>7<"), 11, "<integer>8<");
    std::ofstream(Lib("Library.xml"), std::ios::binary) << index;
    Loaded other(i_places);
    EXPECT_EQ(other.err, userCanceledErr);   // nobody in front: the safe answer
    EXPECT_TRUE(other.storeP->Report().tooNewB);
    EXPECT_NE(other.storeP->Report().problems.at(0).find("(1.8)"), std::string::npos);
    EXPECT_EQ(other.storeP->SaveLibraryNow(SaveForce::kAll), opWrErr);
    EXPECT_EQ(Bytes(Lib("Library.xml")), index);
}

TEST_F(CLibraryStoreTest, AFailedSaveIsToldOnceAndTriedAgain) {
    MakeLibrary();
    Save();
    const auto before = Inodes();
    CPlayList& list = *i_databaseP->GetPlayList(PlaylistID{5});
    (void)NewSong("new");
    Add(list, 2);
    CFileCalls_Faults faults(CFileCalls::Get());
    faults.SetSpace(200);   // the disc is full
    CFileCalls::Install(&faults);
    EXPECT_EQ(i_storeP->SaveLibraryNow(SaveForce::kAll), dskFulErr);
    EXPECT_EQ(i_storeP->SaveLibraryNow(SaveForce::kDirty), queueNotDoneErr);   // not at once
    EXPECT_TRUE(i_databaseP->IsDirty());
    EXPECT_EQ(Inodes(), before);
    i_clock.Advance(3);
    EXPECT_EQ(i_storeP->SaveLibraryNow(SaveForce::kDirty), dskFulErr);
    EXPECT_EQ(s_alerts, (std::vector<std::string>{"Error attempting to save database!"}));
    EndFaults();
    i_clock.Advance(60);
    Save();
    EXPECT_FALSE(i_databaseP->IsDirty());
    const Loaded other(i_places);
    EXPECT_EQ(Show(other.database), Show(*i_databaseP));
}

TEST_F(CLibraryStoreTest, AListWhoseFileCannotGoIsToldAndGoesLater) {
    MakeLibrary();
    Save();
    const fs::path file = i_storeP->Files().lists.at(PlaylistID{5}).GetPath();
    CFileCalls_Faults faults(CFileCalls::Get());
    faults.SetWatch([&](long n, const char* callZ, const fs::path& path) {
        if (std::string_view(callZ) == "unlink" && path == file) faults.FailAt(n, EPERM);
    });
    CFileCalls::Install(&faults);
    ASSERT_EQ(i_databaseP->DeletePlaylist(PlaylistID{5}), noErr);
    EXPECT_NE(i_storeP->SaveLibraryNow(SaveForce::kDirty), noErr);
    EndFaults();
    const std::string words = "The playlist file “" + file.filename().string() + "” could not be deleted.";
    EXPECT_EQ(s_alerts, std::vector<std::string>{words});
    EXPECT_TRUE(fs::exists(file));
    i_clock.Advance(60);
    Save();
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(CLibraryStoreTest, AFolderThatCannotBeWrittenIsToldOnceAndAllIsKept) {
    MakeLibrary();
    Save();
    const auto before = Inodes();
    CFileCalls_Faults faults(CFileCalls::Get());
    long writesL = 0;
    faults.SetWatch([&](long n, const char* callZ, const fs::path&) {
        const std::string_view call(callZ);
        if (call == "access" || call == "mkdir" || call.starts_with("rename") || call == "write") {
            faults.FailAt(n, EROFS);
            if (call != "access") ++writesL;
        }
    });
    CFileCalls::Install(&faults);
    i_storeP->BeginChanges();
    ASSERT_EQ(s_alerts, (std::vector<std::string>{"Your library cannot be written."}));
    (void)NewSong("new");
    for (int round = 0; round < 3; ++round) {
        EXPECT_EQ(i_storeP->SaveLibraryNow(SaveForce::kDirty), static_cast<OSErr>(EROFS));
        EXPECT_TRUE(i_databaseP->IsDirty());
        i_clock.Advance(9);
    }
    EXPECT_EQ(s_alerts.size(), 1U);
    EXPECT_EQ(writesL, 0);
    EXPECT_EQ(Inodes(), before);
    EndFaults();
    Save();
    const Loaded other(i_places);
    EXPECT_EQ(Show(other.database), Show(*i_databaseP));
}

TEST_F(CLibraryStoreTest, NamesOfOldProgramsAreChangedBeforeChanges) {
    MakeLibrary();
    Save();
    i_storeP.reset();
    fs::rename(Lib("Playlists/A_B: _c._.xml"), Lib("Playlists/Rock..xml"));
    fs::rename(Lib("Venues/Zum Löwen/Ann"), Lib("Venues/Zum Löwen/*Ann*"));
    fs::rename(Lib("Venues/Zum Löwen"), Lib("Venues/Zum * Löwen."));
    fs::create_directories(Lib("Playlists/Rock._.xml"));   // in the way
    Loaded old(i_places);
    CPlayList* const venueP = old.database.GetPlayList(kSourceDB_VENUE);
    LibraryFacts facts = old.database.Facts();
    facts.currentVenue = venueP->Name();
    old.database.SetFacts(facts);
    old.host.i_rename = [&](const CPlayList& list, const SuperString& name) {
        return old.storeP->RenameListFile(list, name);
    };
    old.storeP->BeginChanges();
    EXPECT_TRUE(fs::exists(Lib("Playlists/Rock..xml")));
    EXPECT_TRUE(fs::exists(Lib("Venues/Zum _ Löwen._/_Ann_/Singer.xml")));
    EXPECT_EQ(venueP->Name(), SuperString("Zum _ Löwen._"));
    EXPECT_EQ(old.database.Facts().currentVenue, venueP->Name());
    fs::remove(Lib("Playlists/Rock._.xml"));
    old.storeP->BeginChanges();
    EXPECT_TRUE(fs::exists(Lib("Playlists/Rock._.xml")));
    ASSERT_EQ(old.storeP->SaveLibraryNow(SaveForce::kAll), noErr);   // into the new places, and no others
    const Loaded again(i_places);
    EXPECT_EQ(Show(again.database), Show(old.database));
    EXPECT_EQ(again.database.Facts(), old.database.Facts());
    EXPECT_TRUE(again.storeP->Report().problems.empty());
}

TEST_F(CLibraryStoreTest, ADiscThatGoesAndComesBackIsNotWrittenBeside) {
    ASSERT_EQ(i_storeP->LoadLibrary(), noErr);
    MakeLibrary();
    Save();
    fs::rename(i_root / "lib", i_root / "away");
    (void)NewSong("new");
    EXPECT_EQ(i_storeP->SaveLibraryNow(SaveForce::kAll), fnfErr);
    fs::create_directory(i_root / "lib");   // the folder on which the disc was mounted
    EXPECT_EQ(i_storeP->SaveLibraryNow(SaveForce::kAll), fnfErr);
    EXPECT_TRUE(fs::is_empty(i_root / "lib"));
    EXPECT_EQ(s_alerts.size(), 1U);
    fs::remove(i_root / "lib");
    fs::rename(i_root / "away", i_root / "lib");
    Save(SaveForce::kAll);
    const Loaded other(i_places);
    EXPECT_EQ(other.database.Songs()->Count(), 4U);
}

TEST_F(CLibraryStoreTest, WithoutALibraryItIsMadeFromTheFolders) {
    fs::create_directories(i_root / "music/sub");
    for (const char* nameZ : {"Ann - Pair.mp3", "Ann - Pair.cdg", "sub/Half_A.mp3", "sub/half a.cdg", "Alone.mp3",
                              "Naked.cdg", "picture.jpg"})
        std::ofstream(i_root / "music" / nameZ) << "x";
    LibrarySettings settings;
    settings.musicFolder = i_root / "music";
    i_databaseP->SetSettings(settings);
    i_above.i_ui.answers = {Answer{1, false}};
    ASSERT_EQ(i_storeP->LoadLibrary(), noErr);
    ASSERT_EQ(i_above.i_ui.questions.size(), 1U);
    EXPECT_EQ(i_above.i_ui.questions[0].text, "If so, please pick which name to use:\n1st:\tHalf_A\n2nd:\thalf a");
    std::set<std::string> names;
    for (const SongID id : i_databaseP->Songs()->Ids()) {
        CSong& song = *i_databaseP->GetSong(id);
        const bool pairB = song.Meta().Has(SongFileKey(SDB_SongFile_VIDEO));
        names.insert(song.Name().UTF8() + (pairB ? " both" : " sound"));
    }
    EXPECT_EQ(names, (std::set<std::string>{"Pair both", "half a both", "Alone sound"}));
    EXPECT_EQ(i_storeP->Report().dirtyReason, "rebuilt");

    // A file that no song names comes back as one, into a list of its own.
    Save();
    std::ofstream(i_root / "music/Orphan.mp3") << "x";
    ASSERT_EQ(COrphanSearch::Start(*i_databaseP, i_root / "music"), noErr);
    const auto list = [&] { return i_databaseP->GetPlayList(kSourceDB_PLAYLIST); };
    ASSERT_TRUE(RunUntil([&] { return list() != nullptr && list()->Count() != 0; }));
    EXPECT_EQ(list()->Name(), SuperString("Orphaned Songs"));
    EXPECT_EQ(list()->Count(), 1U);
}

/** A songs' file that is cut, or gone: told before all else, with a whole copy; what the user answers loses nothing. */
TEST_F(CLibraryStoreTest, ADamagedSongsFileIsMendedFromAWholeCopy) {
    LibrarySettings settings;
    settings.musicFolder = i_root / "music";
    fs::create_directories(i_root / "music");
    i_databaseP->SetSettings(settings);
    MakeLibrary();
    std::vector<SongID> songs;   // each is found again by another way
    for (const char* nameZ : {"At its place", "By its file", "By its title", "Gone"}) {
        CSong& song = Song(nameZ, "Singer");
        song.Meta().SetString("SUBg"_key, "kept");
        (void)song.SetFile(SDB_SongFile_AUDIO, CFileRef(i_root / "music" / (std::string(nameZ) + ".mp3")));
        (void)i_databaseP->AddSongToLibrary(song);
        songs.push_back(song.GetSongID());
    }
    CPlayList& list = i_databaseP->AddPlaylist(kSourceDB_PLAYLIST, "Mine");
    for (const SongID song : songs) Add(list, Number(song));
    Save();
    ASSERT_EQ(CLibraryBackup(i_places.root).KeepOnce(), noErr);
    std::ofstream(Lib("~Backups/Library 2099-01-01 00.00.00.000.zip")) << "a newer copy, which is no zip";
    const std::string whole = Bytes(Lib("Songs.vlb"));
    fs::create_directories(i_root / "music/moved");
    for (const char* nameZ : {"At its place.mp3", "moved/By its file.mp3", "Singer - By its title.mp3", "New.mp3"})
        std::ofstream(i_root / "music" / nameZ) << nameZ;
    const std::string before = Show(*i_databaseP);
    fs::copy(Lib(""), i_root / "kept", fs::copy_options::recursive);
    for (const bool bringB : {true, false})
        for (const bool goneB : {false, true}) {
            SCOPED_TRACE(testing::Message() << bringB << goneB);
            fs::remove_all(Lib(""));
            fs::copy(i_root / "kept", Lib(""), fs::copy_options::recursive);
            const std::string cut = whole.substr(0, 300);
            std::ofstream(Lib("Songs.vlb"), std::ios::binary) << cut;
            if (goneB) fs::remove(Lib("Songs.vlb"));
            TestDatabaseHost host;
            host.i_ui.answers = {Answer{bringB ? 0U : 1U, false}};
            CSongDatabase database(host);
            const CSongFileWork files(database);
            database.SetSettings(settings);
            TestLibraryHost library(host.i_ui);
            CLibraryStore store(database, i_places, library);
            ASSERT_EQ(store.LoadLibrary(), noErr);
            ASSERT_EQ(host.i_ui.questions.size(), 1U);
            const Question& asked = host.i_ui.questions[0];
            EXPECT_EQ(asked.title, "Your library is damaged.");
            EXPECT_NE(asked.text.find(goneB ? "missing" : "stays beside the new one"), std::string::npos) << asked.text;
            EXPECT_NE(asked.text.find(" has 7."), std::string::npos) << asked.text;
            EXPECT_EQ(asked.safeIndex, 0U);   // which loses nothing either
            if (bringB) {
                EXPECT_EQ(Show(database), before);
                EXPECT_EQ(database.GetSong(songs[1])->Meta().GetString("SUBg"_key), "kept");
            }
            store.AfterStart();
            ASSERT_TRUE(RunUntil([&] { return host.i_told.size() == 1U; }));
            if (!bringB) {
                for (std::size_t n = 0; n < 3; ++n) {
                    const CSong* const songP = database.GetSong(songs[n]);
                    ASSERT_NE(songP, nullptr) << n;
                    EXPECT_TRUE(fs::exists(songP->FileRef(SDB_SongFile_AUDIO).GetPath())) << n;
                }
                EXPECT_EQ(database.GetSong(songs[3]), nullptr);
            }
            ASSERT_EQ(store.SaveLibraryNow(SaveForce::kDirty), noErr);
            bool keptB = goneB;
            for (const auto& entry : fs::directory_iterator(Lib("")))
                keptB = keptB ||
                        (entry.path().string().find("(damaged ") != std::string::npos && Bytes(entry.path()) == cut);
            EXPECT_TRUE(keptB);
        }
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

TEST(LibraryFileName, IsOneThatDiscsTakeAndLoadsDoNotPassOver) {
    const struct {
        const char* titleZ;
        const char* nameZ;
    } kCases[] = {{"Plain Ёлка", "Plain Ёлка"},
                  {"a/b*c\\d\n", "a_b_c_d_"},
                  {"~mine", "_~mine"},
                  {".", "_._"},
                  {"ends.", "ends._"},
                  {"ends ", "ends _"},
                  {"", "Untitled"},
                  {"x (damaged 2024-02-29 12.00.01)", "x_(damaged 2024-02-29 12.00.01)"},
                  {"x (damaged)", "x (damaged)"}};
    for (const auto& c : kCases) {
        EXPECT_EQ(LibraryFileName(c.titleZ), c.nameZ);
        EXPECT_FALSE(IsPassedOver(LibraryFileName(c.titleZ))) << c.titleZ;
    }
    std::string longTitle;
    for (int n = 0; n < 100; ++n) longTitle += "日本";
    const std::string name = LibraryFileName(longTitle);
    EXPECT_EQ(name.size(), 237U);   // 79 whole characters
    EXPECT_TRUE(longTitle.starts_with(name));
    EXPECT_TRUE(IsPassedOver("Library (damaged 2024-02-29 12.00.01).xml"));
}

}   // namespace
