#include "Files/FSrObjects.h"
#include "Library/FileSystemName.h"
#include "Library/SongName.h"
#include "Platform/CFileCalls_Faults.h"
#include "Platform/CFileCalls_Linux.h"
#include "SongFiles/CT_ConformNames.h"
#include "SongFiles/CT_FindMissing.h"
#include "SongFiles/SongFileTest.h"
#include "SongFiles/SongFolders.h"
#include "SongFiles/SongRename.h"

namespace {

TEST(NameTemplate, BuildsNames) {
    const NameValues values = {"SC-8123", "05", "Song", "Artist", "", "Live"};
    struct Row {
        const char *templateZ, *nameZ;
        bool unknownsB;
    };
    for (const auto& [templateZ, nameZ, unknownsB] : {
             Row{"L-L-T - R - S", "SC-8123-05 - Artist - Song", false},
             Row{"L L-T", "SC-8123-05", false},
             Row{"L-T-L", "SC-8123-05-SC-8123", false},   // no two in a row
             Row{"S (V)", "Song (Live)", false},
             Row{"[T] R.S", "[05] Artist.Song", false},
             Row{"/R/L/S", "Song", false},
             Row{"S I", "Song $$", true},
             Row{"", "", false},
         }) {
        const auto built = BuildName(templateZ, values);
        ASSERT_TRUE(built) << templateZ;
        EXPECT_EQ(built->text, nameZ);
        EXPECT_EQ(built->unknownsB, unknownsB) << templateZ;
    }
    for (const char* badZ : {"S#", "s", "R_S", "Ü"}) EXPECT_FALSE(BuildName(badZ, values)) << badZ;
}

TEST(FileSystemName, FitsEveryDisc) {
    for (const auto& [text, name] : std::map<std::string, std::string>{{"AC/DC", "AC-DC"},
                                                                       {"What?", "What_"},
                                                                       {"...And", "And"},
                                                                       {"a: \"b\"\n", "a- _b__"},
                                                                       {" . ", "_"},
                                                                       {"", "_"},
                                                                       {"..", "_"},
                                                                       {"Ü 歌", "Ü 歌"}})
        EXPECT_EQ(FileSystemName(text), name) << text;
    std::string longText;
    for (int n = 0; n < 100; ++n) longText += "歌";
    EXPECT_EQ(FileSystemName(longText).size(), 255U);   // 85 of three bytes
    EXPECT_EQ(FileSystemName("x" + longText).size(), 253U);
}

using SongNames = SongFileTest;

TEST_F(SongNames, EachFormat) {
    CSong& song = PairIn("Music", "file", "A/B", "The Who");
    song.Meta().SetString("albm"_key, "SC8123");
    song.Meta().SetInteger("trak"_key, 7);
    EXPECT_EQ(song.GetSongName(SongNameFormat::kName), "A/B");
    EXPECT_EQ(song.GetSongName(SongNameFormat::kNameToo, SongNameUse::kFile), "A-B");
    EXPECT_EQ(song.GetSongName(SongNameFormat::kTrackGraphics), "7 A/B.cdg");
    EXPECT_EQ(song.GetSongName(SongNameFormat::kConformed), "SC8123-07 - Who, The - A/B");
    EXPECT_EQ(song.GetSongName(SongNameFormat::kConformed, SongNameUse::kFile), "SC8123-07 - Who, The - A-B");
    EXPECT_EQ(song.GetSongName(SongNameFormat::kOnDisc), "file.cdg");
    ChangeSettings([](LibrarySettings& settings) { settings.nameTemplate = "S"; });
    EXPECT_EQ(song.GetSongName(SongNameFormat::kConformed), "A/B");
    EXPECT_EQ(song.GetSongName(SongNameFormat::kDefaultTemplate), "SC8123-07 - Who, The - A/B");
    ChangeSettings([](LibrarySettings& settings) { settings.nameTemplate = "S!"; });
    EXPECT_EQ(song.GetSongName(SongNameFormat::kConformed), "A/B");
    EXPECT_EQ(song.MainFile(), SDB_SongFile_VIDEO);
    const std::string name = CacheFileName(song.GetSongID(), song.Name(), SDB_SongFile_AUDIO_CACHE);
    EXPECT_EQ(name, std::to_string(Number(song.GetSongID())) + " A-B.pcm");
    EXPECT_EQ(SongOfCacheFile(name), song.GetSongID());
    for (const char* otherZ : {"x.pcm", "12", "12.pcm", "-3 x.pcm", "99999999999 x.pcm"})
        EXPECT_EQ(Number(SongOfCacheFile(otherZ)), 0) << otherZ;
}

TEST_F(SongNames, AFolderForEachArtistAndAlbum) {
    const LibrarySettings settings = *i_databaseP->Settings();
    const auto folderOf = [&](SongRoot root, const char* artistZ, const char* albumZ) {
        CFileRef folder;
        const OSErr err = GetFolderForSong(settings, root, artistZ, albumZ, folder);
        EXPECT_EQ(std::filesystem::is_directory(folder.GetPath()), !Failed(err));
        return Failed(err) ? std::to_string(Number(err)) : folder.GetPath().lexically_relative(i_folder).string();
    };
    EXPECT_EQ(folderOf(SongRoot::kMusic, "AC/DC", "T.N.T."), "Music/AC-DC/T.N.T");
    EXPECT_EQ(folderOf(SongRoot::kMusic, "AC/DC", ""), "Music/AC-DC");
    EXPECT_EQ(folderOf(SongRoot::kMusic, "", "X"), "Music/Unknown Artist/X");
    EXPECT_EQ(folderOf(SongRoot::kPocket, "A", ""), "Vopla Song Pocket/A");
    Make("Music/File", "x");
    EXPECT_EQ(folderOf(SongRoot::kMusic, "File", ""), "-48");
    EXPECT_TRUE(Logged("### Error finding existing artist folder"));
    Make("Music/B/File", "x");
    EXPECT_EQ(folderOf(SongRoot::kMusic, "B", "File"), "-48");
    EXPECT_TRUE(Logged("### Error finding existing album folder"));
    CFileRef none;
    EXPECT_EQ(GetSongRoot(LibrarySettings(), SongRoot::kCache, none), fnfErr);
    EXPECT_TRUE(Logged("### Error getting song cache folder"));
    CFileCalls_Faults faults(CFileCalls::Get());
    CFileCalls::Install(&faults);
    faults.SetWatch([&](long n, const char* callZ, const Path&) {
        if (std::string_view(callZ) == "mkdir") faults.FailAt(n, ENOSPC);
    });
    EXPECT_EQ(folderOf(SongRoot::kMusic, "New", ""), "-34");
    EndFaults();
    EXPECT_TRUE(Logged("### Error creating artist folder"));
}

TEST_F(SongNames, PlacesKeepTheirRules) {
    CSong& song = PairIn("Music", "a", "A", "");
    EXPECT_EQ(song.GetStatus(SDB_SongFile_AUDIO), SDB_SongFileStatus_MUSIC);
    EXPECT_EQ(song.SetFile(SDB_SongFile_AUDIO_CD, CFileRef(Path("/media/disc"))), noErr);
    EXPECT_EQ(song.SetFile(SDB_SongFile_AUDIO_CD, CFileRef()), paramErr);
    EXPECT_EQ(TakeAsserted(), std::vector<std::string>{"CF_ASSERT Fail: Setting CD file status to empty!"});
    song.SetFileRef(SDB_SongFile_AUDIO, SDB_SongFileStatus_CD, CFileRef(Path("/media/track")));
    EXPECT_EQ(song.SetFile(SDB_SongFile_AUDIO, CFileRef(i_folder / "x.mp3")), paramErr);
    EXPECT_EQ(TakeAsserted(), std::vector<std::string>{"CF_ASSERT Fail: Trying to tell a CD that it's not a CD"});
    EXPECT_EQ(song.GetStatus(SDB_SongFile_AUDIO), SDB_SongFileStatus_CD);
    EXPECT_EQ(song.SetFile(SDB_SongFile_AUDIO, CFileRef(i_folder / "x.mp3"), CSong::StatusCheck::kSkip), noErr);
    EXPECT_EQ(song.GetStatus(SDB_SongFile_AUDIO), SDB_SongFileStatus_REFERENCE);
    // What makes the library dirty at once.
    const auto dirtiedBy = [&](SDB_SongFile type, const char* fileZ) {
        i_databaseP->SetDirty(false);
        (void)song.SetFile(type, fileZ == nullptr ? CFileRef() : CFileRef(i_folder / fileZ));
        return i_databaseP->IsDirty();
    };
    EXPECT_TRUE(dirtiedBy(SDB_SongFile_VIDEO, "b.cdg"));
    EXPECT_FALSE(dirtiedBy(SDB_SongFile_VIDEO, "b.cdg"));   // the same
    EXPECT_FALSE(dirtiedBy(SDB_SongFile_VIDEO_CACHE, "cache/b.cdg"));
    EXPECT_TRUE(dirtiedBy(SDB_SongFile_ZIP, "b.zip"));
    EXPECT_FALSE(dirtiedBy(SDB_SongFile_VIDEO, nullptr));   // it has a zip
    EXPECT_TRUE(dirtiedBy(SDB_SongFile_ZIP, nullptr));
    {
        const CSongDatabase::Batch batch(*i_databaseP);
        EXPECT_FALSE(dirtiedBy(SDB_SongFile_ZIP, "c.zip"));
    }
    EXPECT_TRUE(Logged("** Database dirty because: file status changed on <<A>>"));
}

TEST_F(SongNames, AFileIsFoundWhereTheLibraryMoved) {
    CSong& song = Song("A");
    Make("Music/Artist/a.mp3");
    Make("Music/Artist/a.cdg");
    CFileRef file;
    EXPECT_EQ(song.GetFile(SDB_SongFile_AUDIO, file), fnfErr);   // nothing to go by
    ASSERT_EQ(song.SetFile(SDB_SongFile_AUDIO, CFileRef(Path("/gone/Vopla/Vopla Music/Artist/a.mp3"))), noErr);
    EXPECT_EQ(song.GetStatus(SDB_SongFile_AUDIO), SDB_SongFileStatus_REFERENCE);
    EXPECT_EQ(song.GetFile(SDB_SongFile_VIDEO, file), noErr);
    EXPECT_EQ(file.GetPath(), i_folder / "Music/Artist/a.cdg");
    EXPECT_EQ(song.GetStatus(SDB_SongFile_VIDEO), SDB_SongFileStatus_MUSIC);
    EXPECT_EQ(song.GetFile(SDB_SongFile_AUDIO, file), noErr);
    EXPECT_EQ(song.FileRef(SDB_SongFile_AUDIO).GetPath(), i_folder / "Music/Artist/a.mp3");
    // Cached graphics stand in only where that is wanted.
    ASSERT_EQ(song.SetFile(SDB_SongFile_VIDEO_CACHE, CFileRef(Make("cache/a.cdg"))), noErr);
    EXPECT_EQ(song.GetFile(SDB_SongFile_VIDEO, file, CSongFiles::TryCached::kYes), noErr);
    EXPECT_EQ(file.GetPath(), i_folder / "cache/a.cdg");
    EXPECT_EQ(song.GetFile(SDB_SongFile_VIDEO, file), noErr);
    EXPECT_EQ(file.GetPath(), i_folder / "Music/Artist/a.cdg");
    EXPECT_EQ(MissingSongText("A"), "Could not find the song “A”");
    // A path as a file of the library has it; those of another system are kept until their files are found.
    const struct {
        const char* pathZ;
        SDB_SongFileStatus status;
        bool foundB;
    } paths[] = {{"Artist/a.mp3", SDB_SongFileStatus_MUSIC, true},
                 {"Artist\\A.MP3", SDB_SongFileStatus_MUSIC, true},
                 {"D:\\Karaoke\\artist\\a.mp3", SDB_SongFileStatus_REFERENCE, true},
                 {"d:/Karaoke/Vopla Music/Artist/a.mp3", SDB_SongFileStatus_REFERENCE, true},
                 {"\\\\server\\share\\ARTIST\\a.mp3", SDB_SongFileStatus_REFERENCE, true},
                 {"\\Artist\\a.mp3", SDB_SongFileStatus_REFERENCE, true},
                 {"D:\\iTunes\\b.mp3", SDB_SongFileStatus_ITUNES, false},
                 {"D:\\Other\\a.mp3", SDB_SongFileStatus_REFERENCE, false}};   // a name alone is no file of an artist
    for (const auto& [pathZ, status, foundB] : paths) {
        SCOPED_TRACE(pathZ);
        CSong& other = Song("B");
        ASSERT_EQ(other.SetFile(SDB_SongFile_AUDIO, CFileRef(Path(pathZ))), noErr);
        EXPECT_EQ(other.GetStatus(SDB_SongFile_AUDIO), status);
        EXPECT_EQ(other.GetFile(SDB_SongFile_AUDIO, file), foundB ? noErr : fnfErr);
        const Path now = other.FileRef(SDB_SongFile_AUDIO).GetPath();
        EXPECT_EQ(i_databaseP->Settings()->Whole(now), foundB ? i_folder / "Music/Artist/a.mp3" : Path(pathZ));
        EXPECT_EQ(other.GetStatus(SDB_SongFile_AUDIO), foundB ? SDB_SongFileStatus_MUSIC : status);
    }
}

TEST_F(SongNames, WhatWasFoundIsNothingToAPlaceThatSaysSomethingElseByNow) {
    CSong& song = PairIn("out", "a", "A", "");
    std::filesystem::rename(i_folder / "out/a.mp3", i_folder / "out/a.wav");
    CSongFiles files(song, i_databaseP->Settings());
    CFileRef found;
    ASSERT_EQ(files.GetFile(SDB_SongFile_AUDIO, found), noErr);
    EXPECT_EQ(found.GetName(), "a.wav");
    ASSERT_EQ(song.SetFile(SDB_SongFile_AUDIO, CFileRef(Make("out/chosen.mp3"))), noErr);   // meanwhile
    files.Store(song);
    EXPECT_EQ(song.FileRef(SDB_SongFile_AUDIO).GetName(), "chosen.mp3");
}

TEST_F(SongNames, TheActualDurationFollowsTheDurationAndIsNeverStored) {
    CSong& song = Song("A");
    EXPECT_EQ(song.Meta().GetString("aDur"_key), "");
    song.Meta().SetInteger("drtn"_key, 185 * 300);
    Advance(1.0);
    i_databaseP->SetDirty(false);
    song.Meta().SetDirty(false);
    const PLItemID row = i_databaseP->AddSongToLibrary(song);
    i_databaseP->SetDirty(false);
    EXPECT_EQ(song.Meta().GetString("aDur"_key), "3:05");
    EXPECT_EQ(i_databaseP->Library().ValueOf(row, "aDur"_key).Text(), "3:05");
    ASSERT_TRUE(song.Meta().GetRetainedValue("aDur"_key, ValueMode::kMake));
    Advance(1.0);
    EXPECT_FALSE(i_databaseP->IsDirty() || song.Meta().IsDirty() || song.Meta().Has("aDur"_key));
    song.Meta().SetInteger("drtn"_key, 60 * 300);
    EXPECT_EQ(song.Meta().GetString("aDur"_key), "1:00");
    song.Meta().SetString("aDur"_key, "1:02");   // what somebody types counts
    song.Meta().SetInteger("drtn"_key, 0);
    EXPECT_EQ(song.Meta().GetString("aDur"_key), "1:02");
}

TEST_F(SongNames, MissingSongsAreMarkedAndFoundAgain) {
    CSong& pair = PairIn("out", "pair", "Pair", "");
    CSong& clip = Song("Clip");
    ASSERT_EQ(clip.SetFile(SDB_SongFile_VIDEO, CFileRef(Make("out/clip.mp4"))), noErr);
    CSong& naked = Song("Naked");
    ASSERT_EQ(naked.SetFile(SDB_SongFile_VIDEO, CFileRef(Make("out/naked.cdg"))), noErr);
    CSong& empty = Song("Empty");
    const auto missing = [&] {
        bool doneB = false;
        EXPECT_EQ(CT_FindMissing::Start(*i_databaseP, {}, [&](OSErr err) { doneB = !Failed(err); }), noErr);
        EXPECT_TRUE(RunUntil([&] { return doneB; }));
        std::string names;
        for (CSong* const songP : {&pair, &clip, &naked, &empty})
            if (songP->Meta().GetBool("Msng"_key) == BoolValueType::kTrue) names += songP->Name().UTF8() + " ";
        return names;
    };
    EXPECT_EQ(missing(), "Naked Empty ");
    Advance(1.0);   // what the making of the songs set off
    ASSERT_TRUE(RunUntil([&] { return CThreadManager::ThreadCount() <= i_threadsL; }));   // and has looked
    i_databaseP->SetDirty(false);
    std::filesystem::rename(i_folder / "out", i_folder / "away");
    EXPECT_EQ(missing(), "Pair Clip Naked Empty ");
    std::filesystem::rename(i_folder / "away", i_folder / "out");
    std::filesystem::remove(i_folder / "out/pair.cdg");
    EXPECT_EQ(missing(), "Pair Naked Empty ");
    Make("out/pair.cdg");
    Make("out/naked.mp3");
    EXPECT_EQ(missing(), "Empty ");
    EXPECT_EQ(naked.FileRef(SDB_SongFile_AUDIO).GetName(), "naked.mp3");
    // A volume that came or went: what lies elsewhere is not looked at.
    const auto missingBelow = [&](const char* folderZ) {
        bool doneB = false;
        EXPECT_EQ(CT_FindMissing::StartBelow(*i_databaseP, {i_folder / folderZ}, [&](OSErr) { doneB = true; }), noErr);
        EXPECT_TRUE(RunUntil([&] { return doneB; }));
        return pair.Meta().GetBool("Msng"_key) == BoolValueType::kTrue;
    };
    std::filesystem::rename(i_folder / "out", i_folder / "away");
    EXPECT_FALSE(missingBelow("ou"));
    EXPECT_TRUE(missingBelow("out"));
    std::filesystem::rename(i_folder / "away", i_folder / "out");
    EXPECT_EQ(i_databaseP->MissingSongs().size(), 4U);
    bool markedB = false;
    EXPECT_EQ(CT_FindMissing::StartMarked(*i_databaseP, [&](OSErr) { markedB = true; }), noErr);
    EXPECT_TRUE(RunUntil([&] { return markedB; }));
    EXPECT_EQ(i_databaseP->MissingSongs(), std::vector{empty.GetSongID()});
    std::filesystem::remove(i_folder / "out/pair.cdg");
    EXPECT_TRUE(missingBelow("out"));
    Make("out/pair.cdg");
    EXPECT_FALSE(missingBelow("elsewhere"));   // one that is missing may be anywhere
    i_databaseP->SetDirty(false);
    (void)pair.SetFile(SDB_SongFile_VIDEO, CFileRef(i_folder / "nowhere/pair.cdg"));
    (void)pair.SetFile(SDB_SongFile_AUDIO, CFileRef(i_folder / "nowhere/pair.mp3"));
    i_databaseP->FlushChanges();   // a changed place is looked at without being asked
    EXPECT_TRUE(RunUntil([&] { return pair.Meta().GetBool("Msng"_key) == BoolValueType::kTrue; }));
}

// ---- Renames ----

class SongRenames : public SongNames {
protected:
    CSongFiles FilesOf(const CSong& song) { return {song, i_databaseP->Settings()}; }
    OSErr Conform(std::vector<SongID> songs) {
        std::optional<OSErr> result;
        EXPECT_EQ(CT_ConformNames::Start(*i_databaseP, std::move(songs), [&](OSErr err) { result = err; }), noErr);
        EXPECT_TRUE(RunUntil([&] { return result.has_value(); }));
        return result.value_or(abortErr);
    }
};

TEST_F(SongRenames, AllOrNoneWhateverFails) {
    CSong& song = PairIn("Music", "old", "New", "");
    ASSERT_EQ(song.SetFile(SDB_SongFile_ZIP, CFileRef(Make("Music/deep/old.ZIP"))), noErr);
    const std::string before = Tree("Music");
    // Each rename in turn fails; the first round in which none is left to fail goes through.
    long failuresL = 0;
    for (long failingL = 1;; ++failingL) {
        CFileCalls_Faults faults(CFileCalls::Get());
        long renamesL = 0;
        faults.SetWatch([&](long n, const char* callZ, const Path&) {
            if (std::string_view(callZ) == "rename new" && ++renamesL == failingL) faults.FailAt(n, EIO);
        });
        CFileCalls::Install(&faults);
        const SongRename renamed = SongRename::Run(*i_filesP->Keeper(), FilesOf(song), "New");
        EndFaults();
        if (!Failed(renamed.err)) break;
        ++failuresL;
        ASSERT_EQ(renamed.err, ioErr);
        ASSERT_TRUE(renamed.moved.empty()) << failingL;
        ASSERT_EQ(Tree("Music"), before) << failingL;
    }
    EXPECT_EQ(failuresL, 3);
    EXPECT_EQ(Tree("Music"), "New.cdg|New.mp3|deep/New.ZIP");
}

TEST_F(SongRenames, WhatCannotGoBackIsTold) {
    CSong& song = PairIn("Music", "old", "New", "");
    CFileCalls_Faults faults(CFileCalls::Get());
    long renamesL = 0;
    faults.SetWatch([&](long n, const char* callZ, const Path&) {
        if (std::string_view(callZ) == "rename new" && ++renamesL == 2) faults.FailFrom(n, EIO);
    });
    CFileCalls::Install(&faults);
    const SongRename renamed = SongRename::Run(*i_filesP->Keeper(), FilesOf(song), "New");
    EndFaults();
    EXPECT_EQ(renamed.err, ioErr);
    ASSERT_EQ(renamed.moved.size(), 1U);
    EXPECT_EQ(renamed.moved[0].second.GetPath(), i_folder / "Music/New.mp3");
    EXPECT_EQ(Tree("Music"), "New.mp3|old.cdg");
}

TEST_F(SongRenames, ATakenNameGetsANumberForAllFiles) {
    Make("Music/New.cdg", "another song's");
    Make("Music/New 2.mp3", "a third one's");
    CSong& song = PairIn("Music", "old", "New", "");
    EXPECT_EQ(SongRename::Run(*i_filesP->Keeper(), FilesOf(song), "New").moved.size(), 2U);
    EXPECT_EQ(Tree("Music"), "New 2.mp3|New 3.cdg|New 3.mp3|New.cdg");
    EXPECT_EQ(Read(i_folder / "Music/New.cdg"), "another song's");
    (void)song.SetFile(SDB_SongFile_AUDIO, CFileRef(i_folder / "Music/New 3.mp3"));
    (void)song.SetFile(SDB_SongFile_VIDEO, CFileRef(i_folder / "Music/New 3.cdg"));
    EXPECT_TRUE(SongRename::Run(*i_filesP->Keeper(), FilesOf(song), "New").moved.empty());   // it keeps its number
    // A long name is cut alike for all, and what is only referenced keeps its name.
    CSong& other = PairIn("Music", "x", "", "");
    ASSERT_EQ(other.SetFile(SDB_SongFile_PROJECT, CFileRef(Make("out/x.lrc"))), noErr);
    std::string longName;
    for (int n = 0; n < 90; ++n) longName += "歌";
    const SongRename renamed = SongRename::Run(*i_filesP->Keeper(), FilesOf(other), longName);
    ASSERT_EQ(renamed.moved.size(), 2U);
    EXPECT_EQ(renamed.moved[0].second.GetPath().stem(), renamed.moved[1].second.GetPath().stem());
    EXPECT_EQ(renamed.moved[0].second.GetName().size(), 253U);
    EXPECT_EQ(Tree("out"), "x.lrc");
}

/** As a disc that keeps capitals and does not tell them apart. */
class CFileCalls_NoCase final : public CFileCalls_Linux {
public:
    int Look(const Path& path, bool followB, FileInfo& info) override {
        return CFileCalls_Linux::Look(Real(path), followB, info);
    }
    int RenameNew(const Path& from, const Path& to) override {
        FileInfo info;
        if (Look(to, false, info) == 0) return EEXIST;   // also when it is `from` itself
        return CFileCalls_Linux::RenameNew(Real(from), to);
    }

private:
    static Path Real(const Path& path) {
        std::error_code err;
        for (const auto& entry : std::filesystem::directory_iterator(path.parent_path(), err))
            if (SuperString(entry.path().filename().string()).Lowercased() ==
                SuperString(path.filename().string()).Lowercased())
                return entry.path();
        return path;
    }
};

TEST_F(SongRenames, OtherCapitalsAreTheSameFileOnADiscThatIgnoresThem) {
    Make("Music/QUEEN.mp3", "another song's");
    CSong& song = PairIn("Music", "abba", "Abba", "");
    CFileCalls_NoCase calls;
    CFileCalls::Install(&calls);
    const SongRename renamed = SongRename::Run(*i_filesP->Keeper(), FilesOf(song), "Abba");
    EXPECT_EQ(renamed.err, noErr);
    EXPECT_EQ(Tree("Music"), "Abba.cdg|Abba.mp3|QUEEN.mp3");
    for (const auto& [type, file] : renamed.moved) (void)song.SetFile(type, file);
    std::string unique;
    EXPECT_EQ(FSrMakeUniqueName(CFileRef(i_folder / "Music"), "ABBA.mp3", unique, song.FileRef(SDB_SongFile_AUDIO)),
              noErr);
    EXPECT_EQ(unique, "ABBA.mp3");
    EXPECT_EQ(SongRename::Run(*i_filesP->Keeper(), FilesOf(song), "Queen").err, noErr);
    EXPECT_EQ(Tree("Music"), "QUEEN.mp3|Queen 2.cdg|Queen 2.mp3");
    (void)song.SetFile(SDB_SongFile_AUDIO, CFileRef(i_folder / "Music/Queen 2.mp3"));
    (void)Song("Other").SetFile(SDB_SongFile_AUDIO, CFileRef(i_folder / "Music/QUEEN 2.MP3"));   // the same one
    EXPECT_EQ(i_filesP->Keeper()->Delete(song.FileRef(SDB_SongFile_AUDIO), song.GetSongID()), alreadyReportedErr);
    CFileCalls::Install(nullptr);
}

TEST_F(SongRenames, TheTaskRenamesWhatIsKnownAndNotWhatPlays) {
    ChangeSettings([](LibrarySettings& settings) { settings.nameTemplate = "R - S"; });
    CSong& known = PairIn("Music", "1", "One", "A");
    CSong& unknown = PairIn("Music", "2", "Two", "");
    CSong& playing = PairIn("Music", "3", "Three", "B");
    i_databaseP->SetPlayingSong(playing.GetSongID());
    const std::vector<SongID> all = {known.GetSongID(), unknown.GetSongID(), playing.GetSongID(), SongID{999}};
    EXPECT_EQ(Conform(all), noErr);
    EXPECT_EQ(Tree("Music"), "2.cdg|2.mp3|3.cdg|3.mp3|A - One.cdg|A - One.mp3");
    EXPECT_EQ(known.FileRef(SDB_SongFile_AUDIO).GetName(), "A - One.mp3");
    EXPECT_TRUE(Logged("$$ contains unknowns"));
    i_databaseP->SetPlayingSong(SongID{0});   // now it gets its name
    EXPECT_TRUE(RunUntil([&] { return playing.FileRef(SDB_SongFile_VIDEO).GetName() == "B - Three.cdg"; }));
    ChangeSettings([](LibrarySettings& settings) { settings.nameTemplate = "S#"; });
    EXPECT_EQ(Conform(all), paramErr);
    EXPECT_EQ(s_alerts, std::vector<std::string>{kName_IllegalZ});
    ChangeSettings([](LibrarySettings& settings) { settings.conformNamesB = false; });
    EXPECT_EQ(Conform(all), noErr);
    EXPECT_EQ(i_databaseP->PlayLists().size(), 1U);
}

TEST_F(SongRenames, ARunOfEditsGivesTheFilesTheirNameOnce) {
    ChangeSettings([](LibrarySettings& settings) { settings.nameTemplate = "R - S"; });
    CSong& song = Song("", "");
    {
        const CSongDatabase::Batch batch(*i_databaseP);   // as files come in: their names are their owner's
        ASSERT_EQ(song.SetFile(SDB_SongFile_AUDIO, CFileRef(Make("Music/1.mp3"))), noErr);
        song.Meta().SetString("name"_key, "Title");
        song.Meta().SetString("arts"_key, "Artist");
    }
    Advance(0.25);
    Advance(100);
    CFileCalls_Faults calls(CFileCalls::Get());
    std::atomic<long> renamesL = 0;
    calls.SetWatch([&](long, const char* callZ, const Path&) {
        if (std::string_view(callZ) == "rename new") ++renamesL;
    });
    CFileCalls::Install(&calls);
    for (const char* nameZ : {"One", "Two", "Three"}) {
        song.Meta().SetString("name"_key, nameZ);
        Advance(0.25);
        Advance(9);
    }
    EXPECT_EQ(Tree("Music"), "1.mp3");
    Advance(1);
    EXPECT_TRUE(RunUntil([&] { return Tree("Music") == "Artist - Three.mp3"; })) << Tree("Music");
    EXPECT_TRUE(RunUntil([&] { return song.FileRef(SDB_SongFile_AUDIO).GetName() == "Artist - Three.mp3"; }));
    Advance(0.25);
    EndFaults();
    EXPECT_EQ(renamesL, 1);   // not one an edit, and none for what came in one go
    EXPECT_TRUE(i_databaseP->IsDirty());
}

TEST_F(SongRenames, TwoFailuresAreToldOnceAndGiveTwoRows) {
    ChangeSettings([](LibrarySettings& settings) {
        settings.nameTemplate = "S";
        settings.pushEditsB = false;   // hours go by here: nobody else renames meanwhile
    });
    CSong& one = PairIn("Music", "1", "One", "");
    CSong& two = PairIn("Music", "2", "Two", "");
    const auto fail = [&](const CSong& song) {
        CFileCalls_Faults faults(CFileCalls::Get());
        faults.SetWatch([&](long n, const char* callZ, const Path&) {
            if (std::string_view(callZ) == "rename new") faults.FailAt(n, EROFS);
        });
        CFileCalls::Install(&faults);
        EXPECT_EQ(Conform({song.GetSongID()}), noErr);
        EndFaults();
        Advance(0.1);
    };
    fail(one);
    fail(one);
    fail(two);
    EXPECT_TRUE(Logged("could not rename song: Two"));
    ASSERT_EQ(i_above.i_told.size(), 1U);
    EXPECT_TRUE(i_above.i_told[0].starts_with("Error Renaming Songs: ")) << i_above.i_told[0];
    ASSERT_EQ(i_databaseP->PlayLists().size(), 2U);
    const CPlayList& list = *i_databaseP->PlayLists()[1];
    EXPECT_EQ(list.Name(), "* Songs Not Renamed");
    EXPECT_TRUE(list.IsHidden());
    EXPECT_EQ(Songs(list), (std::vector<std::int32_t>{Number(one.GetSongID()), Number(two.GetSongID())}));
    Advance(7200.0);   // with the tenths above: over
    fail(two);
    ASSERT_EQ(i_above.i_told.size(), 2U);
    i_above.i_act();
    EXPECT_EQ(i_above.i_stopped, "Warn if there is a problem updating meta");
    i_filesP->Warnings().Add(SongWarning::kCorruptMP3, one.GetSongID());   // a kind of its own
    ASSERT_EQ(i_above.i_told.size(), 3U);
    EXPECT_TRUE(i_above.i_told[2].starts_with("Corrupted MP3 File: ")) << i_above.i_told[2];
    ChangeSettings([](LibrarySettings& settings) { settings.warnMP3B = false; });
    Advance(9000.0);
    i_filesP->Warnings().Add(SongWarning::kCorruptMP3, two.GetSongID());
    Advance(1.0);
    EXPECT_EQ(i_above.i_told.size(), 3U);
    EXPECT_EQ(i_databaseP->PlayLists()[2]->Count(), 2U);
}

}   // namespace
