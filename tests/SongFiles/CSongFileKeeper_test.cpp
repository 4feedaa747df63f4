#include "SongFiles/CSongFileKeeper.h"

#include "SongFiles/CLibraryCommands.h"
#include "SongFiles/CT_FindMissing.h"
#include "SongFiles/SongFileTest.h"

namespace {

class SongFileKeeper : public SongFileTest {
protected:
    SongFileKeeper() {
        ChangeSettings([](LibrarySettings& settings) {
            settings.nameTemplate = "R - S";
            settings.cachedSongsL = 0;
        });
    }
    CSong& With(std::string_view name, std::initializer_list<std::pair<SDB_SongFile, Path>> files) {
        CSong& song = Song(name, "Artist");
        for (const auto& [type, file] : files) EXPECT_EQ(song.SetFile(type, CFileRef(file)), noErr);
        return song;
    }
    SDB_Selection Select(CSong& song) {
        SDB_Selection selection(&i_databaseP->Library());
        selection.SetItems({i_databaseP->AddSongToLibrary(song)});
        return selection;
    }
    bool IsMissing(const CSong& song) const { return song.Meta().Has("Msng"_key); }
};

/** Operations in rows, ways to name a file in columns: the first column is nobody, for whom each one does its work. */
TEST_F(SongFileKeeper, NoOperationTouchesWhatAnotherSongNames) {
    enum Operation { kZip, kTrash, kConform, kPurge, kExchange, kOperations };
    enum Way { kNobody, kSamePath, kOtherRoad, kLink, kAfterTheLook, kWays };
    std::filesystem::create_directory_symlink(i_folder / "Music", i_folder / "Linked");
    std::filesystem::create_directory_symlink(i_folder / "cache", i_folder / "LinkedCache");
    std::filesystem::create_directory(i_folder / "Favourites");
    for (int operation = 0; operation < kOperations; ++operation)
        for (int way = 0; way < kWays; ++way)
            for (const SDB_SongFile half : {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO}) {
                SCOPED_TRACE(testing::Message()
                             << "operation " << operation << ", way " << way << ", half " << static_cast<int>(half));
                const std::string base = std::to_string(operation * 100 + way * 10 + static_cast<int>(half));
                const Path sound = Make("Music/" + base + ".wav", Sound());
                const Path picture = Make("Music/" + base + ".cdg", std::string(9600, 'g'));
                CSong& song = With("Song " + base, {{SDB_SongFile_AUDIO, sound}, {SDB_SongFile_VIDEO, picture}});
                Path shared = half == SDB_SongFile_AUDIO ? sound : picture;
                if (operation == kPurge) {
                    shared =
                        Make(Path("cache") / CacheFileName(song.GetSongID(), song.Name(), SDB_SongFile_VIDEO_CACHE));
                    (void)song.SetFile(SDB_SongFile_VIDEO_CACHE, CFileRef(shared));
                }
                if (operation == kExchange) {
                    shared = Make("Music/" + base + ".zip", "old");
                    (void)song.SetFile(SDB_SongFile_ZIP, CFileRef(shared));
                }
                const std::string before = Read(shared);
                const auto keeperRef = i_filesP->Keeper();
                if (way == kAfterTheLook) (void)keeperRef->MayTouch(CFileRef(shared), song.GetSongID());
                CSong* otherP = nullptr;
                const Path linked = i_folder / (operation == kPurge ? "LinkedCache" : "Linked") / shared.filename();
                const Path favourite = i_folder / "Favourites" / shared.filename();
                if (way == kLink) std::filesystem::create_symlink(shared, favourite);
                if (way != kNobody)
                    otherP = &With("Other",
                                   {{operation == kExchange ? SDB_SongFile_ZIP : half, way == kLink        ? favourite
                                                                                       : way == kOtherRoad ? linked
                                                                                                           : shared}});
                s_alerts.clear();
                {
                    CLibraryCommands commands(*i_databaseP, i_above.i_ui);
                    std::optional<OSErr> result;
                    const auto note = [&](OSErr err) { result = err; };
                    const SongID ids[] = {song.GetSongID()};
                    i_above.i_ui.answers.push_back({kAnswer_Do, false});
                    if (operation == kZip) {
                        ASSERT_EQ(commands.Zip(ids, note), noErr);
                    }
                    if (operation == kTrash) {
                        ASSERT_EQ(commands.TrashOriginals(Select(song), note), noErr);
                    }
                    if (operation == kConform) {
                        ASSERT_EQ(commands.ConformNames(ids, note), noErr);
                    }
                    if (operation == kPurge) {
                        ASSERT_EQ(commands.PurgeCache(note), noErr);
                    }
                    if (operation == kExchange) {
                        ASSERT_EQ(
                            commands.Zipper().Zip(ids[0], OldZip::kReplace,
                                                  [&](OSErr err) { i_host.MainLoop().Post([&, err] { note(err); }); }),
                            noErr);
                    }
                    ASSERT_TRUE(RunUntil([&] { return result.has_value(); }));
                    i_above.i_ui.answers.clear();
                }
                ASSERT_EQ(Read(shared) == before, way != kNobody);
                const bool toldB = operation == kZip || operation == kTrash;
                ASSERT_EQ(s_alerts.size(), toldB && way != kNobody ? 1U : 0U);
                if (otherP != nullptr) {
                    ASSERT_EQ(i_databaseP->RemoveFromLibrary(std::vector{otherP->GetSongID()}), noErr);
                }
                std::filesystem::remove_all(i_folder / "Music");
                std::filesystem::remove_all(i_folder / "cache");
                std::filesystem::create_directories(i_folder / "Music");
                std::filesystem::create_directories(i_folder / "cache");
            }
}

/** Songs that share a file go together: it goes with the last of them, and stays for the one that plays. */
TEST_F(SongFileKeeper, WhatGoesTogetherGoesWhole) {
    for (const bool playsB : {false, true}) {
        const Path sound = Make("Music/s.mp3"), own = Make("Music/own.cdg"), other = Make("Music/other.cdg");
        CSong& one = With("One", {{SDB_SongFile_AUDIO, sound}, {SDB_SongFile_VIDEO, own}});
        CSong& two = With("Two", {{SDB_SongFile_AUDIO, sound}, {SDB_SongFile_VIDEO, other}});
        SDB_Selection both(&i_databaseP->Library());
        both.SetItems({i_databaseP->AddSongToLibrary(one), i_databaseP->AddSongToLibrary(two)});
        CLibraryCommands commands(*i_databaseP, i_above.i_ui);
        std::optional<OSErr> result;
        i_above.i_ui.answers.push_back({kAnswer_Do, false});
        ASSERT_EQ(commands.TrashOriginals(both, [&](OSErr err) { result = err; }), noErr);
        if (playsB) i_databaseP->SetPlayingSong(two.GetSongID());
        ASSERT_TRUE(RunUntil([&] { return result.has_value(); }));
        EXPECT_EQ(Tree("Music"), playsB ? "other.cdg|s.mp3" : "");
        EXPECT_EQ(i_databaseP->Songs()->Count(), playsB ? 1U : 0U);
    }
}

/** A movie has its sound; what lies beside it by its name is another song, and is given back if it was taken once. */
TEST_F(SongFileKeeper, AMovieTakesNobodysSound) {
    const Path movie = Make("Music/x.mp4", "a movie"), sound = Make("Music/x.mp3", "another song's");
    CSong& video = With("Movie", {{SDB_SongFile_VIDEO, movie}});
    CSong& whose = With("Whose", {{SDB_SongFile_AUDIO, sound}});
    CSong& borrower = With("Borrower", {{SDB_SongFile_VIDEO, movie}, {SDB_SongFile_AUDIO, sound}});
    CSong& ownSound =
        With("Own", {{SDB_SongFile_VIDEO, Make("Music/y.mp4")}, {SDB_SongFile_AUDIO, Make("Music/y.mp3")}});
    bool doneB = false;
    ASSERT_EQ(CT_FindMissing::Start(*i_databaseP, {}, [&](OSErr) { doneB = true; }), noErr);
    ASSERT_TRUE(RunUntil([&] { return doneB; }));
    for (const CSong* const songP : {&video, &whose, &borrower, &ownSound}) EXPECT_FALSE(IsMissing(*songP));
    EXPECT_EQ(video.GetStatus(SDB_SongFile_AUDIO), SDB_SongFileStatus_NONE);
    EXPECT_EQ(borrower.GetStatus(SDB_SongFile_AUDIO), SDB_SongFileStatus_NONE);
    EXPECT_EQ(ownSound.GetStatus(SDB_SongFile_AUDIO), SDB_SongFileStatus_MUSIC);
    EXPECT_FALSE(CLibraryCommands::CanZip(ownSound));   // a zip of both would be heard as the movie alone
    CLibraryCommands commands(*i_databaseP, i_above.i_ui);
    std::optional<OSErr> result;
    ASSERT_EQ(commands.Zipper().Zip(ownSound.GetSongID(), OldZip::kRefuse,
                                    [&](OSErr err) { i_host.MainLoop().Post([&result, err] { result = err; }); }),
              noErr);
    ASSERT_TRUE(RunUntil([&] { return result.has_value(); }));
    EXPECT_EQ(result, paramErr);
    EXPECT_EQ(Tree("Music"), "x.mp3|x.mp4|y.mp3|y.mp4");
    EXPECT_EQ(Tree("cache"), "");
}

}   // namespace
