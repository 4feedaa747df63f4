#include "Play/CPlayControl.h"

#include "Play/PlayTest.h"
#include "Threads/CallOnMain.h"

namespace {

using enum PlayState;

TEST_F(PlayTest, PlaysPictureAndSoundAndEnds) {
    CSong& song = Add(Sound("a.wav", 2), Graphics("a.cdg", 600));
    i_preferences.SetBool("Stop between tracks", true);
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

TEST_F(PlayTest, ASongThatIsSoughtBackBeforeItsEndWasHeardOfPlaysOn) {
    i_preferences.SetBool("Stop between tracks", true);
    Add(Sound("a.wav", 60), Graphics("a.cdg", 18000));
    Add(Sound("b.wav", 60), Graphics("b.cdg", 18000)).Meta().SetInteger("Tend"_key, 12000);
    for (const std::size_t row : {0U, 1U})
        for (const double position : {0.0, 1.0}) {
            SCOPED_TRACE(testing::Message() << row << " to " << position);
            ASSERT_TRUE(Starts(row));
            const long last300 = i_controlP->EndTime300() - 300;
            i_controlP->SeekTo300(last300);
            ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > last300 + 30; }));
            const double endT = CClock::Get().SteadyT() + 10;
            for (; CClock::Get().SteadyT() < endT; PassTime()) i_controlP->VideoIdle(false);   // the end is posted
            const std::size_t sungL = i_sung.size();
            i_controlP->Seek(position);
            if (position == 0) {
                RunFor(1);
                EXPECT_EQ(i_sung.size(), sungL);
                i_controlP->Seek(1);
            }
            EXPECT_TRUE(RunUntilIdle());
            EXPECT_EQ(i_sung.size(), sungL + 1);
        }
}

TEST_F(PlayTest, TheTrueLengthIsNotedWhenASongWasHeardToItsEnd) {
    i_preferences.SetBool("Stop between tracks", true);
    CSong& wrong = Add(Sound("wrong.wav", 2), Graphics("wrong.cdg", 600));
    CSong& right = Add(Sound("right.wav", 2));
    CSong& left = Add(Sound("left.wav", 2));
    CSong& trimmed = Add(Sound("trimmed.wav", 2));
    wrong.Meta().SetInteger("drtn"_key, 4000);
    right.Meta().SetInteger("drtn"_key, 601);
    left.Meta().SetInteger("drtn"_key, 4000);
    trimmed.Meta().SetInteger("drtn"_key, 4000);
    trimmed.Meta().SetInteger("Tend"_key, 300);
    for (std::size_t row = 0; row < 4; ++row) {
        ASSERT_EQ(Play(row), noErr);
        ASSERT_TRUE(RunUntilPlaying());
        if (row == 2) i_controlP->Stop();
        ASSERT_TRUE(RunUntilIdle());
    }
    EXPECT_EQ(wrong.Meta().GetInteger("drtn"_key), 600);
    EXPECT_EQ(right.Meta().GetInteger("drtn"_key), 601);   // as good as the same
    EXPECT_EQ(left.Meta().GetInteger("drtn"_key), 4000);
    EXPECT_EQ(trimmed.Meta().GetInteger("drtn"_key), 4000);
}

TEST_F(PlayTest, ASongWithoutGraphicsThatCanBeSeenPlaysAndTheOperatorIsTold) {
    Add(Sound("gone.wav", 30), i_folder / "gone.cdg");
    Add(Sound("empty.wav", 30), Graphics("empty.cdg", 0));
    Add(Sound("padding.wav", 30), i_folder / "padding.cdg");
    std::ofstream(i_folder / "padding.cdg") << std::string(24 * 600, 0);
    Add(Sound("folder.wav", 30), i_folder / "folder.cdg");
    std::filesystem::create_directory(i_folder / "folder.cdg");
    Words told;
    for (std::size_t row = 0; row < 4; ++row) {
        ASSERT_TRUE(Starts(row));
        const std::string name = i_controlP->Current()->Spec().name;
        told.push_back("The graphics of “" + name + "” were not found");
        EXPECT_EQ(AlertsSoFar(), told);
        EXPECT_NE(Details().back().find((i_folder / (name + ".cdg")).string()), std::string::npos);
        EXPECT_EQ(i_controlP->Current()->Graphics(), nullptr);
        EXPECT_TRUE(i_controlP->IsPlaying());
    }
}

/** Silence under a picture that still changes is part of the song, padding is not. */
TEST_F(PlayTest, ASongEndsWithItsSoundOrWithTheLastThatIsDrawn) {
    i_preferences.SetBool("Stop between tracks", true);
    const auto padded = [&](const std::string& name, std::size_t drawnL) {
        const std::filesystem::path file = Graphics(name, drawnL);
        std::ofstream(file, std::ios::binary | std::ios::app) << std::string(24 * 90000, 0);
        return file;
    };
    const struct {
        double soundT;
        std::size_t drawnL;
        double slipT;
        long end300;
    } cases[] = {{1, 1781, 0, 1781}, {1, 1781, 2, 1181}, {1, 1781, -1, 2081}, {6, 300, 0, 1800}};
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.drawnL << " packets, " << c.soundT << " s");
        const std::string name = std::to_string(&c - cases);
        CSong& song = Add(Sound(name + ".wav", c.soundT), padded(name + ".cdg", c.drawnL));
        song.Meta().SetFloat("Slip"_key, c.slipT);
        ASSERT_TRUE(Starts(static_cast<std::size_t>(&c - cases)));
        EXPECT_EQ(i_controlP->EndTime300(), c.end300);
        ASSERT_TRUE(RunUntilIdle());
        EXPECT_GE(i_sungAt300, c.end300 - 100);
        EXPECT_LT(i_sungAt300, c.end300 + 60000);   // long before the padding ends
        EXPECT_EQ(song.Meta().GetInteger("drtn"_key), std::max(c.soundT * 300, static_cast<double>(c.drawnL)));
    }
    EXPECT_EQ(i_sung.size(), std::size(cases));
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
    i_device.shutB = true;   // the device takes its time
    ASSERT_EQ(Play(0), noErr);
    RunFor(1);
    EXPECT_EQ(i_controlP->State(), kStarting);
    i_controlP->Stop();
    EXPECT_EQ(i_controlP->State(), kIdle);
    i_device.shutB = false;
    EXPECT_TRUE(RunUntil([&] { return Logged("### there is no playing song to stop"); }));
    EXPECT_TRUE(RunUntilOutputIsFree());
    EXPECT_EQ(i_controlP->State(), kIdle);
    EXPECT_EQ(AlertsSoFar(), Words());
    EXPECT_FALSE(Logged("### no audio player"));
}

TEST_F(PlayTest, ASongThatIsWantedWhileAnotherStartsWaitsForItAndTheLoopRuns) {
    Add(Sound("a.wav", 5));
    CSong& second = Add(Sound("b.wav", 5));
    i_device.shutB = true;
    ASSERT_EQ(Play(0), noErr);
    ASSERT_EQ(Play(1), noErr);   // comes back at once
    RunFor(1);
    EXPECT_EQ(i_controlP->State(), kStarting);
    i_device.shutB = false;
    ASSERT_TRUE(RunUntilPlaying());   // GatedOutput sees that one song has it at a time
    EXPECT_EQ(i_controlP->CurrentSong(), second.GetSongID());
    EXPECT_EQ(AlertsSoFar(), Words());
    EXPECT_TRUE(RunUntil([&] { return Logged("### another song is playing (b)"); }));   // the first one may end later
}

TEST_F(PlayTest, ATempoThatIsAskedForWhileItStartsIsKept) {
    Add(Sound("a.wav", 60));
    i_device.shutB = true;
    ASSERT_EQ(Play(0), noErr);
    RunFor(1);
    ASSERT_EQ(i_controlP->State(), kStarting);
    EXPECT_EQ(i_controlP->SetTempo(2.5), noErr);
    i_device.shutB = false;
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 600; }));
    const double beganT = CClock::Get().SteadyT();
    const long began300 = i_controlP->CurTime300();
    ASSERT_TRUE(RunUntil([&] { return CClock::Get().SteadyT() > beganT + 5; }));
    const double perSecond =
        static_cast<double>(i_controlP->CurTime300() - began300) / (CClock::Get().SteadyT() - beganT);
    EXPECT_GT(perSecond, 2 * 300);
}

TEST_F(PlayTest, ASongThatIsSoughtWhileItStartsBeginsThere) {
    Add(Sound("a.wav", 58, 2), Graphics("a.cdg", 18000));   // its music begins at 2 s
    const struct {
        const char* nameZ;
        void (*order)(CPlayControl&);
        long begins300;
    } cases[] = {{"none", [](CPlayControl&) {}, 600 - 30},
                 {"time", [](CPlayControl& c) { c.SeekTo300(6000); }, 6000},
                 {"position", [](CPlayControl& c) { c.Seek(0.5); }, 9000},
                 {"the last counts", [](CPlayControl& c) { c.Seek(0.5), c.SeekTo300(3000); }, 3000},
                 {"rewind", [](CPlayControl& c) { c.Rewind(); }, 0},
                 {"and another output",
                  [](CPlayControl& c) { c.SeekTo300(6000), (void)Failed(c.SetOutputDevice("other")); }, 6000},
                 {"and paused", [](CPlayControl& c) { c.SeekTo300(6000), c.SetPaused(true); }, 6000}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.nameZ);
        i_device.shutB = true;
        ASSERT_EQ(Play(0), noErr);
        c.order(*i_controlP);
        i_device.shutB = false;
        ASSERT_TRUE(RunUntilPlaying());
        const bool pausedB = i_controlP->IsPaused();
        EXPECT_NEAR(static_cast<double>(i_controlP->CurTime300()), static_cast<double>(c.begins300), 8);
        ASSERT_TRUE(pausedB || RunUntil([&] { return i_controlP->CurTime300() > c.begins300 + 100; }));
        RunFor(1);
        EXPECT_LT(i_controlP->CurTime300(), c.begins300 + (pausedB ? 8 : 3000));
        EXPECT_EQ(i_controlP->IsPaused(), pausedB);
        i_controlP->Stop();
        ASSERT_TRUE(RunUntilOutputIsFree());
    }
}

TEST_F(PlayTest, TheStartIsTheMusicOrTheTrimAndTheEndItsMark) {
    CSong& cued = Add(Sound("cued.wav", 3, 2));
    CSong& trimmed = Add(Sound("trimmed.wav", 10));
    trimmed.Meta().SetInteger("Tsrt"_key, 900);
    trimmed.Meta().SetInteger("Tend"_key, 1200);
    i_preferences.SetBool("Stop between tracks", true);
    const auto startOf = [&](std::size_t row) {
        EXPECT_TRUE(Starts(row, true));
        RunFor(1);   // it stands
        return static_cast<double>(i_controlP->CurTime300());
    };
    EXPECT_NEAR(startOf(0), 600 - 30, 8);   // less the rollback of 0.1 s
    EXPECT_EQ(startOf(1), 900);
    EXPECT_EQ(i_controlP->EndTime300(), 1200);
    i_controlP->SetPaused(false);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->State() == kIdle || i_controlP->CurTime300() > 1500; }));
    EXPECT_EQ(i_controlP->State(), kIdle);
    i_preferences.SetBool("Auto-cue", false);
    EXPECT_EQ(startOf(0), 0);
    EXPECT_EQ(startOf(1), 900);
    // Marks behind the end are none.
    trimmed.Meta().SetInteger("Tend"_key, 6000);
    EXPECT_EQ(startOf(1), 900);
    EXPECT_EQ(i_controlP->EndTime300(), 3000);
    Alerts().clear();
    trimmed.Meta().SetInteger("Tsrt"_key, 3000);
    EXPECT_EQ(startOf(1), 0);
    EXPECT_EQ(i_controlP->State(), kPlaying);
    const std::scoped_lock guard(AlertLock());
    ASSERT_EQ(Alerts().size(), 1U);
    EXPECT_NE(Alerts().front().find("trim start"), std::string::npos);
    (void)cued;
}

TEST_F(PlayTest, ASongThatIsBeingUnpackedWaitsWhenItShall) {
    CSong& song = Add(Sound("a.wav", 60));
    i_unpacking = song.GetSongID();
    ASSERT_TRUE(Starts(0));
    EXPECT_FALSE(i_controlP->IsPaused());   // it is not asked for
    i_preferences.SetBool("Delay start of song playback until unpacked", true);
    ASSERT_TRUE(Starts(0));
    RunFor(1);
    EXPECT_TRUE(i_controlP->IsPaused());
    EXPECT_EQ(i_controlP->CurTime300(), 0);
    i_unpacking = SongID{SDB_kUninitializedID};
    EXPECT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 100; }));

    i_unpacking = song.GetSongID();
    ASSERT_TRUE(Starts(0));
    ASSERT_EQ(i_controlP->SetOutputDevice("other"), noErr);   // there it waits, too
    ASSERT_TRUE(RunUntilPlaying());
    ASSERT_TRUE(i_controlP->IsPaused());
    i_unpacking = SongID{SDB_kUninitializedID};
    EXPECT_TRUE(RunUntil([&] { return !i_controlP->IsPaused(); }));

    i_unpacking = song.GetSongID();
    ASSERT_TRUE(Starts(0));
    ASSERT_TRUE(i_controlP->IsPaused());
    i_controlP->TogglePause();   // the operator does not wait
    EXPECT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 100; }));
}

TEST_F(PlayTest, AWishFromAnotherThreadIsDoneOnTheMainOne) {
    Add(Sound("a.wav", 60));
    const auto self = i_controlP->Self();
    std::atomic<int> answer{1};
    const PlaylistID list = i_listP->ID();
    const PLItemID row = Row(0);
    const auto ask = [&](void*) {
        const OSErr err = CallOnMain("play", self, [&](CPlayControl& control) { return control.Play(list, row); });
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
    EXPECT_EQ(ask(nullptr), abortErr);
}

}   // namespace
