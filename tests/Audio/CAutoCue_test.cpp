#include "Audio/CAutoCue.h"

#include "Audio/PlayerTest.h"

namespace {
class CAutoCue_test : public PlayerTest {
protected:
    /** `silent` frames at the noise level, then a tone; the rest of a three-second song. */
    static Samples Song(std::size_t silent, double noise = 0, std::size_t fadeIn = 0) {
        std::mt19937 random(1);
        std::uniform_real_distribution<double> level(-noise, noise);
        Sound sound(silent * 2);
        for (float& sample : sound) sample = static_cast<float>(level(random));
        Sound tone = Tone(440, 3 * 44100 - silent);
        for (std::size_t n = 0; n < std::min(fadeIn * 2, tone.size()); ++n)
            tone[n] *= static_cast<float>(n) / static_cast<float>(2 * fadeIn);
        sound.insert(sound.end(), tone.begin(), tone.end());
        return AsSamples(sound);
    }
};
}   // namespace

TEST_F(CAutoCue_test, FindsTheStart) {
    struct Case {
        const char* nameZ;
        std::size_t silent;
        double noise;
        std::size_t fadeIn;
        double threshold, rollback;
        double wanted300, within;
    };
    constexpr Case kCases[] = {
        {"at once", 0, 0, 0, 0.001, 0, 0, 0},
        {"at once, with rollback", 0, 0, 0, 0.001, 0.1, 0, 0},
        {"a second of silence", 44100, 0, 0, 0.001, 0, 300, 3},
        {"a second of silence, rolled back", 44100, 0, 0, 0.001, 0.1, 270, 3},
        {"silence shorter than the rollback", 2205, 0, 0, 0.001, 0.1, 15, 3},
        {"inside the first read", 500, 0, 0, 0.001, 0, 3, 1},
        {"noise below the threshold", 60000, 0.0009, 0, 0.001, 0, 408, 3},
        {"noise above the threshold", 60000, 0.0021, 0, 0.002, 0, 0, 1},
        {"a fade of a second, found where it reaches the threshold", 44100, 0, 44100, 0.05, 0, 330, 3},
    };
    for (const Case& c : kCases) {
        SCOPED_TRACE(c.nameZ);
        i_settings.cueThreshold = c.threshold;
        i_settings.cueRollbackT = c.rollback;
        const Samples song = Song(c.silent, c.noise, c.fadeIn);
        ASSERT_EQ(Create(song), noErr);
        // Neither the tempo nor the volume of the moment changes what is found.
        ASSERT_EQ(i_playerP->PitchTempoVolume().SetPitchTempo(3, 1.5), noErr);
        i_level.onB = false;
        EXPECT_NEAR(static_cast<double>(i_playerP->AutoCue()), c.wanted300, c.within);
        EXPECT_TRUE(i_playerP->IsPaused());
        EXPECT_TRUE(i_song.i_seekingB);
        EXPECT_EQ(i_song.i_ringP->GetPos(), 0U);
        // And the song plays from its first sample.
        i_level.onB = true;
        ASSERT_EQ(i_playerP->PitchTempoVolume().SetPitchTempo(0, 1), noErr);
        i_playerP->SetPaused(false);
        ASSERT_TRUE(PlayOut());
        EXPECT_EQ(i_playerP->HeardFrame(), static_cast<double>(song.size() / 2));
        i_playerP = nullptr;
    }
    for (const char* lineZ :
         {"AutoCue: trim start == 0", "begin firstL: 0", "begin progress: 0", "Found on first search",
          "found firstL: ", "after resize: 44", "after firstL: 300", "adjusted firstL: 27"})
        EXPECT_TRUE(Logged(lineZ)) << lineZ;
}

TEST_F(CAutoCue_test, ATrimIsTakenAsItIs) {
    i_song.i_trim300 = 77;
    ASSERT_EQ(Create(Song(44100)), noErr);
    EXPECT_EQ(i_playerP->AutoCue(), 77);
    EXPECT_EQ(i_song.i_sought, std::vector<double>{0.0});
    EXPECT_TRUE(Logged("AutoCue: trim start != 0"));
}

TEST_F(CAutoCue_test, SilenceAndFailures) {
    ASSERT_EQ(Create(Samples(44100 * 2)), noErr);
    EXPECT_EQ(i_playerP->AutoCue(), 0);   // nothing but silence, which may have words
    EXPECT_TRUE(Logged("autoCue: eofErr"));
    i_playerP = nullptr;
    ASSERT_EQ(Create(Song(44100)), noErr);
    i_song.i_ringP->Abort();
    EXPECT_EQ(i_playerP->AutoCue(), 0);
    i_song.i_err = abortErr;
    i_playerP = nullptr;
    ASSERT_EQ(Create(Song(44100)), noErr);
    EXPECT_EQ(i_playerP->AutoCue(), 0);
    EXPECT_TRUE(AlertsSoFar().empty());
}
