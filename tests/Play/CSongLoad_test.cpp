#include "Play/CSongLoad.h"

#include "Play/PlayTest.h"

namespace {

TEST_F(PlayTest, FilesThatAreGoneAndNoSongsAtAllAreTold) {
    Add(Sound("gone.wav", 1));
    Add({}, Graphics("naked.cdg", 300));
    std::ofstream(i_folder / "bad.wav") << "no music in here";
    Add(i_folder / "bad.wav");
    i_preferences.SetBool("Stop between tracks", true);
    std::filesystem::remove(i_folder / "gone.wav");
    const struct {
        std::size_t row;
        const char* alertZ;
    } cases[] = {{0, "Could not find the song “gone”"},
                 {1, "Could not find the song “naked”"},
                 {2, "The song “bad” could not be played"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.alertZ);
        ASSERT_EQ(Play(c.row), noErr);
        ASSERT_TRUE(RunUntilIdle());
        EXPECT_NE(i_controlP->PlayErr(), noErr);
        ASSERT_FALSE(AlertsSoFar().empty());
        EXPECT_TRUE(AlertsSoFar().back().starts_with(c.alertZ)) << AlertsSoFar().back();
        EXPECT_EQ(AlertsSoFar().size(), static_cast<std::size_t>(&c - cases) + 1);   // one each
    }
    EXPECT_NE(Details().back().find((i_folder / "bad.wav").string()), std::string::npos);
    EXPECT_EQ(i_controlP->Play(i_listP->ID(), PLItemID{99}), fnfErr);
    EXPECT_EQ(i_controlP->Play(PlaylistID{4711}, Row(0)), fnfErr);
}

/** The thread that loads a song ahead may begin after the song was played. */
TEST_F(PlayTest, ALoadAheadThatComesTooLateLeavesTheSongThatPlaysAlone) {
    CSong& song = Add(Sound("a.wav", 60), Graphics("a.cdg", 18000));
    const Ref<CSongLoad> loadP = MakeRef<CSongLoad>(ReadSongPlaySpec(song, i_preferences));
    ASSERT_EQ(OnWorker([&] { return loadP->Load(nullptr); }), noErr);
    const CAS_AudioRing* const ringP = loadP->Audio().Get();
    const CSubCodeStream_Memory* const graphicsP = loadP->Graphics();
    Sound("a.wav", 30);   // another file of its name
    EXPECT_EQ(OnWorker([&] { return loadP->Load(nullptr, LoadFor::kLater); }), noErr);
    EXPECT_EQ(loadP->Audio().Get(), ringP);
    EXPECT_EQ(loadP->Graphics(), graphicsP);
}

TEST_F(PlayTest, FilesThatWereMovedOrRenamedAreFoundAndNoted) {
    LibrarySettings settings;
    settings.musicFolder = i_folder / "Music";
    i_databaseP->SetSettings(settings);
    std::filesystem::create_directories(i_folder / "Music");
    CSong& moved = Add("/gone/Vopla Music/moved.wav");
    std::filesystem::rename(Sound("moved.wav", 1), i_folder / "Music/moved.wav");
    CSong& half = Add(i_folder / "half.ogg", Graphics("half.cdg", 300));   // converted by somebody
    Sound("half.wav", 1);
    CSong& gone = Add(i_folder / "gone.wav");
    const auto isMissing = [](CSong& song) { return song.Meta().GetBool("Msng"_key) == BoolValueType::kTrue; };
    half.SetMissing(true);
    i_preferences.SetBool("Stop between tracks", true);
    ASSERT_TRUE(Starts(0));
    EXPECT_EQ(moved.FileRef(SDB_SongFile_AUDIO).GetPath(), i_folder / "Music/moved.wav");
    ASSERT_TRUE(Starts(1));
    EXPECT_EQ(half.FileRef(SDB_SongFile_AUDIO).GetPath(), i_folder / "half.wav");
    EXPECT_TRUE(RunUntil([&] { return !isMissing(half); }));
    ASSERT_EQ(Play(2), noErr);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(AlertsSoFar(), Words{MissingSongText("gone")});
    EXPECT_TRUE(RunUntil([&] { return isMissing(gone); }));
}

TEST_F(PlayTest, GraphicsAlonePlayWhenTheyMay) {
    Add({}, Graphics("naked.cdg", 300));
    i_preferences.SetBool("Require Audio (no naked CDG files)", false);
    i_preferences.SetBool("Stop between tracks", true);
    ASSERT_TRUE(Starts(0));
    EXPECT_EQ(i_controlP->EndTime300(), 290);   // what comes behind is drawn into the border, and not seen
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung, (Words{"naked"}));
    EXPECT_EQ(i_device.openedL, 0);   // the device was left alone
}

TEST_F(PlayTest, AMidiFileIsHandedToTheDesktop) {
    std::ofstream(i_folder / "tune.mid") << "MThd";
    std::ofstream(i_folder / "xdg-open") << "#!/bin/sh\nprintf %s \"$1\" >'" << (i_folder / "launched").string()
                                         << "'\n";
    std::filesystem::permissions(i_folder / "xdg-open", std::filesystem::perms::owner_all);
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (i_folder.string() + ":" + path).c_str(), 1);
    Add(i_folder / "tune.mid");
    i_preferences.SetBool("Launch Midi Files", true);
    ASSERT_EQ(Play(0), noErr);
    EXPECT_TRUE(RunUntilIdle());
    EXPECT_TRUE(RunUntil([&] {
        std::string text;
        std::ifstream(i_folder / "launched") >> text;
        return text == (i_folder / "tune.mid").string();
    }));
    ::setenv("PATH", path.c_str(), 1);
    EXPECT_EQ(AlertsSoFar(), Words());
}

/** Zips and movies come from other programs. */
TEST_F(PlayTest, AZipAndAMovieGoTheSameRoad) {
    Sound("song.wav", 1);
    Graphics("song.cdg", 300);
    const std::string folder = i_folder.string();
    const std::string make =
        "cd " + folder +
        " && python3 -c \"import zipfile; z = zipfile.ZipFile('song.zip', 'w', "
        "zipfile.ZIP_DEFLATED); z.write('song.wav'); z.write('song.cdg'); z.close()\" && "
        "ffmpeg -v error -nostdin -f lavfi -i testsrc=s=64x48:r=25:d=2 -i song.wav -map 0 -map 1 "
        "-c:v mpeg4 -c:a aac movie.mp4 && ffmpeg -v error -nostdin -i movie.mp4 -an -c copy silent.mp4";
    ASSERT_EQ(std::system(make.c_str()), 0);
    for (const char* const nameZ : {"song.wav", "song.cdg"}) std::filesystem::remove(i_folder / nameZ);
    i_preferences.SetBool("Stop between tracks", true);
    const struct {
        const char* nameZ;
        SongKind kind;
        long end300, within;
        bool pictureB;
    } cases[] = {{"song.zip", SongKind::kSoundAndGraphics, 300, 1, true},
                 {"movie.mp4", SongKind::kVideo, 600, 10, true},
                 {"silent.mp4", SongKind::kVideo, 600, 10, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.nameZ);
        Add(i_folder / c.nameZ);
        ASSERT_TRUE(Starts(i_listP->Count() - 1));
        EXPECT_EQ(i_controlP->Current()->Files().Kind(), c.kind);
        EXPECT_NEAR(static_cast<double>(i_controlP->EndTime300()), static_cast<double>(c.end300),
                    static_cast<double>(c.within));
        ASSERT_EQ(i_controlP->Current()->Graphics() != nullptr, c.pictureB);
        if (c.kind == SongKind::kVideo) {
            i_controlP->SetPaused(true);
            i_controlP->SeekTo300(150);
            const CAS_QuickTimeVideo* const movieP = i_controlP->Current()->Files().Movie().Get();
            EXPECT_TRUE(RunUntil([&] { return movieP->ShownTime() >= 0.45 && movieP->ShownTime() <= 0.5; }))
                << movieP->ShownTime();
            i_controlP->SetPaused(false);
        }
        ASSERT_TRUE(RunUntilIdle());
    }
    EXPECT_EQ(i_sung.size(), std::size(cases));
    EXPECT_EQ(AlertsSoFar(), Words());
}

}   // namespace
