#include "Movies/CMoviePictures.h"

#include <gtest/gtest.h>

#include <cmath>

#include "Movies/CMovieTime.h"
#include "Platform/ScriptedClock.h"

namespace {

constexpr std::size_t kFullHD_Bytes = 1920U * 1080 * 4;

void PutAt(CMoviePictures& pictures, double timeT, bool atOnceB = false) {
    MoviePicturePtr pictureP = pictures.Borrow(100);
    ASSERT_NE(pictureP, nullptr);
    pictureP->timeT = timeT;
    pictureP->atOnceB = atOnceB;
    pictureP->turn = pictures.Turn();
    pictures.Put(std::move(pictureP));
}

/** As a song does that plays, not one that only lies ready. */
void LookAt(CMoviePictures& pictures) {
    MoviePicturePtr noneP;
    std::uint64_t droppedL = 0;
    EXPECT_FALSE(pictures.Choose(-1, noneP, droppedL));
}

TEST(CMoviePictures, TheLastOneThatHasBegunIsChosenAndTheOthersCount) {
    CMoviePictures pictures;
    LookAt(pictures);
    MoviePicturePtr shownP;
    std::uint64_t droppedL = 0;
    for (const double timeT : {1.0, 1.5, 2.0, 2.5}) PutAt(pictures, timeT);
    EXPECT_FALSE(pictures.Choose(0.999, shownP, droppedL));
    EXPECT_EQ(shownP, nullptr);
    EXPECT_TRUE(pictures.Choose(1.0, shownP, droppedL));
    EXPECT_EQ(shownP->timeT, 1.0);
    EXPECT_FALSE(pictures.Choose(1.2, shownP, droppedL));
    EXPECT_EQ(droppedL, 0U);
    EXPECT_TRUE(pictures.Choose(2.4, shownP, droppedL));   // 1.5 had no turn
    EXPECT_EQ(shownP->timeT, 2.0);
    EXPECT_EQ(droppedL, 1U);
    double nextT = 0;
    EXPECT_TRUE(pictures.NextTime(nextT));
    EXPECT_EQ(nextT, 2.5);
    EXPECT_FALSE(pictures.Choose(0.0, shownP, droppedL));   // never back by itself
}

TEST(CMoviePictures, ASeekEmptiesItAndItsFirstPictureIsShownAtOnce) {
    CMoviePictures pictures;
    MoviePicturePtr shownP;
    std::uint64_t droppedL = 0;
    LookAt(pictures);
    PutAt(pictures, 1.0);
    MoviePicturePtr stale = pictures.Borrow(100);
    stale->turn = pictures.Turn();
    pictures.Seek(50);
    pictures.Seek(60);
    EXPECT_EQ(pictures.Borrow(100), nullptr);   // the maker looks up
    pictures.Put(std::move(stale));             // made for the old place
    EXPECT_FALSE(pictures.Choose(1000, shownP, droppedL));
    MovieSeek seek;
    ASSERT_TRUE(pictures.TakeSeek(seek));
    EXPECT_EQ(seek.seconds, 60);
    EXPECT_FALSE(pictures.TakeSeek(seek));
    PutAt(pictures, 60.02, true);
    PutAt(pictures, 60.06);
    EXPECT_TRUE(pictures.Choose(0, shownP, droppedL));
    EXPECT_EQ(shownP->timeT, 60.02);
    EXPECT_EQ(droppedL, 0U);

    pictures.SetEnd(60.1, seek.turn - 1);   // told of the place before
    EXPECT_FALSE(pictures.IsEnded(100));
    pictures.SetEnd(60.1, seek.turn);
    EXPECT_FALSE(pictures.IsEnded(100));   // one is still to be shown
    EXPECT_TRUE(pictures.Choose(60.07, shownP, droppedL));
    EXPECT_FALSE(pictures.IsEnded(60.09));
    EXPECT_TRUE(pictures.IsEnded(60.1));
    EXPECT_FALSE(pictures.IsEnded(50.2, 10));
    EXPECT_TRUE(pictures.IsEnded(50, 10));   // an absurd length of the last one
    pictures.Seek(0);
    ASSERT_TRUE(pictures.TakeSeek(seek));
    EXPECT_FALSE(pictures.IsEnded(100, 10)) << "the maker is on its way";
    PutAt(pictures, 36000);
    EXPECT_TRUE(pictures.IsEnded(100, 10));
    EXPECT_FALSE(pictures.IsEnded(100));
}

TEST(CMoviePictures, MemoryIsBounded) {
    struct Case {
        std::size_t bytes, pictures;
    };
    for (const Case c : {Case{100, 8}, Case{kFullHD_Bytes, 6}, Case{CMoviePictures::kMost_Pixels * 4, 4}}) {
        CMoviePictures pictures;
        LookAt(pictures);
        std::size_t countL = 0;
        std::vector<MoviePicturePtr> all;
        for (; countL < c.pictures; ++countL) all.push_back(pictures.Borrow(c.bytes));
        EXPECT_NE(all.back(), nullptr);
        pictures.Stop();   // instead of the wait for one more
        EXPECT_EQ(pictures.Borrow(c.bytes), nullptr);
        EXPECT_LE(c.bytes * c.pictures, std::max<std::size_t>(CMoviePictures::kMost_Bytes, 64U << 20));
    }
}

TEST(CMoviePictures, PicturesThatGrewMakeRoom) {
    CMoviePictures pictures;
    LookAt(pictures);
    std::vector<MoviePicturePtr> small;
    for (int n = 0; n < 8; ++n) small.push_back(pictures.Borrow(100));
    for (MoviePicturePtr& pictureP : small) pictures.GiveBack(std::move(pictureP));
    std::vector<MoviePicturePtr> large;
    for (int n = 0; n < 6; ++n) large.push_back(pictures.Borrow(kFullHD_Bytes));
    EXPECT_NE(large.back(), nullptr);
    pictures.Stop();
    EXPECT_EQ(pictures.Borrow(kFullHD_Bytes), nullptr);
}

/** The sound as a device takes it: 2,048 frames at once. The picture's time must run like a clock all the same. */
TEST(CMovieTime, FollowsTheStepsOfTheSoundSmoothly) {
    ScriptedClock clock;
    CMovieTime time;
    constexpr double kStepT = 2048.0 / 44100;
    double lastT = -1, least = 1, most = 0;
    for (int n = 0; n < 4000; ++n) {   // 16 s
        const double playedT = std::floor(n * 0.004 / kStepT + 1) * kStepT * 1.25;
        time.Follow(playedT, true, 1.25);
        const double nowT = time.Now();
        if (n > 500) {   // it may make up for a step at first
            EXPECT_GT(nowT, lastT);
            least = std::min(least, nowT - lastT);
            most = std::max(most, nowT - lastT);
            EXPECT_NEAR(nowT, n * 0.004 * 1.25, kStepT * 1.25);
        }
        lastT = nowT;
        clock.Advance(0.004);
    }
    EXPECT_GT(least, 0.005 * 0.975);
    EXPECT_LT(most, 0.005 * 1.025);
}

TEST(CMovieTime, AJumpOfTheSoundIsTakenAtOnceAndAPauseStands) {
    ScriptedClock clock;
    CMovieTime time;
    time.Follow(10, true, 1);
    clock.Advance(0.1);
    EXPECT_NEAR(time.Now(), 10.1, 1e-9);
    time.Follow(10.1, false, 1);
    clock.Advance(5);
    time.Follow(10.13, false, 1);   // the last block of before the pause
    clock.Advance(5);
    EXPECT_NEAR(time.Now(), 10.13, 1e-9);
    time.Follow(100, true, 1);
    EXPECT_NEAR(time.Now(), 100, 1e-9);
    time.Follow(3, true, 1);
    EXPECT_NEAR(time.Now(), 3, 1e-9);
    time.SetDelay(150);
    EXPECT_NEAR(time.PictureT(), 2.85, 1e-9);
    time.SetDelay(-999999);
    EXPECT_NEAR(time.PictureT(), 5, 1e-9);
    time.SetDelay(0);
    time.Run(true, 2);
    time.Jump(1);   // as a seek in a pause that it was not told of yet
    clock.Advance(0.5);
    EXPECT_NEAR(time.Run(false), 1, 1e-9);
}

}   // namespace
