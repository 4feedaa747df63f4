#include "Audio/CAudioPlayer.h"

#include "Audio/PlayerTest.h"
#include "Platform/CAudioOutput_File.h"
#include "Platform/CAudioOutput_SDL.h"

namespace {
class CAudioPlayer_test : public PlayerTest {};

bool Contains(const Samples& all, const Samples& part) {
    return std::search(all.begin(), all.end(), part.begin(), part.end()) != all.end();
}
}   // namespace

TEST_F(CAudioPlayer_test, EverySampleReachesTheOutput) {
    const Samples song = RandomSamples(100001);
    ASSERT_EQ(Create(song), noErr);
    EXPECT_EQ(i_output.i_opened, "System Default");
    EXPECT_TRUE(i_playerP->IsPaused());
    EXPECT_EQ(i_playerP->HeardFrame(), 0);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(PlayOut());
    Samples given = i_output.Given();
    ASSERT_GE(given.size(), song.size());
    given.resize(song.size());
    EXPECT_EQ(given, song);   // no silence came first
    EXPECT_TRUE(i_playerP->IsPaused());
    EXPECT_EQ(i_playerP->HeardFrame(), 100001);
    EXPECT_EQ(i_playerP->Heard300(), 100001 / 147);
    EXPECT_EQ(i_output.i_allocationsL, 0U);
    EXPECT_TRUE(Logged("Play has started"));
    i_playerP = nullptr;
    EXPECT_TRUE(Logged("finished playing"));
}

TEST_F(CAudioPlayer_test, PositionsAreWhatIsHeard) {
    const Samples song = AsSamples(Tone(440, 4 * 44100));
    ASSERT_EQ(Create(song), noErr);
    ASSERT_EQ(i_playerP->PitchTempoVolume().SetPitchTempo(2, 1.25), noErr);
    i_playerP->SetPaused(false);
    bool soundB = false;
    ASSERT_TRUE(Play([&] {
        // The first sample that is no silence is frame 0 of the song, give or take the zero that the tone starts with.
        const std::uint64_t playedL = i_output.FramesPlayed();
        const Samples given = i_output.Given();
        const auto first = std::find_if(given.begin(), given.end(), [](auto sample) { return sample != 0; });
        const auto startL = static_cast<std::uint64_t>(first - given.begin()) / 2;
        if (first != given.end() && playedL > startL + 10000 && i_playerP->FramesLate() == 0) {
            const double wanted = static_cast<double>(playedL - startL) * 1.25;
            EXPECT_NEAR(i_playerP->HeardFrame(), std::min(wanted, 4.0 * 44100), 5);
            soundB = true;
        }
        return i_playerP->IsHeardOut();
    }));
    EXPECT_TRUE(soundB);
}

TEST_F(CAudioPlayer_test, PausesAndGoesOnWithoutAClick) {
    constexpr std::size_t kFrames = 3 * 44100;
    ASSERT_EQ(Create(AsSamples(Tone(440, kFrames))), noErr);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(Play([&] { return i_playerP->HeardFrame() > 30000; }));
    i_playerP->SetPaused(true);
    const std::uint64_t pausedAt = i_output.FramesPlayed();
    ASSERT_TRUE(Play([&] { return i_output.FramesPlayed() > pausedAt + 40000; }));
    const double heard = i_playerP->HeardFrame();
    ASSERT_TRUE(Play([&] { return i_output.FramesPlayed() > pausedAt + 50000; }));
    EXPECT_EQ(i_playerP->HeardFrame(), heard);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(PlayOut());
    EXPECT_EQ(i_playerP->HeardFrame(), kFrames);
    if (i_playerP->FramesLate() < 2048) {   // else the busy machine made gaps of its own
        const Sound given = AsSound(i_output.Given());
        EXPECT_LT(MeasureClick(given, 12000, given.size() / 2 - 12000), -60);
    }
}

TEST_F(CAudioPlayer_test, BeforeItsFirstPlayItSleepsAndIsWoken) {
    ASSERT_EQ(Create(RandomSamples(60000)), noErr);
    ASSERT_TRUE(RunUntil([&] { return i_output.i_restsL + i_output.i_vainL > 0; }));
    EXPECT_EQ(i_output.i_vainL, 0);
    i_playerP->SetPaused(false);
    EXPECT_TRUE(RunUntil([&] { return !i_output.Given().empty(); }));   // with a clock that stands
}

TEST_F(CAudioPlayer_test, SeeksWhilePausedAndAfterTheEnd) {
    const Samples song = RandomSamples(60000);
    ASSERT_EQ(Create(song), noErr);
    ASSERT_EQ(i_playerP->Seek(0.5), noErr);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(PlayOut());
    constexpr std::ptrdiff_t kFade = 2 * 220;   // what begins in the middle
    EXPECT_TRUE(Contains(i_output.Given(), Samples(song.begin() + 60000 + kFade, song.end())));
    EXPECT_FALSE(Contains(i_output.Given(), Samples(song.begin() + 59990, song.end())));
    ASSERT_EQ(i_playerP->Seek(0), noErr);
    EXPECT_FALSE(i_playerP->IsStopped());
    i_playerP->SetPaused(false);
    ASSERT_TRUE(PlayOut());
    EXPECT_TRUE(Contains(i_output.Given(), Samples(song.begin() + kFade, song.end())));
}

TEST_F(CAudioPlayer_test, TheLevelOfTheShowHolds) {
    i_level.gainF = 0.5F;
    Samples song = RandomSamples(20000);
    ASSERT_EQ(Create(song), noErr);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(PlayOut());
    Sound half = AsSound(song);
    for (float& sample : half) sample *= 0.5F;
    EXPECT_TRUE(Contains(i_output.Given(), AsSamples(half)));
}

TEST_F(CAudioPlayer_test, TellsWhyTheOutputDoesNotOpen) {
    i_output.i_openErr = fnfErr;
    i_settings.device = "Speakers";
    EXPECT_EQ(Create(RandomSamples(10)), fnfErr);
    EXPECT_FALSE(i_playerP);
    EXPECT_EQ(i_output.i_opened, "Speakers");
    i_output.i_openErr = ioErr;
    EXPECT_EQ(Create(RandomSamples(10)), ioErr);
    ASSERT_EQ(AlertsSoFar().size(), 2U);
    EXPECT_EQ(AlertsSoFar()[0].find(
                  "There was a problem initializing audio output, you may want to quit and re-run|“Speakers”: "),
              0U);
    EXPECT_EQ(
        AlertsSoFar()[1].find("There was a problem initializing audio output, check your audio output device. Are "
                              "your speakers plugged in?|"),
        0U);
}

TEST_F(CAudioPlayer_test, GoesOnWhenTheDeviceIsPulledOut) {
    const Samples song = RandomSamples(80000);
    ASSERT_EQ(Create(song), noErr);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(Play([&] { return i_playerP->HeardFrame() > 20000; }));
    i_output.i_lostB = true;
    ASSERT_TRUE(PlayOut());
    EXPECT_TRUE(Contains(i_output.Given(), song));
    EXPECT_EQ(AlertsSoFar(),
              (std::vector<std::string>{"The audio output “System Default” has gone.|The song goes on with “Other”."}));
}

TEST_F(CAudioPlayer_test, WithoutAnyDeviceTheShowGoesOnInSilence) {
    ASSERT_EQ(Create(RandomSamples(200000)), noErr);
    i_playerP->SetPaused(false);
    i_output.i_otherB = false;
    i_output.i_lostB = true;
    ASSERT_TRUE(Play([&] { return i_playerP->HeardFrame() > 50000; }));
    EXPECT_LE(i_output.i_recoveries, 3);   // each second, not at each block
    EXPECT_EQ(AlertsSoFar().size(), 1U);
    i_output.i_otherB = true;
    ASSERT_TRUE(Play([&] { return !i_output.IsLost(); }));
    EXPECT_EQ(AlertsSoFar().size(), 1U);
}

TEST_F(CAudioPlayer_test, ParametersMayChangeAllTheTime) {
    ASSERT_EQ(Create(AsSamples(Tone(440, 5 * 44100))), noErr);
    i_playerP->SetPaused(false);
    std::mt19937 random(8);
    std::atomic<bool> doneB{false};
    std::thread setter([&] {
        while (!doneB) {
            if (Failed(i_playerP->PitchTempoVolume().SetPitchTempo(static_cast<double>(random() % 5) - 2,
                                                                   0.8 + static_cast<double>(random() % 5) / 10)))
                return;
            i_playerP->PitchTempoVolume().Volume().SetVocalMode(static_cast<VocalMode>(random() % 4));
            i_level.gainF = static_cast<float>(random() % 10) / 10;
            std::this_thread::yield();
        }
    });
    EXPECT_TRUE(PlayOut());
    doneB = true;
    setter.join();
    EXPECT_NEAR(i_playerP->HeardFrame(), 5 * 44100, 2048);   // changed in its last frames the engine drops what it held
    EXPECT_EQ(i_output.i_allocationsL, 0U);
}

TEST_F(CAudioPlayer_test, EndsAtOnceInEveryState) {
    ASSERT_EQ(Create(RandomSamples(200000)), noErr);
    i_playerP = nullptr;   // paused
    ASSERT_EQ(Create(RandomSamples(200000)), noErr);
    i_playerP->SetPaused(false);
    i_playerP = nullptr;   // about to play
    ASSERT_EQ(Create(RandomSamples(200000)), noErr);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(Play([&] { return i_playerP->HeardFrame() > 5000; }));
    i_playerP = nullptr;   // playing, with full blocks and a clock that stands still
    ASSERT_EQ(Create(RandomSamples(2000)), noErr);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(PlayOut());
    i_playerP = nullptr;   // at the end
    ASSERT_EQ(Create(RandomSamples(200000)), noErr);
    i_playerP->SetPaused(false);
    i_song.i_ringP->Abort();
    ASSERT_TRUE(Play([&] { return Failed(i_playerP->Result()); }));
    EXPECT_EQ(i_playerP->Result(), abortErr);
    i_playerP = nullptr;   // after a failure
    EXPECT_TRUE(AlertsSoFar().empty());
}

namespace {
Samples FileSamples(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    Samples samples(std::filesystem::file_size(file) / 2);
    in.read(reinterpret_cast<char*>(samples.data()), static_cast<std::streamsize>(samples.size() * 2));
    return samples;
}
}   // namespace

namespace {
/** `got` has all of `song`, frame by frame, with nothing but `silentL` frames of silence between. */
bool ContainsWithGaps(const Samples& got, const Samples& song, std::uint64_t& silentL) {
    const auto first = std::search(got.begin(), got.end(), song.begin(), song.begin() + 100);
    auto at = static_cast<std::size_t>(first - got.begin());
    for (std::size_t n = 0; n < song.size(); at += 2) {
        if (at + 1 >= got.size()) return false;
        if (got[at] == song[n] && got[at + 1] == song[n + 1])
            n += 2;
        else if (got[at] == 0 && got[at + 1] == 0)
            ++silentL;
        else
            return false;
    }
    return true;
}
}   // namespace

TEST_F(CAudioPlayer_test, PlaysThroughTheMachinesAudio) {
    const auto file = i_folder / "sdl.raw";
    const char* const kNames[] = {"SDL_AUDIODRIVER", "SDL_DISKAUDIOFILE", "SDL_DISKAUDIODELAY"};
    const std::string values[] = {"disk", file.string(), "1"};
    for (std::size_t n = 0; n < std::size(kNames); ++n) ::setenv(kNames[n], values[n].c_str(), 1);
    const Samples song = RandomSamples(44100);
    i_song.i_ringP = Ring(song);
    CAudioOutput_SDL output;
    ASSERT_EQ(CAudioPlayer::Create({.song = i_song, .output = output, .level = i_level}, i_settings, i_playerP), noErr);
    i_playerP->SetPaused(false);
    EXPECT_TRUE(RunUntil([&] { return i_playerP->IsHeardOut(); }));
    EXPECT_EQ(i_playerP->HeardFrame(), 44100);
    i_playerP = nullptr;
    for (const char* nameZ : kNames) ::unsetenv(nameZ);
    const Samples got = FileSamples(file);
    // A driver that runs forty times too fast may find nothing queued: then there is silence inside, and nothing else.
    std::uint64_t silentL = 0;
    EXPECT_TRUE(ContainsWithGaps(got, song, silentL));
    EXPECT_LE(silentL, output.FramesLate());
}

TEST_F(CAudioPlayer_test, PlaysIntoAFile) {
    const Samples song = RandomSamples(30000);
    i_song.i_ringP = Ring(song);
    CAudioOutput_File file(i_folder / "out.raw");
    ASSERT_EQ(CAudioPlayer::Create({.song = i_song, .output = file, .level = i_level}, i_settings, i_playerP), noErr);
    i_playerP->SetPaused(false);
    ASSERT_TRUE(RunUntil([&] {
        i_clock.Advance(0.02);
        file.Wake();
        return i_playerP->IsHeardOut();
    }));
    i_playerP = nullptr;
    EXPECT_TRUE(Contains(FileSamples(i_folder / "out.raw"), song));
}

TEST(AudioPlayerSettings, BlocksAndSleepAreLimited) {
    constexpr struct {
        int stored;
        std::size_t count;
    } kCases[] = {{1, 2}, {2, 2}, {5, 5}, {25, 25}, {100, 25}, {-3, 2}, {0, 2}};
    for (const auto& c : kCases) {
        AudioPlayerSettings settings;
        settings.blocksL = c.stored;
        EXPECT_EQ(settings.Blocks().countL, c.count);
        EXPECT_EQ(settings.Blocks().framesL, 2048U);
    }
    AudioPlayerSettings settings;
    EXPECT_DOUBLE_EQ(settings.SleepT(), 0.092);
    settings.sleepMillisecondsL = 7;
    EXPECT_DOUBLE_EQ(settings.SleepT(), 0.007);
    settings.sleepMillisecondsL = 100000;
    EXPECT_LE(settings.SleepT(), 1);
}

TEST(CAudioPositions, ManyBlocksAgainstAList) {
    CAudioPositions positions;
    EXPECT_EQ(positions.At(5), 0);
    std::vector<double> slow;
    std::mt19937 random(6);
    std::uint64_t place = 0;
    for (int n = 0; n < 300; ++n) {
        const std::size_t frames = 1 + random() % 40, sound = random() % (frames + 1), step = random() % 3;
        for (std::size_t m = 0; m < frames; ++m) slow.push_back(static_cast<double>(place + std::min(m, sound) * step));
        positions.Add(frames, place, place + sound * step, sound);
        place += sound * step;
        for (std::size_t back = 1; back <= std::min<std::size_t>(slow.size(), 200); ++back)
            ASSERT_NEAR(positions.At(slow.size() - back), slow[slow.size() - back], 1e-6);
        ASSERT_EQ(positions.At(slow.size() + 100), static_cast<double>(place));
        if (n > 0 && n % 50 == 0) place = random() % 1000;   // a seek
    }
}
