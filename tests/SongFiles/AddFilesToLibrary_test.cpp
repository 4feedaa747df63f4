#include "SongFiles/AddFilesToLibrary.h"

#include "Library/SongFileFacts.h"
#include "SongFiles/FileTitle.h"
#include "SongFiles/MakeSongOfFiles.h"
#include "SongFiles/SongFileTest.h"

namespace {

TEST(FileTitle, TableOfNames) {
    struct Row {
        const char *baseZ, *resultZ;   // title | artist | album | track
    };
    for (const auto& [baseZ, resultZ] : {
             Row{"Title", "Title|||0"},
             Row{"Artist - Title", "Title|Artist||0"},
             Row{"AC-DC - T.N.T. - Live", "T.N.T. - Live|AC-DC||0"},
             Row{"SC8123-05 - Artist - Title", "Title|Artist|SC8123|5"},
             Row{"SC-8123-05 - Title", "Title||SC-8123|5"},
             Row{"SC8123-5 - Title", "Title|SC8123-5||0"},   // no track of two digits: an artist
             Row{"Jay-05 - Title", "Title|Jay-05||0"},
             Row{"ABC-05 - Title", "Title|ABC-05||0"},
             Row{" Björk  -  Jóga ", "Jóga|Björk||0"},
             Row{"Artist - ", "Artist -|||0"},
             Row{" - Title", "- Title|||0"},
             Row{"", "|||0"},
         }) {
        const FileTitle t = FileTitle::Of(baseZ);
        EXPECT_EQ(t.title + "|" + t.artist + "|" + t.album + "|" + std::to_string(t.trackL), resultZ) << baseZ;
    }
}

class AddFiles : public SongFileTest {
protected:
    /** "artist/title: files" of each song that is answered. */
    std::vector<std::string> Added(const std::vector<Path>& names) {
        std::vector<Path> paths;
        for (const Path& name : names) paths.push_back(i_folder / name);
        i_refused.clear();
        std::vector<std::string> lines;
        for (const SongID id : AddFilesToLibrary(*i_databaseP, paths, &i_refused)) {
            CSong* const songP = i_databaseP->GetSong(id);
            std::string line = songP->Meta().GetString("arts"_key).UTF8() + "/" + songP->Name().UTF8() + ":";
            for (const SDB_SongFile type : {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO, SDB_SongFile_ZIP})
                if (const CFileRef ref = songP->FileRef(type); !ref.IsEmpty()) line += " " + ref.GetName();
            lines.push_back(line);
            EXPECT_NE(songP->LibraryItem(), SDB_kNoItem);
        }
        return lines;
    }
    using Lines = std::vector<std::string>;
    std::vector<RefusedFile> i_refused;
};

TEST_F(AddFiles, PairsAreOneSongWhateverWasChosenOfThem) {
    for (const char* nameZ :
         {"out/A - One.mp3", "out/A - One.cdg", "out/Two.CDG", "out/Two.MP3", "out/clip.mp4", "out/alone.mp3",
          "out/naked.cdg", "out/notes.txt", "out/.hidden.mp3", "out/sub/A - One.mp3", "out/sub/both.mp4",
          "out/sub/both.cdg", "out/sub/w.wav", "out/sub/w.mp3", "out/sub/w.cdg"})
        Make(nameZ);
    EXPECT_EQ(Added({"out/A - One.cdg", "out/A - One.mp3", "out/Two.MP3"}),
              (Lines{"A/One: A - One.mp3 A - One.cdg", "/Two: Two.MP3 Two.CDG"}));
    EXPECT_EQ(i_refused.size(), 0U);
    EXPECT_TRUE(i_databaseP->IsDirty());
    // The folder brings what is new; what is there answers with its song. The graphics of the folder above belong to
    // the sound below, as they do when a song is played, and so that pair is there already.
    EXPECT_EQ(Added({"out"}), (Lines{"A/One: A - One.mp3 A - One.cdg", "/alone: alone.mp3", "/clip: clip.mp4",
                                     "/Two: Two.MP3 Two.CDG", "/both: both.mp4 both.cdg", "/w: w.wav w.cdg"}));
    ASSERT_EQ(i_refused.size(), 1U);
    EXPECT_EQ(i_refused.front().path, i_folder / "out/naked.cdg");
    EXPECT_EQ(i_databaseP->Library().Count(), 6U);
    ChangeSettings([](LibrarySettings& settings) { settings.requireAudioB = false; });
    EXPECT_EQ(Added({"out/naked.cdg"}), Lines{"/naked: naked.cdg"});
    EXPECT_FALSE(i_databaseP->IsAddingToLibrary());
}

TEST_F(AddFiles, WhatIsMadeIsInTheLibraryInTheCourseOfItAndWhoIsToldHoldsNothingUp) {
    constexpr int kFiles = 350;
    for (int n = 0; n < kFiles; ++n) Make("out/" + std::to_string(n) + ".mp3");
    struct Watcher final : CListWatcher {
        void ItemsChanged(PlaylistID, ListMessage message, std::span<const PLItemID> items) override {
            if (message == ListMessage::kAdded) blocks.push_back(items.size());
        }
        std::vector<std::size_t> blocks;
    } watcher;
    i_databaseP->AddWatcher(watcher);
    std::optional<bool> addingB;
    ASSERT_EQ(AddFilesToLibrary(*i_databaseP, std::vector<Path>{i_folder / "out"},
                                [&](const AddedFiles&) { addingB = i_databaseP->IsAddingToLibrary(); }),
              noErr);
    i_clock.Advance(3);   // it takes its time
    ASSERT_TRUE(RunUntil([&] { return addingB.has_value(); }));
    EXPECT_FALSE(*addingB);
    EXPECT_EQ(watcher.blocks, (std::vector<std::size_t>{100, 250}));
    EXPECT_TRUE(i_databaseP->IsDirty());
    i_databaseP->RemoveWatcher(watcher);
}

TEST_F(AddFiles, SizeFormatAndDayAreNoted) {
    const CFDate day{700'000'000};   // in 2023
    const auto age = [&](const Path& file) {
        std::filesystem::last_write_time(
            file, std::chrono::file_clock::from_sys(std::chrono::sys_seconds(std::chrono::seconds(1'678'307'200))));
    };
    age(Make("out/One.mp3", "12345"));
    age(Make("out/One.cdg", "678"));
    std::filesystem::resize_file(Make("out/Big.mp4"), 3ULL << 30);   // a hole
    age(i_folder / "out/Big.mp4");
    const auto facts = [](CSongDatabase& database) {
        std::string lines;
        for (const SongID id : database.Songs()->Ids()) {
            CMeta& meta = database.GetSong(id)->Meta();
            lines += std::to_string(SizeOfStored(meta.GetInteger("SIZE"_key))) + " " +
                     meta.GetString("Frmt"_key).UTF8() + "|";
        }
        return lines;
    };
    const double before = static_cast<double>(std::time(nullptr)) - 978307200;
    (void)Added({"out/One.cdg", "out/Big.mp4"});
    const std::string seen = facts(*i_databaseP);
    EXPECT_TRUE(seen.find("8 MP3|") != std::string::npos && seen.find("3221225472 MP4|") != std::string::npos) << seen;
    for (const SongID id : i_databaseP->Songs()->Ids())
        EXPECT_GE(i_databaseP->GetSong(id)->Meta().GetDate("DAdd"_key)->absoluteT, before);
    // A library that is made of what lies there: the files' own dates.
    TestDatabaseHost host;
    CSongDatabase other(host);
    for (const SongFileSet& set :
         SongFileSets::Gather(std::vector<Path>{i_folder / "out"}, {}, [] { return false; }).sets)
        (void)MakeSongOfFiles(other, set, DateAdded::kFile);
    ASSERT_EQ(other.Songs()->Count(), 2U);
    EXPECT_EQ(facts(other).size(), seen.size());
    for (const SongID id : other.Songs()->Ids()) EXPECT_EQ(other.GetSong(id)->Meta().GetDate("DAdd"_key), day);
}

TEST_F(AddFiles, WhatIsNoSongIsRefused) {
    Make("out/notes.txt");
    Make("out/broken.zip", "PK no zip");
    Python(i_folder / "out/good.zip",
           "f = zipfile.ZipFile(z, 'w'); f.writestr('x.mp3', 'a'); f.writestr('x.cdg', 'b')");
    Python(i_folder / "out/texts.zip", "zipfile.ZipFile(z, 'w').writestr('x.txt', 'a')");
    EXPECT_EQ(Added({"out/notes.txt", "out/none.mp3", "out/broken.zip", "out/texts.zip", "out/good.zip"}),
              Lines{"/good: good.zip"});
    ASSERT_EQ(i_refused.size(), 4U);
    EXPECT_EQ(i_refused[1].err, fnfErr);
    EXPECT_TRUE(Logged("### Error not added: " + (i_folder / "out/notes.txt").string()));
    Make("out/Notes.KAR");
    EXPECT_EQ(Added({"out/Notes.KAR"}), Lines{});
    EXPECT_EQ(i_refused.at(0).why, RefusedFile::Why::kMidi);
    ChangeSettings([](LibrarySettings& settings) { settings.launchMidiB = true; });
    EXPECT_EQ(Added({"out/Notes.KAR"}), Lines{"/Notes: Notes.KAR"});
}

TEST_F(AddFiles, ALinkBackToAFolderEnds) {
    Make("out/a/x.mp3");
    std::filesystem::create_directory_symlink("..", i_folder / "out/a/up");
    EXPECT_EQ(Added({"out/a"}).size(), 1U);
}

TEST_F(AddFiles, TheDatabaseMayGoMeanwhile) {
    Make("out/x.mp3");
    bool toldB = false;
    ASSERT_EQ(
        AddFilesToLibrary(*i_databaseP, std::vector<Path>{i_folder / "out"}, [&](const AddedFiles&) { toldB = true; }),
        noErr);
    i_filesP.reset();
    i_databaseP.reset();
    OnWorker([] {});
    EXPECT_FALSE(toldB);
}

}   // namespace
