#include <cstring>

#include "Platform/CFileCalls_Faults.h"
#include "Storage/COrphanSearch.h"
#include "Storage/LibraryStoreTest.h"

namespace {

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

}   // namespace
