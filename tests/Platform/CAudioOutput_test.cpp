#include "Platform/CAudioOutput.h"

#include <gtest/gtest.h>
#include <SDL.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <thread>

#include "Platform/CAudioOutput_File.h"
#include "Platform/CAudioOutput_Null.h"
#include "Platform/CAudioOutput_SDL.h"
#include "Platform/CFileCalls_Faults.h"
#include "Platform/Patience.h"
#include "Platform/ScriptedClock.h"

namespace {

using Samples = std::vector<std::int16_t>;
constexpr AudioBlocks kSmall{.framesL = 100, .countL = 3};

/** Samples that tell their place. */
Samples Numbered(std::size_t frames, std::int16_t first = 1) {
    Samples samples(frames * kAudioOutput_Channels);
    std::iota(samples.begin(), samples.end(), first);
    return samples;
}

/** What a file holds, read byte by byte as little-endian. */
Samples ReadSamples(const std::filesystem::path& file) {
    std::ifstream in(file, std::ios::binary);
    Samples samples;
    for (int lowL = in.get(); lowL != EOF; lowL = in.get())
        samples.push_back(static_cast<std::int16_t>(lowL | in.get() << 8));
    return samples;
}

struct Folder {
    Folder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "output-XXXXXX").string();
        path = ::mkdtemp(pattern.data());
    }
    ~Folder() { std::filesystem::remove_all(path); }
    std::filesystem::path path;
};

/** Looks again until `doneB`; false when it does not come. */
template <class Done>
bool Soon(Done doneB) {
    for (const auto startT = std::chrono::steady_clock::now(); !doneB();)
        if (std::chrono::steady_clock::now() - startT > kPatience)
            return false;
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
    return true;
}

}   // namespace

TEST(CAudioOutput, TheTextChoosesTheForm) {
    EXPECT_NE(dynamic_cast<CAudioOutput_Null*>(MakeAudioOutput("dummy").outputP.get()), nullptr);
    EXPECT_NE(dynamic_cast<CAudioOutput_File*>(MakeAudioOutput("disk:/tmp/x").outputP.get()), nullptr);
    for (const char* textZ : {"", "Speakers", "disk", "Dummy"}) {
        const AudioOutputChoice choice = MakeAudioOutput(textZ);
        EXPECT_NE(dynamic_cast<CAudioOutput_SDL*>(choice.outputP.get()), nullptr) << textZ;
        EXPECT_EQ(choice.device, *textZ == 0 ? "System Default" : textZ);
    }
}

TEST(CAudioOutput_Null, TakesFramesByTheClock) {
    ScriptedClock clock;
    CAudioOutput_Null output;
    ASSERT_EQ(output.Open("System Default", kSmall), noErr);
    EXPECT_EQ(output.Room(), 300U);
    ASSERT_EQ(output.Queue(Numbered(300)), noErr);
    EXPECT_EQ(output.Queue(Numbered(1)), paramErr);
    EXPECT_EQ(output.FramesPlayed(), 0U);
    clock.Advance(100.5 / 44100);
    EXPECT_EQ(output.FramesPlayed(), 100U);
    EXPECT_EQ(output.Room(), 100U);
    clock.Advance(100.6 / 44100);   // the halves add up
    EXPECT_EQ(output.FramesPlayed(), 201U);
    EXPECT_EQ(output.FramesLate(), 0U);
    clock.Advance(1000.0 / 44100);
    EXPECT_EQ(output.FramesPlayed(), 300U);
    EXPECT_NEAR(static_cast<double>(output.FramesLate()), 901, 1);
    ASSERT_EQ(output.Queue(Numbered(50)), noErr);   // begins now, not in the past
    EXPECT_EQ(output.FramesPlayed(), 300U);
    clock.Advance(10.5 / 44100);
    EXPECT_EQ(output.FramesPlayed(), 310U);
    output.Close();
    EXPECT_EQ(output.Queue(Numbered(1)), paramErr);
}

TEST(CAudioOutput_Null, RefusesWhatItHasNot) {
    CAudioOutput_Null output;
    EXPECT_EQ(output.Open("Speakers", kSmall), fnfErr);
    EXPECT_EQ(output.Open("", {.framesL = 0, .countL = 2}), paramErr);
    EXPECT_EQ(output.Open("", {.framesL = 10, .countL = 0}), paramErr);
    ASSERT_EQ(output.Open("", kSmall), noErr);
    EXPECT_EQ(output.Queue(Samples(3)), paramErr);   // half a frame
    EXPECT_EQ(output.Queue({}), noErr);
}

TEST(CAudioOutput_Null, WakesFromAWait) {
    ScriptedClock clock;   // stands still: nothing becomes free
    CAudioOutput_Null output;
    ASSERT_EQ(output.Open("", kSmall), noErr);
    ASSERT_EQ(output.Queue(Numbered(300)), noErr);
    std::thread waker([&] { output.Wake(); });
    output.WaitForRoom(300, 3600);
    waker.join();
    EXPECT_EQ(output.Room(), 0U);
    output.WaitForRoom(0, 3600);   // there is room: no wait
}

TEST(CAudioOutput_File, HoldsEverySampleAndAppendsTheNextSong) {
    const Folder folder;
    const auto file = folder.path / "out.raw";
    std::ofstream(file) << "what was there before";
    CAudioOutput_File output(file, 0);
    const Samples first = Numbered(150, -32768), second = Numbered(7, 256);
    ASSERT_EQ(output.Open("", kSmall), noErr);
    ASSERT_EQ(output.Queue(first), noErr);
    EXPECT_EQ(output.FramesPlayed(), 150U);
    EXPECT_EQ(output.Room(), 300U);
    output.Close();
    EXPECT_EQ(ReadSamples(file), first);
    ASSERT_EQ(output.Open("", kSmall), noErr);
    EXPECT_EQ(output.FramesPlayed(), 0U);
    ASSERT_EQ(output.Queue(second), noErr);
    output.Close();
    Samples both = first;
    both.insert(both.end(), second.begin(), second.end());
    EXPECT_EQ(ReadSamples(file), both);
}

/** What is cut off in the middle fades out, and a device that takes over in the middle fades it in. */
TEST(CAudioOutput, NeitherItsEndNorAnotherDeviceIsAClick) {
    const Folder folder;
    constexpr std::int16_t kLoud = 20000;
    constexpr AudioBlocks kBlocks{.framesL = 1000, .countL = 1000};   // more than a slow machine lets run dry
    const Samples loud(900'000 * kAudioOutput_Channels, kLoud);
    const auto mostStep = [](const Samples& samples) {
        int mostL = 0;
        for (std::size_t n = kAudioOutput_Channels; n < samples.size(); ++n)
            mostL = std::max(mostL, std::abs(samples[n] - samples[n - kAudioOutput_Channels]));
        return mostL;
    };
    constexpr double kSteepest = kLoud * 1.4;   // over the frames of a fade
    {
        ScriptedClock clock;
        CAudioOutput_File output(folder.path / "file.raw");
        ASSERT_EQ(output.Open("", kBlocks), noErr);
        ASSERT_EQ(output.Queue(loud), noErr);
        clock.Advance(500.5 / 44100);
        output.Close();
        const Samples got = ReadSamples(folder.path / "file.raw");
        ASSERT_EQ(got.size(), (500U + 441U) * kAudioOutput_Channels);
        EXPECT_LT(mostStep(got), kSteepest / 441);
        EXPECT_EQ(got[499 * kAudioOutput_Channels], kLoud);
        EXPECT_LT(std::abs(got.back()), 10);
    }
    const auto file = folder.path / "sdl.raw", before = folder.path / "before.raw";
    ::setenv("SDL_AUDIODRIVER", "disk", 1);
    ::setenv("SDL_DISKAUDIOFILE", before.c_str(), 1);
    {
        CAudioOutput_SDL output;
        ASSERT_EQ(output.Open("", kBlocks), noErr);
        ASSERT_EQ(output.Queue(loud), noErr);
        EXPECT_TRUE(Soon([&] { return output.FramesPlayed() > 2000; }));
        ::setenv("SDL_DISKAUDIOFILE", file.c_str(), 1);   // a device that was not there before
        std::string device;
        ASSERT_EQ(output.Recover(device), noErr);
        const std::uint64_t playedL = output.FramesPlayed();
        EXPECT_TRUE(Soon([&] { return output.FramesPlayed() > playedL + 1000; }));
    }
    for (const char* nameZ : {"SDL_AUDIODRIVER", "SDL_DISKAUDIOFILE"}) ::unsetenv(nameZ);
    Samples got = ReadSamples(file);
    EXPECT_EQ(*std::ranges::max_element(got), kLoud);
    got.insert(got.begin(), kAudioOutput_Channels, 0);
    EXPECT_LT(mostStep(got), kSteepest / 220);
    EXPECT_EQ(got.back(), 0);
}

TEST(CAudioOutput_File, TellsWhyNot) {
    const Folder folder;
    EXPECT_EQ(CAudioOutput_File("").Open("", kSmall), fnfErr);
    EXPECT_EQ(CAudioOutput_File(folder.path / "none" / "x").Open("", kSmall), static_cast<OSErr>(ENOENT));
    EXPECT_EQ(CAudioOutput_File(folder.path).Open("", kSmall), static_cast<OSErr>(EISDIR));
    CAudioOutput_File full("/dev/full", 0);
    ASSERT_EQ(full.Open("", kSmall), noErr);
    EXPECT_EQ(full.Queue(Numbered(10)), dskFulErr);
    EXPECT_EQ(full.FramesPlayed(), 0U);
}

namespace {
/** SDL on its driver without a device. */
class CAudioOutput_SDL_test : public testing::Test {
protected:
    CAudioOutput_SDL_test() { ::setenv("SDL_AUDIODRIVER", "dummy", 1); }
    ~CAudioOutput_SDL_test() override { ::unsetenv("SDL_AUDIODRIVER"); }
    /** As SDL's audio thread tells of a device that was pulled out. The first that a process opens is number 2. */
    static void PullOut(std::uint32_t id) {
        SDL_Event event{};
        event.adevice.type = SDL_AUDIODEVICEREMOVED;
        event.adevice.which = id;
        SDL_PushEvent(&event);
    }
};
}   // namespace

TEST_F(CAudioOutput_SDL_test, PlaysAllAndCountsExactly) {
    CAudioOutput_SDL output;
    EXPECT_EQ(output.DeviceNames().front(), "System Default");
    EXPECT_EQ(output.Open("No such device", {}), fnfErr);
    ASSERT_EQ(output.Open("System Default", {.framesL = 512, .countL = 2}), noErr);
    std::uint64_t queuedL = 0;
    for (int n = 0; n < 8; ++n) {
        while (output.Room() < 500) output.WaitForRoom(500, 5);
        ASSERT_EQ(output.Queue(Numbered(500)), noErr);
        queuedL += 500;
        EXPECT_LE(output.FramesPlayed(), queuedL);
    }
    EXPECT_TRUE(Soon([&] { return output.FramesPlayed() == queuedL; }));
    EXPECT_TRUE(Soon([&] { return output.FramesLate() > 0; }));
    EXPECT_EQ(output.FramesPlayed(), queuedL);
    EXPECT_EQ(output.Queue(Numbered(1025)), paramErr);
}

TEST_F(CAudioOutput_SDL_test, GoesOnWithTheDefaultDevice) {
    CAudioOutput_SDL output;
    ASSERT_EQ(output.Open("", {.framesL = 512, .countL = 8}), noErr);
    PullOut(77);
    EXPECT_FALSE(output.IsLost());
    PullOut(2);
    EXPECT_TRUE(output.IsLost());
    ASSERT_EQ(output.Queue(Numbered(4096)), noErr);
    std::string device;
    ASSERT_EQ(output.Recover(device), noErr);
    EXPECT_EQ(device, "System Default");
    EXPECT_FALSE(output.IsLost());
    EXPECT_TRUE(Soon([&] { return output.FramesPlayed() == 4096; }));
}

TEST_F(CAudioOutput_SDL_test, TellsWhenThereIsNothingToPlayOn) {
    CAudioOutput_SDL output;
    std::string device;
    EXPECT_EQ(output.Recover(device), ioErr);   // closed
    ::setenv("SDL_AUDIODRIVER", "no such driver", 1);
    EXPECT_EQ(output.Open("", {}), fnfErr);
    EXPECT_EQ(output.DeviceNames(), std::vector<std::string>{"System Default"});
    // A song plays all the same, at its pace, until there is something.
    ASSERT_EQ(output.OpenAny("Interface", {.framesL = 512, .countL = 2}, device), noErr);
    EXPECT_EQ(device, "");
    EXPECT_TRUE(output.IsLost());
    ASSERT_EQ(output.Queue(Numbered(1000)), noErr);
    while (output.FramesPlayed() < 1000) output.Rest(5.0 / 1000);
    EXPECT_EQ(output.Recover(device), ioErr);
    ::setenv("SDL_AUDIODRIVER", "dummy", 1);
    ASSERT_EQ(output.Recover(device), noErr);
    EXPECT_EQ(device, "System Default");
    EXPECT_FALSE(output.IsLost());
    ASSERT_EQ(output.Queue(Numbered(512)), noErr);
    EXPECT_TRUE(Soon([&] { return output.FramesPlayed() == 1512; }));
    EXPECT_EQ(output.Recover(device), ioErr);   // the one that was chosen is not back: this one plays on
    EXPECT_FALSE(output.IsLost());
    ASSERT_EQ(output.OpenAny("Interface", {.framesL = 512, .countL = 2}, device), noErr);
    EXPECT_EQ(device, "System Default");
}

TEST(CAudioOutput_SDL_Disk, TheSamplesArriveUnaltered) {
    const Folder folder;
    const auto file = folder.path / "sdl.raw";
    ::setenv("SDL_AUDIODRIVER", "disk", 1);
    ::setenv("SDL_DISKAUDIOFILE", file.c_str(), 1);
    ::setenv("SDL_DISKAUDIODELAY", "1", 1);
    const Samples sent = Numbered(3000);
    {
        CAudioOutput_SDL output;
        ASSERT_EQ(output.Open("", {.framesL = 1000, .countL = 3}), noErr);
        ASSERT_EQ(output.Queue(sent), noErr);
        EXPECT_TRUE(Soon([&] { return output.FramesPlayed() == 3000 && output.FramesLate() > 2000; }));
    }
    for (const char* nameZ : {"SDL_AUDIODRIVER", "SDL_DISKAUDIOFILE", "SDL_DISKAUDIODELAY"}) ::unsetenv(nameZ);
    const Samples got = ReadSamples(file);
    const auto at = std::search(got.begin(), got.end(), sent.begin(), sent.end());
    EXPECT_NE(at, got.end());   // before and after it: silence
    EXPECT_TRUE(std::all_of(got.begin(), at, [](auto sample) { return sample == 0; }));
}
