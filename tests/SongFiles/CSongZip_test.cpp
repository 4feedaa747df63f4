#include "SongFiles/CSongZip.h"

#include "Platform/CFileCalls_Faults.h"
#include "SongFiles/CLibraryCommands.h"
#include "SongFiles/CSongZipper.h"
#include "SongFiles/SongFileTest.h"

namespace {

class SongZip : public SongFileTest {
protected:
    SongZip() {
        i_sound = Sound();
        i_picture = std::string(9600, 'g');
    }
    CSong& Pair(const Path& folder, const std::string& base = "file") {
        CSong& song = Song("Song", "Artist");
        song.Meta().SetString("albm"_key, "Album");
        EXPECT_EQ(song.SetFile(SDB_SongFile_AUDIO, CFileRef(Make(folder / (base + ".wav"), i_sound))), noErr);
        EXPECT_EQ(song.SetFile(SDB_SongFile_VIDEO, CFileRef(Make(folder / (base + ".cdg"), i_picture))), noErr);
        return song;
    }
    SongFileWorld World() {
        return {i_databaseP->Self(), i_databaseP->Songs(), i_databaseP->Settings(), i_busyRef, i_filesP->Keeper()};
    }
    /** Here, where the main thread answers itself. */
    OSErr Zip(SongID song, OldZip oldZip = OldZip::kRefuse) { return CSongZip(World(), song, oldZip).Run(); }
    /** What a zip holds, as another program reads it. */
    std::string Content(const Path& zip) const {
        return Python(zip,
                      "f = zipfile.ZipFile(z); assert f.testzip() is None\n"
                      "print(*sorted(f'{i.filename}:{i.file_size}' for i in f.infolist()), sep='|', end='')");
    }
    bool NothingTemporary() const {
        for (const auto& entry : std::filesystem::recursive_directory_iterator(i_folder))
            if (entry.path().string().find("Temp/temp/") != std::string::npos) return false;
        return true;
    }
    std::string i_sound, i_picture;
    const std::shared_ptr<CBusySongs> i_busyRef = std::make_shared<CBusySongs>();
};

TEST_F(SongZip, TheZipTakesThePlaceOfTheFiles) {
    ChangeSettings([](LibrarySettings& settings) { settings.nameTemplate = "R - S"; });
    CSong& song = Pair("Music");
    const std::string wavBytes = std::to_string(i_sound.size());
    ASSERT_EQ(Zip(song.GetSongID()), noErr);
    const std::string cached = std::to_string(Number(song.GetSongID())) + " Song.cdg";
    EXPECT_EQ(Tree("Music"), "Artist/Album/Artist - Song.zip");
    EXPECT_EQ(Content(i_folder / "Music/Artist/Album/Artist - Song.zip"),
              "Artist - Song.cdg:9600|Artist - Song.wav:" + wavBytes);
    EXPECT_EQ(Tree("cache"), cached);
    EXPECT_EQ(song.GetStatus(SDB_SongFile_ZIP), SDB_SongFileStatus_MUSIC);
    EXPECT_EQ(song.FileRef(SDB_SongFile_VIDEO_CACHE).GetPath(), i_folder / "cache" / cached);
    for (const SDB_SongFile type : {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO, SDB_SongFile_TEMP_ZIP})
        EXPECT_EQ(song.GetStatus(type), SDB_SongFileStatus_NONE);
    EXPECT_TRUE(NothingTemporary());
    for (const char* lineZ :
         {"ZIP: Forking off process", "ZIP: --> finished zipping with result 0", "setting temp zip ref to NULL"})
        EXPECT_TRUE(Logged(lineZ)) << lineZ;
    EXPECT_EQ(Zip(song.GetSongID()), paramErr);   // it is zipped
    EXPECT_EQ(Zip(SongID{999}), fnfErr);
}

TEST_F(SongZip, WhatIsOnlyReferencedStays) {
    ChangeSettings([](LibrarySettings& settings) { settings.conformNamesB = false; });
    CSong& song = Pair("out");
    Make("Music/Artist/Album/file.zip", "another song's");
    ASSERT_EQ(Zip(song.GetSongID()), noErr);
    EXPECT_EQ(Tree("out"), "file.cdg|file.wav");
    EXPECT_EQ(Tree("Music"), "Artist/Album/file 2.zip|Artist/Album/file.zip");
    EXPECT_EQ(Read(i_folder / "Music/Artist/Album/file.zip"), "another song's");
    EXPECT_EQ(Tree("cache"), "");
    EXPECT_EQ(song.MainFile(), SDB_SongFile_ZIP);
}

TEST_F(SongZip, WhateverFailsTheSongIsWhole) {
    // Each call of the disc in turn fails. Afterwards the song's data are there: as they were, or in a whole zip.
    long goodL = 0, badL = 0;
    for (long n = 0;; ++n) {
        CSong& song = Pair("Music", "n" + std::to_string(n));
        CFileCalls_Faults faults(CFileCalls::Get());
        faults.FailAt(n, n % 2 == 0 ? EIO : ENOSPC);
        CFileCalls::Install(&faults);
        const OSErr err = Zip(song.GetSongID());
        EndFaults();
        SCOPED_TRACE(n);
        const CFileRef zip = song.FileRef(SDB_SongFile_ZIP);
        ASSERT_EQ(zip.IsEmpty(), Failed(err));
        if (Failed(err)) {
            ++badL;
            ASSERT_EQ(Read(song.FileRef(SDB_SongFile_AUDIO).GetPath()), i_sound);
            ASSERT_EQ(Read(song.FileRef(SDB_SongFile_VIDEO).GetPath()), i_picture);
        } else {
            ++goodL;
            const Path keep = Make("keep/a.wav", i_sound), keepToo = Make("keep/a.cdg", i_picture);
            const std::string base = zip.GetPath().stem().string();
            const std::string inside = "n" + std::to_string(n);
            const PackedFile packed[] = {{CFileRef(keep), inside + ".wav"}, {CFileRef(keepToo), inside + ".cdg"}};
            ASSERT_EQ(VerifyZip(zip, packed, false), noErr);
        }
        if (n >= faults.Count()) break;   // nothing was left to fail
        // What failed in the removal itself may leave something for the next purge; nothing else may.
        if (!Logged("deleting temp enclosure")) {
            ASSERT_TRUE(NothingTemporary());
        }
        std::filesystem::remove_all(i_folder / "Music");
    }
    EXPECT_GT(badL, 30);
    EXPECT_GT(goodL, 5);
}

TEST_F(SongZip, AFullDiskOrABrokenSoundLeavesThemAlone) {
    CSong& song = Pair("Music");
    const std::string before = Tree("Music");
    CFileCalls_Faults faults(CFileCalls::Get());
    faults.SetSpace(2000);
    CFileCalls::Install(&faults);
    EXPECT_EQ(Zip(song.GetSongID()), dskFulErr);
    EndFaults();
    EXPECT_EQ(Tree("Music"), before);
    EXPECT_TRUE(NothingTemporary());
    Make("Music/file.wav", "this is no sound");
    EXPECT_NE(Zip(song.GetSongID()), noErr);
    EXPECT_EQ(Tree("Music"), before);
    ASSERT_EQ(i_databaseP->PlayLists().size(), 2U);
    EXPECT_EQ(i_databaseP->PlayLists()[1]->Name(), "* Possibly Corrupted MP3");
}

TEST_F(SongZip, ASongThatGoesAtAnyMomentLosesNothing) {
    // At each call of the disc in turn the song leaves the library.
    for (long at = 0;; ++at) {
        const std::string base = "n" + std::to_string(at);
        const SongID song = Pair("Music", base).GetSongID();
        CFileCalls_Faults faults(CFileCalls::Get());
        bool goneB = false;
        faults.SetWatch([&](long n, const char*, const Path&) {
            if (n != at || goneB) return;
            goneB = true;
            EXPECT_EQ(i_databaseP->RemoveFromLibrary(std::vector{song}), noErr);
        });
        CFileCalls::Install(&faults);
        const OSErr err = Zip(song);
        EndFaults();
        SCOPED_TRACE(at);
        ASSERT_TRUE(NothingTemporary());
        if (!goneB) break;
        const bool originalsB = Read(i_folder / "Music" / (base + ".wav")) == i_sound &&
                                Read(i_folder / "Music" / (base + ".cdg")) == i_picture;
        const bool zippedB = std::filesystem::exists(i_folder / "Music/Artist/Album" / (base + ".zip"));
        ASSERT_TRUE(originalsB || (!Failed(err) && zippedB));
        ASSERT_FALSE(Failed(err) && zippedB);
        std::filesystem::remove_all(i_folder / "Music");
    }
}

TEST_F(SongZip, AnOldZipIsExchangedOrLeftOnItsVolume) {
    CSong& song = Pair("Music");
    ASSERT_EQ(song.SetFile(SDB_SongFile_ZIP, CFileRef(Make("Music/old.zip", "old"))), noErr);
    ASSERT_EQ(Zip(song.GetSongID(), OldZip::kReplace), noErr);
    EXPECT_EQ(Tree("Music"), "old.zip");
    EXPECT_EQ(Content(i_folder / "Music/old.zip"), "file.cdg:9600|file.wav:" + std::to_string(i_sound.size()));
    EXPECT_TRUE(NothingTemporary());

    std::string pattern = "/dev/shm/zips-XXXXXX";
    if (::mkdtemp(pattern.data()) == nullptr) GTEST_SKIP() << "no second volume";
    const Path other = pattern;
    std::ofstream(other / "old.zip") << "old";
    CSong& away = Pair("Music", "away");
    ASSERT_EQ(away.SetFile(SDB_SongFile_ZIP, CFileRef(other / "old.zip")), noErr);
    EXPECT_EQ(Zip(away.GetSongID(), OldZip::kReplace), noErr);
    EXPECT_EQ(away.FileRef(SDB_SongFile_ZIP).GetPath(), i_folder / "Music/Artist/Album/away.zip");
    EXPECT_EQ(Read(other / "old.zip"), "old");
    std::filesystem::remove_all(other);
}

TEST_F(SongZip, TheQueueZipsAndAborts) {
    CSong& song = Pair("Music");
    CSong& other = Pair("Music", "other");
    const auto zipperP = std::make_unique<CSongZipper>(*i_databaseP, i_busyRef);
    CMutexT<std::vector<OSErr>> results;
    const auto note = [&](OSErr err) { results.With([&](auto& all) { all.push_back(err); }); };
    {
        const CBusySongs::Hold hold(i_busyRef, song.GetSongID());   // somebody else has it
        ASSERT_EQ(zipperP->Zip(song.GetSongID(), OldZip::kRefuse, note), noErr);
        ASSERT_TRUE(RunUntil([&] { return results.Get().size() == 1; }));
    }
    EXPECT_EQ(s_alerts,
              std::vector<std::string>{"There is some other process that is busy with the zip file for the song "
                                       "“Song”, please try again."});
    ASSERT_EQ(zipperP->Zip(song.GetSongID(), OldZip::kRefuse, note), noErr);
    ASSERT_EQ(zipperP->Zip(other.GetSongID(), OldZip::kRefuse, note), noErr);
    EXPECT_EQ(zipperP->Zip(other.GetSongID(), OldZip::kRefuse, note), opWrErr);
    zipperP->Abort(other.GetSongID());
    ASSERT_TRUE(RunUntil([&] { return results.Get().size() == 3; }));
    EXPECT_EQ(results.Get(), (std::vector<OSErr>{opWrErr, noErr, abortErr}));
    EXPECT_EQ(Tree("Music"), "Artist/Album/file.zip|other.cdg|other.wav");
}

/** What a menu asks for: the songs that can be zipped are one task, and their zips are unpacked beside what lies there. */
TEST_F(SongZip, ManySongsAreZippedAndUnzippedByOneCommandEach) {
    ChangeSettings([](LibrarySettings& settings) { settings.conformNamesB = false; });
    CSong& one = Pair("Music", "one");
    CSong& two = Pair("Music", "two");
    CSong& broken = Pair("Music", "broken");
    std::filesystem::remove(i_folder / "Music/broken.wav");
    CSong& silent = Song("No sound", "Artist");
    const std::vector<SongID> songs{one.GetSongID(), silent.GetSongID(), broken.GetSongID(), two.GetSongID()};
    CLibraryCommands commands(*i_databaseP, i_above.i_ui);
    std::optional<OSErr> result;
    const auto note = [&](OSErr err) { result = err; };
    EXPECT_EQ(commands.Zip(std::vector{silent.GetSongID()}, note), paramErr);
    EXPECT_EQ(commands.Unzip(songs, note), paramErr);   // there is no zip yet
    ASSERT_EQ(commands.Zip(songs, note), noErr);
    ASSERT_TRUE(RunUntil([&] { return result.has_value(); }));
    EXPECT_TRUE(Failed(*result));
    ASSERT_EQ(i_above.i_ui.alerts.size(), 1U);   // once, whatever the number of songs
    EXPECT_TRUE(i_above.i_ui.alerts.front().starts_with("Some songs could not be zipped."));
    EXPECT_EQ(Tree("Music"), "Artist/Album/one.zip|Artist/Album/two.zip|broken.cdg");
    EXPECT_TRUE(i_host.i_tasks.Get().find("3 / 3\n3 of 3\ngone\n") != std::string::npos) << i_host.i_tasks.Get();

    result.reset();
    EXPECT_EQ(commands.Unzip(songs, note), userCanceledErr);   // no folder was chosen
    Make("out/one.wav", "somebody's");
    i_above.i_ui.folders.push_back(i_folder / "out");
    ASSERT_EQ(commands.Unzip(songs, note), noErr);
    ASSERT_TRUE(RunUntil([&] { return result.has_value(); }));
    EXPECT_EQ(*result, noErr);
    EXPECT_EQ(Tree("out"), "one 2.wav|one.cdg|one.wav|two.cdg|two.wav");
    EXPECT_EQ(Read(i_folder / "out/one 2.wav"), i_sound);
    EXPECT_EQ(Read(i_folder / "out/one.wav"), "somebody's");
    EXPECT_EQ(Read(i_folder / "out/two.cdg"), i_picture);
    EXPECT_EQ(one.MainFile(), SDB_SongFile_ZIP);

    // A cancel ends what waits, and is no failure to tell.
    CSong& three = Pair("Music", "three");
    result.reset();
    i_host.i_cancelP->Cancel();
    ASSERT_EQ(commands.Zip(std::vector{three.GetSongID()}, note), noErr);
    ASSERT_TRUE(RunUntil([&] { return result.has_value(); }));
    EXPECT_EQ(*result, userCanceledErr);
    EXPECT_EQ(i_above.i_ui.alerts.size(), 1U);
    EXPECT_EQ(three.MainFile(), SDB_SongFile_VIDEO);
}

}   // namespace
