#include "SongFiles/CLibraryCommands.h"

#include "Platform/CFileCalls_Faults.h"
#include "SongFiles/SongFileTest.h"
#include "Threads/CallOnMain.h"

namespace {

class LibraryCommands : public SongFileTest {
protected:
    LibraryCommands() { i_commandsP = std::make_unique<CLibraryCommands>(*i_databaseP, i_above.i_ui); }
    ~LibraryCommands() override { i_commandsP.reset(); }
    /** The rows of these songs in the library's list, into which they go first. */
    SDB_Selection Select(const std::vector<CSong*>& songs) {
        std::vector<PLItemID> items;
        for (CSong* const songP : songs) items.push_back(i_databaseP->AddSongToLibrary(*songP));
        SDB_Selection selection(&i_databaseP->Library());
        selection.SetItems(items);
        return selection;
    }
    /** The next question is answered by its first button. */
    void Yes() { i_above.i_ui.answers.push_back({kAnswer_Do, false}); }
    std::string LastText() const { return i_above.i_ui.questions.empty() ? "" : i_above.i_ui.questions.back().text; }
    std::optional<OSErr> i_result;
    CLibraryCommands::Done Note() {
        i_result.reset();
        return [this](OSErr err) { i_result = err; };
    }
    OSErr Wait() {
        EXPECT_TRUE(RunUntil([&] { return i_result.has_value(); }));
        return i_result.value_or(abortErr);
    }
    std::unique_ptr<CLibraryCommands> i_commandsP;
};

TEST_F(LibraryCommands, TheDialogsSayWhatIsMeantAndTheSafeAnswerIsNo) {
    for (int n = 0; n <= static_cast<int>(LibraryDialog::kLastSong); ++n) {
        const Question question = LibraryQuestion(static_cast<LibraryDialog>(n), "7%d");
        // What the question is about is named, within its words or beneath them.
        EXPECT_NE(question.text.find("7%d"), std::string::npos) << question.text;
        EXPECT_EQ(question.text.find("%1"), std::string::npos) << question.text;
        EXPECT_EQ(question.defaultIndex, question.safeIndex);
        ASSERT_EQ(question.buttons.size(), 2U);
        EXPECT_NE(question.safeIndex, kAnswer_Do);
        EXPECT_EQ(question.buttons[question.safeIndex], "Cancel");
    }
}

TEST_F(LibraryCommands, RemovingAsksAndLeavesTheFiles) {
    CSong& one = PairIn("Music", "1", "One", "");
    CSong& two = PairIn("Music", "2", "Two", "");
    CPlayList& list = UserList();
    (void)Add(list, Number(one.GetSongID()));
    (void)Add(list, Number(two.GetSongID()));
    const SDB_Selection selection = Select({&one, &two});
    EXPECT_EQ(i_commandsP->RemoveFromLibrary(selection), userCanceledErr);   // nobody said yes
    EXPECT_EQ(i_databaseP->Library().Count(), 2U);
    // One that plays is asked for besides, and stopped.
    i_databaseP->SetPlayingSong(two.GetSongID());
    Yes();
    EXPECT_EQ(i_commandsP->RemoveFromLibrary(selection), userCanceledErr);
    EXPECT_EQ(LastText(), LibraryQuestion(LibraryDialog::kDeletePlaying, "“Two”").text);
    EXPECT_EQ(i_databaseP->Library().Count(), 2U);
    Yes();
    Yes();
    EXPECT_EQ(i_commandsP->RemoveFromLibrary(selection), noErr);
    EXPECT_EQ(i_above.i_stopsL, 1);
    EXPECT_EQ(i_databaseP->Library().Count() + list.Count(), 0U);
    EXPECT_EQ(Tree("Music"), "1.cdg|1.mp3|2.cdg|2.mp3");
}

TEST_F(LibraryCommands, TracksLeaveTheirListAlone) {
    CSong& one = PairIn("Music", "1", "One", "");
    (void)Select({&one});
    CPlayList& list = UserList();
    SDB_Selection selection(&list);
    const PLItemID plays = Add(list, Number(one.GetSongID()));
    selection.SetItems({Add(list, Number(one.GetSongID()))});
    i_databaseP->SetPlayingSong(one.GetSongID());
    i_above.i_playingItem = plays;
    EXPECT_EQ(i_commandsP->DeleteTracks(selection), noErr);   // another row of the song that plays
    EXPECT_TRUE(i_above.i_ui.questions.empty());
    selection.SetItems({plays});
    EXPECT_EQ(i_commandsP->DeleteTracks(selection), userCanceledErr);
    EXPECT_EQ(i_above.i_stopsL, 0);
    Yes();
    EXPECT_EQ(i_commandsP->DeleteTracks(selection), noErr);
    EXPECT_EQ(i_above.i_stopsL, 1);
    EXPECT_EQ(list.Count(), 0U);
    EXPECT_EQ(i_databaseP->Library().Count(), 1U);
    for (const char* lineZ : {"Converting Playlist selection to Library selection…", "Clearing Playlist"})
        EXPECT_TRUE(Logged(lineZ)) << lineZ;
    // Two rows of one song, of which one goes.
    const PLItemID twice = i_databaseP->Library().AddItem({one.GetSongID()});
    SDB_Selection duplicate(&i_databaseP->Library());
    duplicate.SetItems({one.LibraryItem(), twice});
    Yes();
    EXPECT_EQ(i_commandsP->RemoveDuplicates(duplicate), noErr);
    EXPECT_EQ(i_databaseP->Library().Items()->UserOrder(), std::vector{one.LibraryItem()});
    EXPECT_EQ(i_commandsP->RemoveDuplicates(duplicate), noErr);   // there is nothing left to ask for
    EXPECT_EQ(i_above.i_ui.questions.size(), 3U);
    i_above.i_ui.alerts.clear();
    EXPECT_EQ(i_commandsP->DeletePlaylist(list.ID()), userCanceledErr);
    Yes();
    EXPECT_EQ(i_commandsP->DeletePlaylist(list.ID()), noErr);
    EXPECT_EQ(LastText(),
              "Are you sure you want to permanently delete playlist “List”?  You can not undo this action.");
    Yes();
    EXPECT_EQ(i_commandsP->DeletePlaylist(kPlaylistID_Library), paramErr);
    ASSERT_EQ(i_above.i_ui.alerts.size(), 1U);
    EXPECT_NE(i_above.i_ui.alerts[0].find("You may need to empty your trash first"), std::string::npos);
}

TEST_F(LibraryCommands, TheTrashTakesOwnedFilesAllOrNone) {
    CSong& owned = PairIn("Music", "1", "One", "");
    CSong& referenced = PairIn("out", "2", "Two", "");
    CSong& held = PairIn("Music", "3", "Three", "");
    const SongID heldID = held.GetSongID();
    const SDB_Selection selection = Select({&owned, &referenced, &held});
    CFileCalls_Faults faults(CFileCalls::Get());
    faults.SetWatch([&](long n, const char*, const Path& path) {
        if (path.filename() == "3.cdg" && path.string().find("rash") != std::string::npos) faults.FailAt(n, EIO);
    });
    Yes();
    CFileCalls::Install(&faults);
    ASSERT_EQ(i_commandsP->TrashOriginals(selection, Note()), noErr);
    const OSErr err = Wait();
    EndFaults();
    EXPECT_NE(err, noErr);
    EXPECT_EQ(i_above.i_ui.alerts.size(), 1U);
    EXPECT_EQ(Tree("Music"), "3.cdg|3.mp3");   // one half could not go: the other came back
    EXPECT_EQ(Tree("out"), "2.cdg|2.mp3");
    EXPECT_EQ(i_databaseP->Library().Count(), 1U);
    EXPECT_NE(i_databaseP->GetSong(heldID), nullptr);
    // The others lie in a trash, with the card that brings them back.
    std::size_t cardsL = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(i_folder))
        if (entry.path().extension() == ".trashinfo") ++cardsL;
    EXPECT_EQ(cardsL, 2U);
}

TEST_F(LibraryCommands, WhatRemovesRowsWaitsForASortAndHoldsUpNobody) {
    const SDB_Selection selection = Select({&PairIn("Music", "1", "One", ""), &PairIn("Music", "2", "Two", "")});
    CPlayList& library = i_databaseP->Library();
    library.SetSort({{"name"_key, true}});
    ASSERT_TRUE(library.IsSorting());
    Yes();
    EXPECT_EQ(i_commandsP->RemoveFromLibrary(selection), noErr);
    EXPECT_EQ(library.Count(), 2U);
    EXPECT_TRUE(RunUntil([&] {
        Advance(0.05);
        return library.Count() == 0;
    }));
    EXPECT_FALSE(library.IsSorting());
}

TEST_F(LibraryCommands, TheTrashLeavesASongThatBeganToPlay) {
    CSong& first = PairIn("Music", "1", "One", "");
    CSong& second = PairIn("Music", "2", "Two", "");
    CSong& third = PairIn("Music", "3", "Three", "");
    const SDB_Selection selection = Select({&first, &second, &third});
    const SongID firstID = first.GetSongID();
    CFileCalls_Faults faults(CFileCalls::Get());
    bool begunB = false;
    faults.SetWatch([&](long, const char*, const Path& path) {   // while the third goes, when the first has gone
        if (path.filename() != "3.mp3" || std::exchange(begunB, true)) return;
        (void)CallOnMain("play", i_databaseP->Self(), [&](CSongDatabase& database) {
            database.SetPlayingSong(firstID);
            return noErr;
        });
    });
    Yes();
    CFileCalls::Install(&faults);
    ASSERT_EQ(i_commandsP->TrashOriginals(selection, Note()), noErr);
    i_databaseP->SetPlayingSong(second.GetSongID());   // before its turn
    EXPECT_EQ(Wait(), opWrErr);
    EndFaults();
    ASSERT_TRUE(begunB);
    EXPECT_EQ(i_above.i_ui.alerts.size(), 1U);
    EXPECT_EQ(Tree("Music"), "1.cdg|1.mp3|2.cdg|2.mp3");
    EXPECT_EQ(i_databaseP->Library().Count(), 2U);
    EXPECT_NE(i_databaseP->GetSong(firstID), nullptr);
}

TEST_F(LibraryCommands, PasteRevealAndLocate) {
    CSong& one = PairIn("out/a b", "1", "One", "");
    CCFDictionary meta;
    meta.Set("arts", SuperString("Pasted"));
    const SongID ids[] = {one.GetSongID()};
    EXPECT_EQ(i_commandsP->Paste(ids, meta), userCanceledErr);
    EXPECT_EQ(one.Meta().GetString("arts"_key), "");
    Yes();
    EXPECT_EQ(i_commandsP->Paste(ids, meta), noErr);
    EXPECT_EQ(one.Meta().GetString("arts"_key), "Pasted");
    (void)i_commandsP->Reveal(ids);
    EXPECT_EQ(i_above.i_ui.pages, std::vector<std::string>{"file://" + i_folder.string() + "/out/a%20b"});
    std::vector<SongID> many;
    for (int n = 0; n < 6; ++n) many.push_back(PairIn("out/" + std::to_string(n), "x", "X", "").GetSongID());
    EXPECT_EQ(i_commandsP->Reveal(many), userCanceledErr);
    EXPECT_EQ(LastText(), "Are you sure you want to reveal 6 songs in the file manager?");
    EXPECT_EQ(i_commandsP->Reveal(std::vector{SongID{999}}), fnfErr);

    std::filesystem::rename(i_folder / "out/a b", i_folder / "elsewhere");
    i_above.i_ui.folders = {std::nullopt, i_folder / "out", i_folder / "elsewhere"};
    EXPECT_EQ(i_commandsP->LocateMissing(ids[0]), userCanceledErr);
    EXPECT_EQ(i_commandsP->LocateMissing(ids[0]), fnfErr);
    EXPECT_EQ(i_commandsP->LocateMissing(ids[0]), noErr);
    EXPECT_EQ(one.FileRef(SDB_SongFile_VIDEO).GetPath(), i_folder / "elsewhere/1.cdg");
}

TEST_F(LibraryCommands, TheCacheKeepsTheNewest) {
    ChangeSettings([](LibrarySettings& settings) { settings.cachedSongsL = 2; });
    std::vector<CSong*> songs;
    const auto at = [&](const Path& file, int ageL) {
        std::filesystem::last_write_time(file,
                                         std::filesystem::file_time_type::clock::now() - std::chrono::hours(ageL));
    };
    for (int n = 0; n < 4; ++n) {
        CSong& song = Song("S" + std::to_string(n));
        songs.push_back(&song);
        for (const SDB_SongFile type : {SDB_SongFile_AUDIO_CACHE, SDB_SongFile_VIDEO_CACHE}) {
            const Path file = Make("cache/" + CacheFileName(song.GetSongID(), song.Name(), type));
            at(file, 10 - n);   // the first is the oldest
            ASSERT_EQ(song.SetFile(type, CFileRef(file)), noErr);
        }
        (void)song.SetFile(SDB_SongFile_AUDIO, CFileRef(Make("out/" + std::to_string(n) + ".mp3")));
    }
    for (const char* nameZ : {"old.bin", "old.cue", "new.bin"})
        at(Make(Path("cache") / nameZ), nameZ[0] == 'o' ? 5 : 1);
    Make("cache/mine.txt");
    CSong& orphan = Song("Orphan");   // its cached sound has gone, and it had nothing else
    (void)orphan.SetFile(SDB_SongFile_AUDIO_CACHE, CFileRef(i_folder / "cache/gone.pcm"));
    i_databaseP->SetPlayingSong(songs[0]->GetSongID());   // the oldest is in use
    EXPECT_EQ(i_above.i_cachedL, 9);

    i_above.i_savingB = true;   // what is written names what would go
    const std::string whole = Tree("cache");
    ASSERT_EQ(i_commandsP->PurgeCache(Note()), noErr);
    EXPECT_TRUE(RunUntil([&] { return Logged("PurgeCache: Sort by date"); }));
    for (int n = 0; n < 20; ++n) i_host.RunLoopPass();
    EXPECT_EQ(Tree("cache"), whole);
    EXPECT_FALSE(i_result.has_value());
    i_above.i_savingB = false;
    EXPECT_EQ(Wait(), noErr);
    EXPECT_TRUE(Logged("number of files: 11, songs allowed: 2, songs to delete: 2"));
    const auto name = [&](int n, const char* extensionZ) {
        return std::to_string(Number(songs[static_cast<std::size_t>(n)]->GetSongID())) + " S" + std::to_string(n) +
               extensionZ;
    };
    EXPECT_EQ(Tree("cache"), name(0, ".cdg") + "|" + name(0, ".pcm") + "|" + name(3, ".cdg") + "|" + name(3, ".pcm") +
                                 "|mine.txt|new.bin");
    EXPECT_EQ(songs[1]->GetStatus(SDB_SongFile_AUDIO_CACHE), SDB_SongFileStatus_NONE);
    EXPECT_EQ(songs[3]->GetStatus(SDB_SongFile_AUDIO_CACHE), SDB_SongFileStatus_CACHE);
    EXPECT_EQ(orphan.GetStatus(SDB_SongFile_AUDIO_CACHE), SDB_SongFileStatus_NONE);
    const std::string kept = Tree("cache");   // exactly at the limit now
    ASSERT_EQ(i_commandsP->PurgeCache(Note()), noErr);
    EXPECT_EQ(Wait(), noErr);
    EXPECT_EQ(Tree("cache"), kept);
}

TEST_F(LibraryCommands, AZippedSongIsUnpackedOnceAndAgainWhenItChanged) {
    const Path zip = i_folder / "Music/z.zip";
    const auto makeZip = [&](const std::string& sound) {
        (void)Python(zip, "f = zipfile.ZipFile(z, 'w', zipfile.ZIP_DEFLATED)\nf.writestr('in/a.mp3', '" + sound +
                              "')\nf.writestr('other/a.cdg', 'picture')\nf.writestr('../evil.txt', 'x')");
    };
    makeZip("sound");
    CSong& song = Song("Z");
    ASSERT_EQ(song.SetFile(SDB_SongFile_ZIP, CFileRef(zip)), noErr);
    UnpackedSong first, second, third;
    ASSERT_EQ(i_commandsP->Unpacker().Unpack(song.GetSongID(), first), noErr);
    EXPECT_EQ(Read(first.audio.GetPath()), "sound");
    EXPECT_EQ(Read(first.graphics.GetPath()), "picture");
    EXPECT_EQ(song.GetStatus(SDB_SongFile_UNPACK), SDB_SongFileStatus_TEMP);
    // The music folder moves while the program runs.
    std::filesystem::rename(i_folder / "Music", i_folder / "Vopla Music");
    ChangeSettings([&](LibrarySettings& settings) { settings.musicFolder = i_folder / "Vopla Music"; });
    song.SetFileRef(SDB_SongFile_ZIP, SDB_SongFileStatus_MUSIC, CFileRef(Path("z.zip")));
    ASSERT_EQ(i_commandsP->Unpacker().Unpack(song.GetSongID(), second), noErr);
    EXPECT_EQ(second.audio.GetPath(), first.audio.GetPath());   // it is the same zip
    std::filesystem::rename(i_folder / "Vopla Music", i_folder / "Music");
    ChangeSettings([&](LibrarySettings& settings) { settings.musicFolder = i_folder / "Music"; });
    ASSERT_EQ(i_commandsP->Unpacker().Unpack(song.GetSongID(), second), noErr);
    EXPECT_EQ(second.audio.GetPath(), first.audio.GetPath());
    makeZip("another sound");
    ASSERT_EQ(i_commandsP->Unpacker().Unpack(song.GetSongID(), third), noErr);
    EXPECT_EQ(Read(third.audio.GetPath()), "another sound");
    EXPECT_FALSE(std::filesystem::exists(first.audio.GetPath()));
    std::ofstream(zip) << "no zip";
    EXPECT_NE(i_commandsP->Unpacker().Unpack(song.GetSongID(), second), noErr);
    EXPECT_EQ(i_commandsP->Unpacker().Unpack(SongID{999}, second), fnfErr);
    const Path last = third.audio.GetPath();
    i_commandsP.reset();
    EXPECT_FALSE(std::filesystem::exists(last));
}

}   // namespace
