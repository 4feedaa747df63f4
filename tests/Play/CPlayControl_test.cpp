#include "Play/CPlayControl.h"

#include <random>

#include "Play/CMainThreadProc_Play.h"
#include "Play/PlayTest.h"

namespace {

using Words = std::vector<std::string>;
using enum PlayState;

TEST_F(PlayTest, PlaysPictureAndSoundAndEnds) {
    CSong& song = Add(Sound("a.wav", 2), Graphics("a.cdg", 600));
    i_preferences.Set("Stop between tracks", CCFValue(true));
    ASSERT_EQ(Play(0), noErr);
    EXPECT_EQ(i_controlP->State(), kStarting);
    EXPECT_EQ(i_controlP->CurrentSong(), song.GetSongID());
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_FALSE(i_controlP->IsPaused());
    EXPECT_EQ(i_controlP->EndTime300(), 600);
    long packetsL = 0;
    ASSERT_TRUE(RunUntil([&] {
        if (i_controlP->Current() != nullptr) packetsL = i_controlP->Current()->Packets();
        return i_controlP->State() == kIdle;
    }));
    EXPECT_GT(packetsL, 500);
    EXPECT_EQ(i_states, (std::vector{kStarting, kPlaying, kIdle}));
    EXPECT_EQ(song.Meta().GetInteger("tsng"_key), 1);
    EXPECT_TRUE(song.Meta().GetDate("Date"_key).has_value());
    EXPECT_TRUE(Logged("Playing: a"));
    EXPECT_TRUE(Logged("Play started for a (result: 0)"));
    EXPECT_TRUE(Logged("Updating times sung for song: a"));
    EXPECT_TRUE(Logged("Stopping audio for Song: a"));
    EXPECT_EQ(AlertsSoFar(), Words());
    EXPECT_TRUE(RunUntilOutputIsFree());
}

/** What is done in which state, and where it leads. */
TEST_F(PlayTest, EveryOrderInEveryState) {
    for (int n = 0; n < 3; ++n) Add(Sound(std::to_string(n) + ".wav", 30));
    enum class In { kIdle, kStarting, kPlaying, kPaused };
    struct Row {
        const char* nameZ;
        void (*order)(CPlayControl&);
        PlayState after[4];   // idle, starting, playing, paused; once a start is through
        bool pausedAfter[4];
    };
    const Row rows[] = {
        {"stop", [](CPlayControl& c) { c.Stop(); }, {kIdle, kIdle, kIdle, kIdle}, {}},
        {"pause",
         [](CPlayControl& c) { c.SetPaused(true); },
         {kIdle, kPlaying, kPlaying, kPlaying},
         {false, true, true, true}},
        {"resume", [](CPlayControl& c) { c.SetPaused(false); }, {kIdle, kPlaying, kPlaying, kPlaying}, {}},
        {"toggle",
         [](CPlayControl& c) { c.TogglePause(); },
         {kIdle, kPlaying, kPlaying, kPlaying},
         {false, true, true, false}},
        {"next", [](CPlayControl& c) { (void)Failed(c.PlayNext()); }, {kPlaying, kPlaying, kPlaying, kPlaying}, {}},
        {"previous",
         [](CPlayControl& c) { (void)Failed(c.PlayPrevious()); },
         {kPlaying, kPlaying, kPlaying, kPlaying},
         {}},
        {"rewind",
         [](CPlayControl& c) { c.Rewind(); },
         {kIdle, kPlaying, kPlaying, kPlaying},
         {false, false, false, true}},
        {"seek",
         [](CPlayControl& c) { c.Seek(0.5); },
         {kIdle, kPlaying, kPlaying, kPlaying},
         {false, false, false, true}},
        {"again",
         [](CPlayControl& c) { (void)Failed(c.Play(c.CurrentList(), c.CurrentItem())); },
         {kPlaying, kPlaying, kPlaying, kPlaying},
         {}},
        {"pitch",
         [](CPlayControl& c) { (void)Failed(c.SetPitch(2)); },
         {kIdle, kPlaying, kPlaying, kPlaying},
         {false, false, false, true}},
        {"device",
         [](CPlayControl& c) { (void)Failed(c.SetOutputDevice("other")); },
         {kIdle, kPlaying, kPlaying, kPlaying},
         {false, false, false, true}},
    };
    for (const Row& row : rows)
        for (const In in : {In::kIdle, In::kStarting, In::kPlaying, In::kPaused}) {
            const auto n = static_cast<std::size_t>(in);
            SCOPED_TRACE(testing::Message() << row.nameZ << " in state " << n);
            ASSERT_EQ(Play(1), noErr);
            i_controlP->SetPaused(false);
            if (in == In::kIdle) i_controlP->Stop();
            ASSERT_TRUE(in == In::kIdle || in == In::kStarting || RunUntilPlaying());
            if (in == In::kPaused) i_controlP->SetPaused(true);
            row.order(*i_controlP);
            ASSERT_TRUE(RunUntil([&] { return i_controlP->State() != kStarting; }));
            EXPECT_EQ(i_controlP->State(), row.after[n]);
            EXPECT_EQ(i_controlP->IsPaused(), row.pausedAfter[n]);
            i_controlP->Stop();
        }
    EXPECT_EQ(AlertsSoFar(), Words());
}

TEST_F(PlayTest, AStopWhileItStartsEndsThePreRollWithoutAWord) {
    Add(Sound("a.wav", 5));
    i_shutB = true;   // the device takes its time
    ASSERT_EQ(Play(0), noErr);
    RunFor(1);
    EXPECT_EQ(i_controlP->State(), kStarting);
    i_controlP->Stop();
    EXPECT_EQ(i_controlP->State(), kIdle);
    i_shutB = false;
    RunFor(2);
    EXPECT_TRUE(RunUntilOutputIsFree());
    EXPECT_EQ(i_controlP->State(), kIdle);
    EXPECT_EQ(AlertsSoFar(), Words());
    EXPECT_FALSE(Logged("### no audio player"));
}

TEST_F(PlayTest, ASongThatIsWantedWhileAnotherStartsWaitsForItAndTheLoopRuns) {
    Add(Sound("a.wav", 5));
    CSong& second = Add(Sound("b.wav", 5));
    i_shutB = true;
    ASSERT_EQ(Play(0), noErr);
    ASSERT_EQ(Play(1), noErr);   // comes back at once
    RunFor(1);
    EXPECT_EQ(i_controlP->State(), kStarting);
    i_shutB = false;
    ASSERT_TRUE(RunUntilPlaying());   // GatedOutput sees that one song has it at a time
    EXPECT_EQ(i_controlP->CurrentSong(), second.GetSongID());
    EXPECT_EQ(AlertsSoFar(), Words());
}

TEST_F(PlayTest, APauseWhileItStartsIsKept) {
    Add(Sound("a.wav", 5));
    ASSERT_EQ(Play(0), noErr);
    i_controlP->SetPaused(true);
    EXPECT_TRUE(i_controlP->IsPaused());
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_TRUE(i_controlP->IsPaused());
    RunFor(1);
    EXPECT_EQ(i_controlP->CurTime300(), 0);
    i_controlP->TogglePause();
    EXPECT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 100; }));
}

TEST_F(PlayTest, ATempoThatIsAskedForWhileItStartsIsKept) {
    Add(Sound("a.wav", 60));
    i_shutB = true;
    ASSERT_EQ(Play(0), noErr);
    RunFor(1);
    ASSERT_EQ(i_controlP->State(), kStarting);
    EXPECT_EQ(i_controlP->SetTempo(4), noErr);
    i_shutB = false;
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 600; }));
    const double beganT = CClock::Get().SteadyT();
    const long began300 = i_controlP->CurTime300();
    ASSERT_TRUE(RunUntil([&] { return CClock::Get().SteadyT() > beganT + 5; }));
    const double perSecond =
        static_cast<double>(i_controlP->CurTime300() - began300) / (CClock::Get().SteadyT() - beganT);
    EXPECT_GT(perSecond, 2 * 300);
}

TEST_F(PlayTest, FilesThatAreGoneAndNoSongsAtAllAreTold) {
    Add(Sound("gone.wav", 1));
    Add({}, Graphics("naked.cdg", 300));
    std::ofstream(i_folder / "bad.wav") << "no music in here";
    Add(i_folder / "bad.wav");
    std::filesystem::remove(i_folder / "gone.wav");
    const struct {
        std::size_t row;
        const char* alertZ;
    } cases[] = {{0, "Could not find the song “gone”"}, {1, "Could not find the song “naked”"}, {2, "Spooler Error"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.alertZ);
        ASSERT_EQ(Play(c.row), noErr);
        ASSERT_TRUE(RunUntilIdle());
        EXPECT_NE(i_controlP->PlayErr(), noErr);
        ASSERT_FALSE(AlertsSoFar().empty());
        EXPECT_TRUE(AlertsSoFar().back().starts_with(c.alertZ)) << AlertsSoFar().back();
        EXPECT_EQ(AlertsSoFar().size(), static_cast<std::size_t>(&c - cases) + 1);   // one each
    }
    EXPECT_EQ(i_controlP->Play(i_listP->ID(), PLItemID{99}), fnfErr);
    EXPECT_EQ(i_controlP->Play(PlaylistID{4711}, Row(0)), fnfErr);
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
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(moved.FileRef(SDB_SongFile_AUDIO).GetPath(), i_folder / "Music/moved.wav");
    ASSERT_EQ(Play(1), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(half.FileRef(SDB_SongFile_AUDIO).GetPath(), i_folder / "half.wav");
    EXPECT_TRUE(RunUntil([&] { return !isMissing(half); }));
    ASSERT_EQ(Play(2), noErr);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(AlertsSoFar(), Words{MissingSongText("gone")});
    EXPECT_TRUE(RunUntil([&] { return isMissing(gone); }));
}

TEST_F(PlayTest, GraphicsAlonePlayWhenTheyMay) {
    Add({}, Graphics("naked.cdg", 300));
    i_preferences.Set("Require Audio (no naked CDG files)", CCFValue(false));
    i_preferences.Set("Stop between tracks", CCFValue(true));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->EndTime300(), 300);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung, (Words{"naked"}));
    EXPECT_EQ(i_openedL, 0);   // the device was left alone
}

TEST_F(PlayTest, ADeviceThatCannotBeOpenedEndsTheSongWithOneAlert) {
    Add(Sound("a.wav", 1));
    i_openErr.store(ioErr);
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_controlP->PlayErr(), ioErr);
    i_openErr.store(noErr);
    ASSERT_EQ(Play(0), noErr);
    EXPECT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->PlayErr(), noErr);
}

TEST_F(PlayTest, TheStartIsTheMusicOrTheTrimAndTheEndItsMark) {
    CSong& cued = Add(Sound("cued.wav", 3, 2));
    CSong& trimmed = Add(Sound("trimmed.wav", 10));
    trimmed.Meta().SetInteger("Tsrt"_key, 900);
    trimmed.Meta().SetInteger("Tend"_key, 1200);
    i_preferences.Set("Stop between tracks", CCFValue(true));
    const auto startOf = [&](std::size_t row) {
        EXPECT_EQ(Play(row), noErr);
        i_controlP->SetPaused(true);
        EXPECT_TRUE(RunUntilPlaying());
        return static_cast<double>(i_controlP->CurTime300());
    };
    EXPECT_NEAR(startOf(0), 600 - 30, 8);   // less the rollback of 0.1 s
    EXPECT_EQ(startOf(1), 900);
    EXPECT_EQ(i_controlP->EndTime300(), 1200);
    i_controlP->SetPaused(false);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->State() == kIdle || i_controlP->CurTime300() > 1500; }));
    EXPECT_EQ(i_controlP->State(), kIdle);
    i_preferences.Set("Auto-cue", CCFValue(false));
    EXPECT_EQ(startOf(0), 0);
    EXPECT_EQ(startOf(1), 900);
    (void)cued;
}

TEST_F(PlayTest, WhatComesNextIsTheListsAndThePreferences) {
    for (const char* const nameZ : {"a", "b", "c"}) Add(Sound(std::string(nameZ) + ".wav", 1));
    i_preferences.Set("Stop at playlist end", CCFValue(true));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung, (Words{"a", "b", "c"}));
    EXPECT_TRUE(Logged("pre-cache next song: b"));
    EXPECT_TRUE(Logged("Going to next song"));

    i_preferences.Set("Pause between tracks", CCFValue(true));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurrentItem() == Row(1) && i_controlP->State() == kPlaying; }));
    EXPECT_TRUE(i_controlP->IsPaused());
    i_preferences.Set("Stop between tracks", CCFValue(true));
    i_controlP->SetPaused(false);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung.size(), 5U);

    // By hand the end of the list is none.
    EXPECT_EQ(i_controlP->PlayNext(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(2));
    EXPECT_EQ(i_controlP->PlayNext(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(0));
    EXPECT_EQ(i_controlP->PlayPrevious(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(2));
    EXPECT_EQ(i_messages.back(), "Previous: c");
}

TEST_F(PlayTest, BackIsARewindOnceTheSongIsUnderWay) {
    Add(Sound("a.wav", 60));
    Add(Sound("b.wav", 60));
    ASSERT_EQ(Play(1), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    i_controlP->Seek(0.5);
    EXPECT_EQ(i_controlP->CurTime300(), 9000);
    ASSERT_EQ(i_controlP->PlayPrevious(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(1));
    EXPECT_EQ(i_controlP->CurTime300(), 0);
    EXPECT_EQ(i_messages.back(), "Rewind: b");
    ASSERT_EQ(i_controlP->PlayPrevious(), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(0));
}

TEST_F(PlayTest, ANextThatIsWantedWhileItIsCachedOrWasReplacedIsRight) {
    Add(Sound("a.wav", 60));
    Add(Sound("b.wav", 60));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    ASSERT_EQ(i_controlP->PlayNext(), noErr);   // its loading has only just begun
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->CurrentItem(), Row(1));
    ASSERT_TRUE(RunUntil([&] { return i_controlP->IsNextReady(); }));
    Sound("a.wav", 30);   // another file of its name
    ASSERT_EQ(i_controlP->PlayNext(), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->EndTime300(), 30 * 300);
}

TEST_F(PlayTest, SettingsReachTheSoundAndAreKept) {
    CSong& song = Add(Sound("a.wav", 60));
    song.Meta().SetInteger("PICH"_key, -3);
    song.Meta().SetFloat("TMPO"_key, 1.1);
    song.Meta().SetInteger("vChn"_key, 2);
    song.Meta().SetFloat("volm"_key, 0.4);
    EXPECT_EQ(i_controlP->SetPitch(1), paramErr);   // nothing plays
    ASSERT_EQ(Play(0), noErr);
    EXPECT_EQ(i_controlP->Pitch(), -3);
    EXPECT_NEAR(i_controlP->Tempo(), 1.1, 1e-6);
    EXPECT_EQ(i_controlP->Vocal(), VocalMode::kLeftOnly);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_FLOAT_EQ(i_controlP->Volume(), 0.4F);
    EXPECT_EQ(i_preferences.GetLong("Current Volume (0-100)"), 40);

    const int settingsL = i_settingsL;
    EXPECT_EQ(i_controlP->SetPitch(5), noErr);
    EXPECT_EQ(i_controlP->SetTempo(0.9), noErr);
    EXPECT_EQ(i_controlP->SetPitch(13), paramErr);
    EXPECT_EQ(i_controlP->SetTempo(0), paramErr);
    EXPECT_EQ(i_settingsL, settingsL + 2);
    EXPECT_EQ(song.Meta().GetInteger("PICH"_key), 5);
    EXPECT_NEAR(song.Meta().GetFloat("TMPO"_key), 0.9, 1e-6);

    i_preferences.Set("Remember pitch / tempo in all playlists", CCFValue(false));
    EXPECT_EQ(i_controlP->SetPitch(-7), noErr);   // of this row alone
    EXPECT_EQ(song.Meta().GetInteger("PICH"_key), 5);
    ASSERT_EQ(Play(0), noErr);
    EXPECT_EQ(i_controlP->Pitch(), -7);
    i_controlP->SetMute(true);
    EXPECT_TRUE(i_controlP->IsMuted());
    i_controlP->SetVolume(7);
    EXPECT_EQ(i_controlP->Volume(), 1);
}

TEST_F(PlayTest, TheSlipIsToldInSecondsAndKept) {
    CSong& song = Add(Sound("a.wav", 60), Graphics("a.cdg", 18000));
    song.Meta().SetFloat("Slip"_key, 0.5);
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->SlipSong(1), "Song Sync Slip: 0.6 seconds");
    EXPECT_EQ(i_controlP->SlipSong(-8), "Song Sync Slip: -0.2 seconds");
    EXPECT_NEAR(song.Meta().GetFloat("Slip"_key), -0.2, 1e-6);
    EXPECT_EQ(i_controlP->SlipGlobal(3), "Global Sync Slip: 0.3 seconds");
    EXPECT_EQ(i_preferences.GetLong("Global Song Sync Slip (300ths)"), 90);
    EXPECT_EQ(i_messages.back(), "Global Sync Slip: 0.3 seconds");
    // -60 of the song and 90 of all: the picture is 30 ahead.
    i_controlP->SetPaused(false);
    i_controlP->SeekTo300(3000);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 3100; }));
    i_controlP->VideoIdle(false);
    EXPECT_NEAR(static_cast<double>(i_controlP->Current()->Packets() - i_controlP->CurTime300()), 30, 25);
}

TEST_F(PlayTest, ASelectionOfOneIsPlayedAndOneOfSeveralIsAsked) {
    Add(Sound("a.wav", 1));
    Add(Sound("b.wav", 1));
    SDB_Selection selection(i_listP);
    EXPECT_EQ(i_controlP->Play(selection), paramErr);
    selection.SetItems({Row(0), Row(1)});
    i_ui.answers = {Answer{0, false}, Answer{1, false}};
    EXPECT_EQ(i_controlP->Play(selection), userCanceledErr);
    EXPECT_TRUE(std::exchange(i_deselectedB, false));
    EXPECT_EQ(i_controlP->Play(selection), userCanceledErr);
    EXPECT_FALSE(i_deselectedB);
    selection.SetItems({Row(1)});
    EXPECT_EQ(i_controlP->Play(selection), noErr);
    EXPECT_EQ(i_controlP->CurrentItem(), Row(1));
}

TEST_F(PlayTest, AMidiFileIsHandedToTheDesktop) {
    std::ofstream(i_folder / "tune.mid") << "MThd";
    std::ofstream(i_folder / "xdg-open") << "#!/bin/sh\nprintf %s \"$1\" >'" << (i_folder / "launched").string()
                                         << "'\n";
    std::filesystem::permissions(i_folder / "xdg-open", std::filesystem::perms::owner_all);
    const std::string path = std::getenv("PATH");
    ::setenv("PATH", (i_folder.string() + ":" + path).c_str(), 1);
    Add(i_folder / "tune.mid");
    i_preferences.Set("Launch Midi Files", CCFValue(true));
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

TEST_F(PlayTest, AWishFromAnotherThreadIsDoneOnTheMainOne) {
    Add(Sound("a.wav", 60));
    const auto self = i_controlP->Self();
    std::atomic<int> answer{1};
    const PlaylistID list = i_listP->ID();
    const PLItemID row = Row(0);
    const auto ask = [&](void*) {
        const OSErr err = CMainThreadProc_Play(self, list, row, StackHeld::kYes).Call(CallMode::kWait);
        answer = Number(err);
        return err;
    };
    ASSERT_NE(CThreadManager::Fork(
                  ForkKind::kPreemptive, ask, [](void*, OSErr err) { return err; }, nullptr, "phone"),
              0);
    ASSERT_TRUE(RunUntil([&] { return answer != 1; }));
    EXPECT_EQ(answer, 0);
    EXPECT_TRUE(RunUntilPlaying());
    i_controlP.reset();
    i_controlP = std::make_unique<CPlayControl>(static_cast<CPlayHost&>(*this));
    EXPECT_EQ(CMainThreadProc_Play(self, i_listP->ID(), Row(0), StackHeld::kYes).Call(CallMode::kWait), abortErr);
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
    i_preferences.Set("Stop between tracks", CCFValue(true));
    const struct {
        const char* nameZ;
        SongKind kind;
        long end300, within;
        bool pictureB;
    } cases[] = {{"song.zip", SongKind::kSoundAndGraphics, 300, 1, true},
                 {"movie.mp4", SongKind::kVideo, 300, 10, true},
                 {"silent.mp4", SongKind::kVideo, 600, 10, true}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.nameZ);
        Add(i_folder / c.nameZ);
        ASSERT_EQ(Play(i_listP->Count() - 1), noErr);
        ASSERT_TRUE(RunUntilPlaying());
        EXPECT_EQ(i_controlP->Current()->Files().Kind(), c.kind);
        EXPECT_NEAR(static_cast<double>(i_controlP->EndTime300()), static_cast<double>(c.end300),
                    static_cast<double>(c.within));
        ASSERT_EQ(i_controlP->Current()->Graphics() != nullptr, c.pictureB);
        if (c.kind == SongKind::kVideo && i_controlP->Current()->HasPlayer()) {   // led by its sound
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

class UnhurriedPlayTest : public PlayTest {
protected:
    UnhurriedPlayTest() : PlayTest(2) {}
};

/** Sound that is far behind the words jumps to them, once it moves again. */
TEST_F(UnhurriedPlayTest, AStallLeavesTheSoundWhereTheWordsAre) {
    Add(Sound("a.wav", 600), Graphics("a.cdg", 3000));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 300; }));
    EXPECT_LT(std::abs(i_controlP->Current()->Heard300() - i_controlP->CurTime300()), 150);
    i_clock.Skip(30);   // the device is fed late; the clock of the words is not
    EXPECT_TRUE(RunUntil([&] { return Logged("the sound goes there"); }));
    EXPECT_TRUE(RunUntil([&] { return std::abs(i_controlP->Current()->Heard300() - i_controlP->CurTime300()) < 150; }));
    EXPECT_GT(i_controlP->CurTime300(), 30 * 300);
}

TEST_F(PlayTest, ManySongsInARowLeaveNoThreadAndNoFileOpen) {
    i_preferences.Set("Stop at playlist end", CCFValue(true));
    const std::filesystem::path sound = Sound("a.wav", 0.5), graphics = Graphics("a.cdg", 150);
    for (int n = 0; n < 20; ++n) Add(sound, graphics);
    const auto openFiles = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/fd"),
                             std::filesystem::directory_iterator());
    };
    const auto threads = [] {
        return std::distance(std::filesystem::directory_iterator("/proc/self/task"),
                             std::filesystem::directory_iterator());
    };
    const auto filesBefore = openFiles(), threadsBefore = threads();
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_EQ(i_sung.size(), 20U);
    EXPECT_TRUE(RunUntilOutputIsFree());
    EXPECT_TRUE(RunUntil([&] { return openFiles() <= filesBefore && threads() <= threadsBefore; }))
        << openFiles() << " files, " << threads() << " threads";
}

TEST_F(PlayTest, AThousandRandomOrdersLeaveNothingBehind) {
    for (int n = 0; n < 4; ++n)
        Add(Sound(std::to_string(n) + ".wav", 3), n % 2 == 0 ? Graphics(std::to_string(n) + ".cdg", 900) : "");
    std::mt19937 random(20);
    for (int n = 0; n < 1000; ++n) {
        switch (random() % 12) {
            case 0:
                ASSERT_EQ(Play(random() % 4), noErr);
                break;
            case 1:
                if (random() % 4 == 0) i_controlP->Stop();
                break;
            case 2:
                i_controlP->Seek(static_cast<double>(random() % 1000) / 1000);
                break;
            case 3:
                (void)Failed(i_controlP->PlayNext());
                break;
            case 4:
                i_controlP->TogglePause();
                break;
            case 5:
                (void)Failed(i_controlP->SetPitch(static_cast<int>(random() % 25) - 12));
                break;
            case 6:
                (void)Failed(i_controlP->SetTempo(0.5 + static_cast<double>(random() % 100) / 100));
                break;
            case 7:
                (void)Failed(i_controlP->PlayPrevious());
                break;
            case 8:
                i_controlP->Rewind();
                break;
            case 9:
                (void)i_controlP->SlipSong(static_cast<int>(random() % 3) - 1);
                break;
            default:
                Pass();
        }
    }
    ASSERT_EQ(Play(1), noErr);
    ASSERT_TRUE(RunUntilPlaying());
    EXPECT_EQ(i_controlP->CurrentItem(), Row(1));
    i_controlP->Stop();
    EXPECT_TRUE(RunUntilOutputIsFree());
    EXPECT_EQ(AlertsSoFar(), Words());
}

TEST_F(PlayTest, AQuitInEveryStateComesToItsEnd) {
    Add(Sound("a.wav", 3), Graphics("a.cdg", 900));
    Add(Sound("b.wav", 3));
    for (const char* const whenZ : {"idle", "starting", "playing", "paused", "seeking"}) {
        SCOPED_TRACE(whenZ);
        const std::string when = whenZ;
        ASSERT_TRUE(when == "idle" || Play(0) == noErr);
        ASSERT_TRUE(when == "idle" || when == "starting" || RunUntilPlaying());
        if (when == "paused") i_controlP->SetPaused(true);
        if (when == "seeking") i_controlP->Seek(0.7);
        i_quittingB = true;
        i_controlP->Stop();
        EXPECT_EQ(Play(1), abortErr);
        i_controlP.reset();
        i_managerP.reset();   // all threads end
        EXPECT_EQ(i_openedL, 0);
        i_managerP = std::make_unique<CThreadManager>();
        i_controlP = std::make_unique<CPlayControl>(static_cast<CPlayHost&>(*this));
        i_quittingB = false;
    }
}

}   // namespace
