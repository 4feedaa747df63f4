#include "Platform/CFileCalls_Linux.h"
#include "Play/PlayTest.h"

namespace {

using enum PlayState;

/** A disc that can go away: what was open fails, and nothing can be opened. Or it takes its time. */
class GoneDisc final : public CFileCalls_Linux {
public:
    GoneDisc() { CFileCalls::Install(this); }
    ~GoneDisc() override { CFileCalls::Install(nullptr); }
    int Open(const Path& path, FileAccess access, std::uint32_t mode, int& handle) override {
        return i_goneB && access == FileAccess::kRead ? ENOENT : CFileCalls_Linux::Open(path, access, mode, handle);
    }
    int ReadAt(int handle, std::uint64_t at, std::span<std::byte> to, std::size_t& got) override {
        got = 0;
        i_slowB.WaitUntilOpen();
        return i_goneB ? EIO : CFileCalls_Linux::ReadAt(handle, at, to, got);
    }
    std::atomic<bool> i_goneB{false};
    Gate i_slowB;   // reading waits
};

struct DiscHolder {
    GoneDisc i_disc;
};

class PlayFaultTest : protected DiscHolder, public PlayTest {   // in this order: it outlives all threads
protected:
    explicit PlayFaultTest(double speed = 20) : PlayTest(speed) { i_preferences.SetBool("Stop between tracks", true); }
};

/** The end of a seek that was overtaken is told while the next one is still on its way. */
TEST_F(PlayFaultTest, ASeekThatIsOvertakenDoesNotStartTheClockOfTheNextOne) {
    Add(Sound("a.wav", 60), Graphics("a.cdg", 18000));
    CLog::Get().SetSwitch(LogSwitch::kThreads, true);
    ASSERT_TRUE(Starts(0));
    i_controlP->SeekTo300(3000);
    while (!Logged("Completing Thread: song seek")) std::this_thread::yield();   // it has left, and nobody heard of it
    i_disc.i_slowB = true;
    i_controlP->SeekTo300(9000);
    for (int n = 0; n < 50; ++n) {
        Pass();
        ASSERT_EQ(i_controlP->CurTime300(), 9000);
    }
    i_disc.i_slowB = false;
    EXPECT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 9000; }));
    CLog::Get().SetSwitch(LogSwitch::kThreads, false);
}

/** A song whose disc or file goes plays what it has, and is told of once; then everything works again. */
TEST_F(PlayFaultTest, WhatBefallsTheFilesOfASong) {
    Sound("movie.wav", 24);
    ASSERT_EQ(std::system(("cd '" + i_folder.string() +
                           "' && python3 -c \"import zipfile as z; z.ZipFile('a.zip','w',z.ZIP_STORED)"
                           ".write('movie.wav')\" && ffmpeg -v error -nostdin -f lavfi -i testsrc=s=64x48:r=5:d=24 -i "
                           "movie.wav -map 0 -map 1 -c:v mpeg4 -c:a pcm_s16le movie.mov")
                              .c_str()),
              0);
    enum class When { kPreRoll, kPlaying, kLoadedAhead };
    enum class How { kDiscGone, kCut, kRenamed, kDeleted };
    using enum When;
    using enum How;
    constexpr struct {
        const char* nameZ;
        When when;
        How how;
        bool endsB;   // it plays to its end
    } cases[] = {
        {"a.wav", kPreRoll, kDiscGone, false},   {"a.wav", kPlaying, kDiscGone, false},
        {"a.wav", kPreRoll, kCut, false},        {"a.wav", kPlaying, kCut, false},
        {"a.wav", kPlaying, kRenamed, true},     {"a.wav", kPlaying, kDeleted, true},
        {"a.wav", kLoadedAhead, kDeleted, true}, {"a.wav", kLoadedAhead, kDiscGone, false},
        {"a.zip", kPlaying, kDiscGone, false},   {"movie.mov", kPlaying, kDiscGone, false},
        {"movie.mov", kPreRoll, kCut, false},    {"movie.mov", kPlaying, kDeleted, true},
    };
    Add(Sound("other.wav", 0.5));   // all of it lies in the ring
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << c.nameZ << ", when " << static_cast<int>(c.when) << ", how "
                                        << static_cast<int>(c.how));
        const std::filesystem::path folder = i_folder / "disc", file = folder / c.nameZ;
        std::filesystem::create_directories(folder);
        const bool wavB = file.extension() == ".wav";
        std::filesystem::copy(wavB ? Sound("a.wav", 24) : i_folder / c.nameZ, file);
        Add(file, wavB ? Graphics("disc/a.cdg", 7200) : "");
        const std::size_t sungL = i_sung.size(), alertsL = AlertsSoFar().size();

        i_device.shutB = c.when == kPreRoll;
        if (c.when == kLoadedAhead) {
            ASSERT_TRUE(Starts(0, true));
            ASSERT_TRUE(RunUntil([&] { return i_controlP->IsNextReady(); }));
        } else {
            ASSERT_EQ(Play(1), noErr);
            ASSERT_TRUE(RunUntil([&] {
                return c.when == kPlaying ? i_controlP->CurTime300() > 100 : i_controlP->Current()->Files().IsLoaded();
            }));
        }
        i_disc.i_goneB = c.how == kDiscGone;
        if (c.how == kCut) std::filesystem::resize_file(file, std::filesystem::file_size(file) / 3);
        if (c.how == kRenamed) std::filesystem::rename(folder, i_folder / "moved");
        if (c.how == kDeleted) std::filesystem::remove_all(folder);
        i_device.shutB = false;
        ASSERT_TRUE(c.when != kLoadedAhead || !Failed(Play(1)));

        ASSERT_TRUE(RunUntilIdle());
        EXPECT_EQ(i_sung.size(), sungL + (c.endsB ? 1 : 0));
        EXPECT_EQ(AlertsSoFar().size(), alertsL + (c.endsB ? 0 : 1)) << testing::PrintToString(AlertsSoFar());
        EXPECT_EQ(i_controlP->PlayErr() == noErr, c.endsB) << Number(i_controlP->PlayErr());
        i_disc.i_goneB = false;
        EXPECT_TRUE(Starts(0));   // the show goes on
        i_controlP->Stop();
        ASSERT_TRUE(RunUntilOutputIsFree());
        ASSERT_EQ(i_listP->RemoveItem(Row(1)), noErr);
        std::filesystem::remove_all(folder);
        std::filesystem::remove_all(i_folder / "moved");
    }
}

class PlayDeviceTest : public PlayFaultTest {
protected:
    PlayDeviceTest() : PlayFaultTest(2) {}
    [[nodiscard]] long Apart300() const {
        return std::abs(i_controlP->Current()->Heard300() - i_controlP->CurTime300());
    }
};

/** A device that was away comes back to where the words are by then, however long it took. */
TEST_F(PlayDeviceTest, ADeviceThatVanishesAndComesBackPlaysOnWhereTheWordsAre) {
    Add(Sound("a.wav", 600), Graphics("a.cdg", 180000));
    ASSERT_EQ(Play(0), noErr);
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > 300; }));

    i_device.otherB = false;   // there is none: the words go on
    i_device.lostB = true;
    ASSERT_TRUE(RunUntil([&] { return AlertsSoFar().size() == 1; }));
    long at300 = i_controlP->CurTime300();
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > at300 + 600; }));
    i_device.otherB = i_device.newB = true;
    ASSERT_TRUE(RunUntil([&] { return !i_device.lostB; }));
    EXPECT_LT(Apart300(), 150);

    i_device.shutB = true;   // there is one, and it takes its time
    i_device.lostB = true;
    at300 = i_controlP->CurTime300();
    ASSERT_TRUE(RunUntil([&] { return i_controlP->CurTime300() > at300 + 1500; }));
    i_device.shutB = false;
    EXPECT_TRUE(RunUntil([&] { return !i_device.lostB && Apart300() < 150; }));
    EXPECT_TRUE(Logged("the sound goes there"));
    EXPECT_GT(i_controlP->CurTime300(), at300 + 1500);
    EXPECT_EQ(i_controlP->State(), kPlaying);
    EXPECT_EQ(AlertsSoFar().size(), 2U);   // each loss once
    EXPECT_EQ(i_controlP->PlayErr(), noErr);
}

/** The device that was chosen, else another, else a clock that looks for one; each piece of news once. */
TEST_F(PlayDeviceTest, ASongPlaysOnWhatIsThereAndGoesBackToWhatWasChosen) {
    const auto plays = [&](const std::string& name) { return RunUntil([&] { return i_device.plays.Get() == name; }); };
    i_anyDeviceB = true;
    Add(Sound("a.wav", 600), Graphics("a.cdg", 180000));
    i_device.namedB = false;
    EXPECT_EQ(i_controlP->SetOutputDevice("Interface"), noErr);
    for (int songs = 0; songs < 2; ++songs) {
        ASSERT_TRUE(Starts(0));
        EXPECT_TRUE(plays("System Default"));
    }
    EXPECT_EQ(AlertsSoFar(), Words{"The audio output “Interface” is not there."});
    EXPECT_EQ(i_controlP->SetOutputDevice("Interface"), noErr);   // asked for again: looked for, and answered
    ASSERT_TRUE(RunUntil([&] { return AlertsSoFar().size() == 2; }));
    EXPECT_EQ(i_device.looksL, 1);
    i_device.namedB = true;   // it comes,
    i_device.newB = true;     // and is told of
    EXPECT_TRUE(plays("Interface"));

    i_device.namedB = false;   // and goes, in the middle of the song
    i_device.lostB = true;
    EXPECT_TRUE(plays("System Default"));
    ASSERT_TRUE(Starts(0));
    EXPECT_EQ(AlertsSoFar().size(), 3U) << testing::PrintToString(AlertsSoFar());
    EXPECT_EQ(AlertsSoFar().back(), "The audio output “Interface” has gone.");
    i_device.otherB = false;   // nor is there any other
    i_device.lostB = true;
    EXPECT_TRUE(plays(""));
    ASSERT_TRUE(Starts(0));
    const long at300 = i_controlP->CurTime300();
    const int looksL = i_device.looksL;
    const double sinceT = CClock::Get().SteadyT();
    EXPECT_TRUE(RunUntil([&] {   // the words go on, and each second it is looked for one
        return i_controlP->CurTime300() > at300 + 900 && i_device.looksL >= looksL + 2;
    }));
    EXPECT_LE(i_device.looksL - looksL, CClock::Get().SteadyT() - sinceT + 2);
    EXPECT_EQ(AlertsSoFar().size(), 4U) << testing::PrintToString(AlertsSoFar());
    i_device.otherB = true;   // no event tells of it
    EXPECT_TRUE(plays("System Default"));
    EXPECT_EQ(i_controlP->PlayErr(), noErr);
    EXPECT_EQ(i_controlP->State(), kPlaying);
}

}   // namespace
