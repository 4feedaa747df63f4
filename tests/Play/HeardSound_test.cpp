#include <numbers>

#include "Platform/CAudioOutput_File.h"
#include "Play/PlayTest.h"

namespace {

constexpr double kFull = 32767;
/** Half of full scale, which is 6 dB below it. */
constexpr double kTone = 0.5;

/** A device whose sound is kept. */
class HeardOutput final : public CAudioOutput_File {
public:
    HeardOutput(ScriptedDevice& device, const std::filesystem::path& file)
        : CAudioOutput_File(file), i_device(device) {}
    OSErr Open(std::string_view device, const AudioBlocks& blocks) override {
        const OSErr err = CAudioOutput_File::Open(device, blocks);
        if (!Failed(err) && !std::exchange(i_openB, true)) ++i_device.openedL;
        if (!Failed(err)) i_device.feeder.Expect();   // or a slow start would be a hole in the sound
        Note(this);
        return err;
    }
    void Close() override {
        Note(nullptr);
        i_device.feeder.Forget();
        CAudioOutput_File::Close();
        if (std::exchange(i_openB, false)) --i_device.openedL;
    }
    void WaitForRoom(std::size_t frames, double seconds) override {
        i_device.feeder.NoteDone();
        CAudioOutput_File::WaitForRoom(frames, seconds);
    }
    void Rest(double seconds) override {
        if (seconds > Feeder::kLook_MostT) i_device.feeder.NoteDone();   // else sound is late: the clock waits for it
        CAudioOutput_File::Rest(seconds);
    }

private:
    void Note(CAudioOutput* outputP) {
        const std::scoped_lock guard(i_device.lock);
        i_device.fedP = outputP;
    }

    ScriptedDevice& i_device;
    bool i_openB = false;
};

/** Songs that are heard by files, one a device. */
class HeardTest : public PlayTest {
protected:
    HeardTest() {
        i_preferences.SetBool("Auto-cue", false);
        i_preferences.SetBool("Stop at playlist end", true);
    }
    AudioOutputChoice MakeOutput(const std::string&) override {
        i_heard.push_back(i_folder / ("heard " + std::to_string(i_heard.size())));
        return {std::make_unique<HeardOutput>(i_device, i_heard.back()), std::string(kAudioOutput_Default)};
    }
    /** A tone that comes and goes softly: what is not soft is ours. */
    std::filesystem::path Tone(const std::string& name, double hertz, double level, double seconds = 3) const {
        return Wav(name, seconds, [=](std::uint32_t n) {
            constexpr double kSoft = 0.25;
            const double t = n / 44100.0, soft = std::min({t, seconds - t, kSoft}) / kSoft;
            const double now = level * (0.5 - 0.5 * std::cos(std::numbers::pi * soft));
            return static_cast<std::int16_t>(std::lround(kFull * now * std::sin(2 * std::numbers::pi * hertz * t)));
        });
    }
    /** The largest sample that the two before it do not foretell, for a tone and for silence: the height of a step,
        where there is one. In dB to full scale; `heardT` are the seconds in which something is heard. */
    double MostStep(double hertz, double& heardT) const {
        const double turn = 2 * std::cos(2 * std::numbers::pi * hertz / 44100);
        double most = 1e-9;
        heardT = 0;
        for (const auto& file : i_heard) {
            std::ifstream in(file, std::ios::binary);
            std::array<std::int16_t, 2> frame{};
            for (double one = 0, two = 0; in.read(reinterpret_cast<char*>(frame.data()), sizeof frame);) {
                const double now = frame[0] / kFull;
                most = std::max(most, std::abs(now - turn * one + two));
                heardT += now != 0 ? 1 / 44100.0 : 0;
                two = std::exchange(one, now);
            }
        }
        return 20 * std::log10(most);
    }

    std::vector<std::filesystem::path> i_heard;
};

TEST_F(HeardTest, NoEventLeavesAStepAbove60dB) {
    CPlayControl& play = *i_controlP;
    std::size_t row = 0;
    const struct {
        const char* nameZ;
        double heardT;   // at least
        std::function<void()> act;
        long trimStart300 = 0, trimEnd300 = 0;
    } kEvents[] = {
        {"nothing", 5.7, [] {}},
        {"pause", 5.6,
         [&] {
             play.SetPaused(true);
             RunFor(1);
             play.SetPaused(false);
         }},
        {"seek", 4.3, [&] { play.SeekTo300(700); }},
        {"seek back", 6, [&] { play.SeekTo300(100); }},
        {"many seeks", 4,
         [&] {
             for (const long time300 : {300L, 650L, 120L, 400L}) {
                 play.SeekTo300(time300);
                 RunFor(0.3);
             }
         }},
        {"seek while it is paused", 5,
         [&] {
             play.SetPaused(true);
             RunFor(0.5);
             play.SeekTo300(350);
             RunFor(0.5);
             play.SetPaused(false);
         }},
        {"rewind", 6, [&] { play.Rewind(); }},
        {"stop", 0.8, [&] { play.Stop(); }},
        {"next", 3.7, [&] { ASSERT_EQ(play.PlayNext(), noErr); }},
        {"the song once more", 6.3, [&] { ASSERT_EQ(Play(row), noErr); }},
        {"another device", 5.5, [&] { ASSERT_EQ(play.SetOutputDevice(i_heard.size() % 2 == 0 ? "A" : "B"), noErr); }},
        {"trim start", 5, [] {}, 200, 0},
        {"trim end", 5, [] {}, 0, 700},
    };
    for (const double hertz : {440.0, 997.0}) {
        row = i_listP->GetSortedList().size();
        for (const char* const nameZ : {"one.wav", "two.wav"}) Add(Tone(std::to_string(hertz) + nameZ, hertz, kTone));
        CSong& song = *i_databaseP->GetSong(i_listP->GetIndPLItem(Row(row))->GetSongID());
        for (const auto& event : kEvents) {
            SCOPED_TRACE(testing::Message() << hertz << " Hz, " << event.nameZ);
            song.Meta().SetInteger("Tsrt"_key, static_cast<std::int32_t>(event.trimStart300));
            song.Meta().SetInteger("Tend"_key, static_cast<std::int32_t>(event.trimEnd300));
            i_heard.clear();
            i_preferences.SetString("Audio Output Device", SuperString(event.nameZ));   // new files
            ASSERT_TRUE(Starts(row));
            ASSERT_TRUE(RunUntil([&] { return play.Current()->Heard300() > event.trimStart300 + 250; }));
            event.act();
            ASSERT_TRUE(RunUntilIdle() && RunUntilOutputIsFree());
            double heardT = 0;
            const double step = MostStep(hertz, heardT);
            RecordProperty(std::to_string(std::lround(hertz)) + " Hz, " + event.nameZ, std::to_string(step));
            EXPECT_LT(step, -60);
            EXPECT_GT(heardT, event.heardT);
        }
    }
}

TEST_F(HeardTest, AllSongsComeAtOneLevelOnceTheyAreMeasured) {
    constexpr double kOneLevel = 0.2, kCeiling = 0.891;   // -14 LUFS as a tone of both channels; -1 dB
    CSong& loud = Add(Tone("loud.wav", 997, 0.5));
    CSong& quiet = Add(Tone("quiet.wav", 997, 0.05));
    CSong& peaks = Add(Wav("peaks.wav", 3, [](std::uint32_t n) {
        return static_cast<std::int16_t>(kFull * (n % 22050 < 200 ? 0.8 : 0.01) * (n % 44 < 22 ? 1 : -1));
    }));
    const auto heardAt = [&](std::size_t row) {
        i_heard.clear();
        i_preferences.SetString("Audio Output Device", SuperString(std::to_string(i_settingsL)));   // a new file
        EXPECT_TRUE(Starts(row) && RunUntil([&] { return i_controlP->Current()->Heard300() > 500; }));
        i_controlP->Stop();
        EXPECT_TRUE(RunUntilOutputIsFree());
        std::ifstream in(i_heard.back(), std::ios::binary);
        int mostL = 0;
        for (std::int16_t sample = 0; in.read(reinterpret_cast<char*>(&sample), sizeof sample);)
            mostL = std::max(mostL, std::abs(sample));
        return mostL / kFull;
    };
    EXPECT_NEAR(heardAt(0), 0.5, 0.01);
    i_controlP->SetOneLevel(true);
    EXPECT_NEAR(heardAt(0), 0.5, 0.01);   // it was not measured yet
    ASSERT_TRUE(RunUntil([&] {
        return std::ranges::all_of(std::array{&loud, &quiet, &peaks},
                                   [](CSong* songP) { return songP->Meta().Has("LUFS"_key); });
    }));
    EXPECT_NEAR(heardAt(0), kOneLevel, 0.01);
    EXPECT_NEAR(heardAt(1), kOneLevel, 0.01);
    const double peak = heardAt(2);   // its peaks allow no more; between samples they are higher still
    EXPECT_GT(peak, 0.6);
    EXPECT_LT(peak, kCeiling);
    Tone("quiet.wav", 997, 0.3, 4);   // another file in its place, which was not measured
    EXPECT_NEAR(heardAt(1), 0.3, 0.01);
    i_controlP->SetOneLevel(false);
    EXPECT_NEAR(heardAt(0), 0.5, 0.01);
}

}   // namespace
