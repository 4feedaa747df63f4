#include "Play/CSongMovie.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "Movies/MovieFiles.h"
#include "Play/CPictureDelays.h"
#include "Play/PlayTest.h"

namespace {

/** Video songs of 2 s, 25 pictures a second. */
class CSongMovieTest : public PlayTest {
protected:
    CSongMovieTest() {
        MovieFiles::Get();
        i_preferences.SetBool("Stop between tracks", true);
        i_preferences.SetBool("Auto-cue", false);
    }
    /** The movie in the place of the sound, or of the graphics. */
    void AddMovie(const std::string& name) { Add(MovieFiles::Path(name)); }
    [[nodiscard]] const Ref<CAS_QuickTimeVideo>& Movie() const { return i_controlP->Current()->Files().Movie(); }
    bool Shows(double timeT) {
        return RunUntil([&] { return !Movie()->IsSeeking() && std::abs(Movie()->ShownTime() - timeT) < 0.001; });
    }
};

TEST_F(CSongMovieTest, AVideoSongPlaysItsPicturesWithItsSoundAndEnds) {
    AddMovie("b.mp4");
    AddMovie("vcd.mpg");
    for (std::size_t row = 0; row < 2; ++row) {
        ASSERT_TRUE(Starts(row));
        EXPECT_EQ(i_controlP->Current()->Files().Kind(), SongKind::kVideo);
        EXPECT_NEAR(static_cast<double>(i_controlP->EndTime300()), 600, 30);
        const Ref<CAS_QuickTimeVideo> movieP = Movie();
        double apartT = 0;
        ASSERT_TRUE(RunUntil([&] {
            if (i_controlP->State() != PlayState::kPlaying) return true;
            if (!movieP->IsSeeking()) apartT = std::max(apartT, movieP->ShownTime() - movieP->CurTime());
            return false;
        }));
        const MovieCounts counts = movieP->Counts();
        EXPECT_GE(counts.shownL + counts.droppedL, 25U);   // of 50; a maker that hurries does not count each
        EXPECT_GT(counts.shownL, 5U);
        EXPECT_LT(apartT, 0.35);   // at 20 times the speed; a picture is never shown far ahead
        EXPECT_EQ(i_sung.size(), row + 1);
    }
    EXPECT_EQ(AlertsSoFar(), std::vector<std::string>());
}

TEST_F(CSongMovieTest, APauseHoldsThePictureAndASeekShowsThatOfItsPlace) {
    for (const char* const nameZ : {"b.mp4", "silent.mp4"}) AddMovie(nameZ);
    for (std::size_t row = 0; row < 2; ++row) {
        ASSERT_TRUE(Starts(row));
        i_controlP->SetPaused(true);   // in the midst of it: the sound, or its own clock, runs
        for (const long time300 : {300L, 90L, 450L, 0L}) {
            i_controlP->SeekTo300(time300);
            ASSERT_TRUE(Shows(std::floor(static_cast<double>(time300) / 12) / 25)) << row << ", " << time300;
            RunFor(2);
            EXPECT_TRUE(Shows(std::floor(static_cast<double>(time300) / 12) / 25)) << row << ", " << time300;
        }
        i_controlP->SetPaused(false);
        EXPECT_TRUE(RunUntilIdle());
    }
}

TEST_F(CSongMovieTest, WithoutSoundThePicturesPlayAndWithoutPicturesTheSound) {
    std::filesystem::copy(MovieFiles::Path("bare.m4a"), i_folder / "bare.mp4");
    AddMovie("silent.mp4");
    Add(i_folder / "bare.mp4");
    ASSERT_TRUE(Starts(0));
    EXPECT_FALSE(i_controlP->Current()->HasPlayer());
    const Ref<CAS_QuickTimeVideo> movieP = Movie();
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_GT(movieP->ShownTime(), 0);   // how far, in a clock 20 times as fast, is the machine's load

    ASSERT_TRUE(Starts(1));
    EXPECT_EQ(i_controlP->Current()->Files().Kind(), SongKind::kSound);
    EXPECT_TRUE(RunUntilIdle());
    EXPECT_EQ(AlertsSoFar(), std::vector<std::string>());
}

TEST_F(CSongMovieTest, ThePictureDelayIsRememberedForEachOutput) {
    AddMovie("b.mp4");
    ASSERT_TRUE(Starts(0, true));
    i_controlP->SetPictureDelay(500);
    i_controlP->SeekTo300(300);
    ASSERT_TRUE(Shows(0.48));
    ASSERT_EQ(i_controlP->SetOutputDevice("Speaker with a lag"), noErr);
    EXPECT_EQ(i_controlP->PictureDelay(), 0);
    i_controlP->SetPictureDelay(-99999);
    EXPECT_EQ(i_controlP->PictureDelay(), -CPictureDelays::kMost);
    ASSERT_EQ(i_controlP->SetOutputDevice(""), noErr);
    EXPECT_EQ(i_controlP->PictureDelay(), 500);
    i_controlP->SetPictureDelay(0);
    EXPECT_EQ(i_preferences.GetDictionary("Picture Delays (ms)").Size(), 1U);
}

/** Orders in any state of three movies: every one comes to its end, and with each the thread that made its pictures. */
TEST_F(CSongMovieTest, RandomOrdersLeaveNothingBehind) {
    for (const char* nameZ : {"b.mp4", "silent.mp4", "vcd.mpg"}) AddMovie(nameZ);
    std::mt19937 random(2);
    for (int n = 0; n < 200; ++n) {
        switch (random() % 8) {
            case 0:
            case 1:
                ASSERT_EQ(Play(random() % 3), noErr);
                break;
            case 2:
                i_controlP->Stop();
                break;
            case 3:
                i_controlP->SetPaused(random() % 2 == 0);
                break;
            case 4:
            case 5:
                i_controlP->SeekTo300(static_cast<long>(random() % 700));
                break;
            case 6:
                static_cast<void>(i_controlP->SetTempo(random() % 2 == 0 ? 1.25 : 0.8));   // with no song it is refused
                break;
            default:
                i_controlP->SetPictureDelay(static_cast<long>(random() % 400) - 200);
                break;
        }
        if (random() % 3 == 0) RunFor(0.4);
    }
    ASSERT_TRUE(Starts(1));
    i_controlP->SetPaused(false);
    ASSERT_TRUE(RunUntilIdle());
    EXPECT_TRUE(RunUntilOutputIsFree());
    EXPECT_EQ(AlertsSoFar(), std::vector<std::string>());
}

}   // namespace
