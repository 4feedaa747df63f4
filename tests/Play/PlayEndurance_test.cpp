#include <random>

#include "Play/PlayTest.h"

namespace {

TEST_F(PlayTest, ManySongsInARowLeaveNoThreadAndNoFileOpen) {
    i_preferences.SetBool("Stop at playlist end", true);
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
    ASSERT_TRUE(Starts(1));
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
        Show()->quittingB = true;
        i_host.i_mayPumpB = true;
        i_controlP->Stop();
        EXPECT_EQ(Play(1), abortErr);
        i_controlP.reset();
        i_managerP.reset();   // all threads end
        EXPECT_EQ(i_device.openedL, 0);
        i_managerP = std::make_unique<CThreadManager>();
        i_controlP = std::make_unique<CPlayControl>(static_cast<CPlayHost&>(*this));
        Show()->quittingB = false;
        i_host.i_mayPumpB = false;
    }
}

}   // namespace
