#include "Cli/Command.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "Cli/CliRun.h"

namespace {

/** A folder with a song of silence and tones, made by ffmpeg; the command reads no settings of the user. */
class CliAudio : public testing::Test {
protected:
    CliAudio() {
        std::string pattern = (std::filesystem::temp_directory_path() / "cli-audio-XXXXXX").string();
        i_folder = ::mkdtemp(pattern.data());
    }
    ~CliAudio() override { std::filesystem::remove_all(i_folder); }

    CliRun Run(std::vector<std::string> words) const {
        words.insert(words.begin(), {"--root", (i_folder / "root").string(), "--json"});
        return RunCli(words);
    }
    [[nodiscard]] std::string Path(const std::string& name) const { return (i_folder / name).string(); }
    /** `arguments` of the ffmpeg program, up to the name of what it makes. */
    std::string Make(const std::string& arguments, const std::string& name) const {
        const std::string command = "ffmpeg -v error -y -nostdin " + arguments + " '" + Path(name) + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return Path(name);
    }
    /** What ffmpeg hears in the file. */
    std::vector<std::int16_t> Heard(const std::string& file) const {
        return Samples(Make("-i '" + file + "' -f s16le -ac 2 -ar 44100", "heard.s16"));
    }
    static std::vector<std::int16_t> Samples(const std::string& file) {
        std::vector<std::int16_t> samples(std::filesystem::file_size(file) / 2);
        std::ifstream(file, std::ios::binary)
            .read(reinterpret_cast<char*>(samples.data()), static_cast<std::streamsize>(samples.size() * 2));
        return samples;
    }
    static constexpr const char* kTone_Z =
        "-f lavfi -i aevalsrc='0.5*sin(2*PI*440*t)|0.25*sin(2*PI*440*t)':s=44100:d=2";

    std::filesystem::path i_folder;
};

/** Hz, by the upward crossings of the middle of the left channel. */
double Frequency(const std::vector<std::int16_t>& stereo) {
    std::vector<double> crossings;
    for (std::size_t n = stereo.size() / 4 / 2 * 2; n + 2 < stereo.size() / 4 * 3; n += 2)
        if (stereo[n] < 0 && stereo[n + 2] >= 0)
            crossings.push_back(static_cast<double>(n) / 2 +
                                static_cast<double>(-stereo[n]) / (static_cast<double>(stereo[n + 2]) - stereo[n]));
    return 44100.0 * static_cast<double>(crossings.size() - 1) / (crossings.back() - crossings.front());
}

TEST_F(CliAudio, RenderGivesTheSamplesOfTheFile) {
    const std::string tone = Make(kTone_Z, "tone.wav");
    const std::string zip = Path("song.zip");
    ASSERT_EQ(std::system(("cd '" + i_folder.string() + "' && python3 -m zipfile -c song.zip tone.wav").c_str()), 0);
    const std::vector<std::int16_t> wanted = Heard(tone);
    for (const std::string& file : {tone, zip}) {
        const CliRun run = Run({"audio", "render", file, "--out", Path("out.wav")});
        EXPECT_EQ(run.status, 0) << run.err;
        EXPECT_EQ(run.out, "{\"frames\":88200,\"source_frames\":88200}\n");
        EXPECT_EQ(Heard(Path("out.wav")), wanted) << file;
    }
}

TEST_F(CliAudio, RenderWithPitchTempoVolumeAndVocalMode) {
    const std::string tone = Make(kTone_Z, "tone.wav");
    ASSERT_EQ(Run({"audio", "render", tone, "--out", Path("out.wav"), "--pitch", "2", "--tempo", "1.1"}).status, 0);
    std::vector<std::int16_t> heard = Heard(Path("out.wav"));
    EXPECT_NEAR(Frequency(heard), 493.88, 0.3);
    EXPECT_NEAR(static_cast<double>(heard.size()) / 2, 88200 / 1.1, 1);
    ASSERT_EQ(Run({"audio", "render", tone, "--out", Path("out.wav"), "--volume", "0.5", "--vocal", "2"}).status, 0);
    heard = Heard(Path("out.wav"));
    const std::vector<std::int16_t> plain = Heard(tone);
    for (std::size_t n = 0; n < plain.size(); n += 2) {
        ASSERT_NEAR(heard[n], plain[n] / 2.0, 1);
        ASSERT_EQ(heard[n], heard[n + 1]);
    }
}

TEST_F(CliAudio, AutoCueFindsTheMusic) {
    const std::string late =
        Make("-f lavfi -i aevalsrc='if(gte(t\\,1.5)\\,0.3*sin(2*PI*440*t)\\,0.0002*sin(2*PI*50*t))':s=44100:d=2 -ac 2",
             "late.wav");
    const std::string early = Make("-f lavfi -i aevalsrc='0.3*cos(2*PI*440*t)':s=44100:d=1 -ac 2", "early.wav");
    long start300 = -1;
    const CliRun run = Run({"audio", "autocue", late});
    EXPECT_EQ(std::sscanf(run.out.c_str(), "{\"start300\":%ld}", &start300), 1) << run.out << run.err;
    // Less the rollback of 0.1 s; the answer may be the start of the 1,024 frames in which it was found.
    EXPECT_LE(start300, 420);
    EXPECT_GE(start300, 420 - 7);
    EXPECT_EQ(Run({"audio", "autocue", early}).out, "{\"start300\":0}\n");
}

TEST_F(CliAudio, PlayWritesEverySampleToTheOutput) {
    const std::string tone = Make("-f lavfi -i anoisesrc=d=0.7:c=pink:r=44100:seed=3 -ac 2", "noise.flac");
    const CliRun run = Run({"play", tone, "--output", "disk:" + Path("out.s16")});
    EXPECT_EQ(run.status, 0) << run.err;
    EXPECT_NE(run.out.find("{\"state\":\"ended\",\"audio300\":210,"), std::string::npos) << run.out;
    EXPECT_NE(run.out.find("\"frames_late\":0}"), std::string::npos) << run.out;   // the end of a song is not late
    std::vector<std::int16_t> written = Samples(Path("out.s16"));
    const std::vector<std::int16_t> wanted = Heard(tone);
    // Whole blocks of silence until the song begins, and the rest of its last block.
    constexpr std::ptrdiff_t kBlock_Samples = 4096;
    const auto firstSound = std::ranges::find_if(written, [](std::int16_t sample) { return sample != 0; });
    written.erase(written.begin(), written.begin() + (firstSound - written.begin()) / kBlock_Samples * kBlock_Samples);
    ASSERT_GE(written.size(), wanted.size());
    for (std::size_t n = wanted.size(); n < written.size(); ++n) ASSERT_EQ(written[n], 0);
    written.resize(wanted.size());
    EXPECT_EQ(written, wanted);
}

TEST_F(CliAudio, Failures) {
    std::ofstream(Path("bad.mp3")) << "no music in here";
    std::ofstream(Path("bad.zip")) << "PK\3\4 and then nothing";
    const std::string tone = Make(kTone_Z, "tone.wav");
    std::filesystem::create_directories(i_folder / "taken.wav" / "inside");   // fails when the file takes its name
    std::filesystem::create_symlink("loop.mp3", Path("loop.mp3"));
    std::filesystem::create_symlink(tone, Path("link.wav"));
    const auto toneBytes = std::filesystem::file_size(tone);
    for (const char* const nameZ : {"pair.mp3", "pair.cdg"}) std::ofstream(Path(nameZ)) << "the one names the other";
    const std::string longName = Path(std::string(300, 'x') + ".mp3");
    const struct {
        std::vector<std::string> words;
        int status;
        std::string said = {};   // of the failure
    } cases[] = {
        {{"audio", "render", tone, "--out", Path("taken.wav")}, 1, Path("taken.wav") + ": "},
        {{"audio", "render", tone, "--out", tone}, 2, "audio render: what is made would take the place of the song"},
        {{"audio", "render", tone, "--out", Path("link.wav")}, 2},
        {{"play", Path("link.wav"), "--output", "disk:" + tone},
         2,
         "play: the recording would take the place of a song"},
        {{"play", tone, Path("pair.cdg"), "--output", "disk:" + Path("pair.mp3")}, 2},
        {{"play", tone, "--output", "no such device"}, 1, "no such device: The sound output is not there. "},
        {{"audio"}, 2},
        {{"audio", "render", Path("bad.mp3")}, 2},
        {{"audio", "render", Path("bad.mp3"), "--out", Path("o.wav"), "--pitch", "x"}, 2},
        {{"audio", "render", Path("bad.mp3"), "--out", Path("o.wav"), "--tempo", "0"}, 2},
        {{"audio", "render", Path("bad.mp3"), "--out", Path("o.txt")}, 2},
        {{"audio", "render", Path("bad.mp3"), "--out", Path("o.wav")},
         1,
         Path("bad.mp3") + ": The file is damaged, or it is no MP3 file. "},
        {{"audio", "render", Path("bad.zip"), "--out", Path("o.wav")}, 1, Path("bad.zip") + ": The "},
        {{"audio", "render", Path("none.mp3"), "--out", Path("o.wav")}, 1, Path("none.mp3") + ": File Not Found. "},
        {{"audio", "autocue", Path("none.mp3")}, 1, Path("none.mp3") + ": File Not Found. "},
        {{"audio", "loudness", Path("loop.mp3")}, 1, Path("loop.mp3") + ": Too many levels of symbolic links"},
        {{"cdg", "info", Path("loop.mp3")}, 1, Path("loop.mp3") + ": Too many levels of symbolic links"},
        {{"cdg", "info", longName}, 1, longName + ": File name too long. "},
        {{"play", longName}, 1, longName + ": File name too long. "},
        {{"play", Path("none.mp3"), "--output", "dummy"}, 1, Path("none.mp3") + ": File Not Found. "},
        {{"play", Path("bad.mp3"), "--output", "dummy"}, 1, Path("bad.mp3") + ": The file is damaged, or it is no MP3"},
        {{"play", Path("bad.zip"), "--output", "dummy"}, 1, Path("bad.zip") + ": The "},
        {{"play", "--seconds", "1"}, 2},
        {{"play", Path("bad.mp3"), "--seconds", "-1"}, 2},
    };
    for (const auto& c : cases) {
        const CliRun run = Run(c.words);
        EXPECT_EQ(run.status, c.status) << testing::PrintToString(c.words) << run.err;
        EXPECT_EQ(run.out, "");
        EXPECT_TRUE(run.err.starts_with("{\"error\":\"" + c.said)) << run.err;
    }
    EXPECT_FALSE(std::filesystem::exists(Path("o.wav")));
    EXPECT_EQ(std::filesystem::file_size(tone), toneBytes);
    const CliRun evening = Run({"play", tone, Path("bad.mp3"), tone, "--seconds", "0.1", "--output", "dummy"});
    EXPECT_EQ(evening.status, 1);
    EXPECT_NE(evening.out.find("{\"state\":\"total\",\"songs\":2,"), std::string::npos)
        << evening.out;   // the last played too
}

}   // namespace
