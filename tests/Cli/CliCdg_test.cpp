#include "Cli/CliCdg.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <fstream>

#include "Cli/CliRun.h"
#include "Graphics/CSubChannels.h"

namespace {
CliRun Cdg(const std::vector<std::string>& words) { return RunCli("cdg", {}, true, words); }

class CliCdg : public testing::Test {
protected:
    CliCdg() { std::filesystem::create_directories(i_folder); }
    ~CliCdg() override { std::filesystem::remove_all(i_folder); }
    std::string Write(const std::string& bytes) const {
        std::ofstream(i_folder / "song.cdg", std::ios::binary) << bytes;
        return (i_folder / "song.cdg").string();
    }
    const std::filesystem::path i_folder =
        std::filesystem::temp_directory_path() / ("vopla-cdg-" + std::to_string(::getpid()));
};

std::string Text(const SubCodePacket& packet) { return {packet.bytes.begin(), packet.bytes.end()}; }

TEST_F(CliCdg, CountsAfterCorrection) {
    SubCodePacket preset, damaged, noise;
    preset.bytes = {9, 1, 0, 0, 5};
    CSubChannels::WriteParity(preset);
    damaged = preset;
    damaged.bytes[1] = 38;
    noise.bytes[9] = 1;
    const std::string file =
        Write(Text(preset) + Text(damaged) + Text(noise) + Text({}) + std::string("\x09\x3F\0\0", 4));
    const CliRun run = Cdg({"info", file});
    EXPECT_EQ(run.status, 0);
    EXPECT_EQ(
        run.out,
        "{\"packets\":5,\"seconds\":0.016666666666666666,\"instructions\":{\"1\":2,\"2\":0,\"6\":0,\"20\":0,\"24\":0,"
        "\"28\":0,\"30\":0,\"31\":0,\"38\":0},\"other\":1,\"corrected\":1,\"dropped\":1}\n");
}

TEST_F(CliCdg, WritesTheFrameOfAMoment) {
    SubCodePacket red, preset;
    red.bytes = {9, 30, 0, 0, 0x3C, 0x00};
    const std::string file = Write(Text(preset) + Text(red));
    const std::string png = (i_folder / "out.png").string();
    // sha256 of 300 x 216 x 3 bytes; black by `head -c 194400 /dev/zero | sha256sum`.
    const CliRun black = Cdg({"frame", file, "--at", "0.003", "--out", png});
    EXPECT_EQ(black.status, 0) << black.err;
    EXPECT_EQ(black.out,
              "{\"time300\":1,\"width\":300,\"height\":216,\"sha256\":"
              "\"8306f4bef97b1428f294fda136d5d65d84c83d59922ca28a1028e491c542c695\"}\n");
    const CliRun late = Cdg({"frame", file, "--at", "100", "--out", png, "--visible"});
    EXPECT_THAT(late.out, testing::StartsWith("{\"time300\":30000,\"width\":288,\"height\":192,"));
    const CliRun large = Cdg({"frame", file, "--at", "0", "--hq4x", "--out", png});
    EXPECT_THAT(large.out, testing::HasSubstr("\"width\":1200,\"height\":864,"));
    EXPECT_GT(std::filesystem::file_size(png), 100U);
    // A tile of channel 8: not shown, as the host does not, unless it is asked for.
    SubCodePacket tile;
    tile.bytes = {9, 6, 0, 0, 0x20, 0x01, 5, 5};
    for (std::size_t n = 8; n < 20; ++n) tile.bytes[n] = 0x3F;
    red.bytes[7] = 0x0F;   // the second colour: blue
    const std::string other = Write(Text(red) + Text(tile));
    const std::string plain = Cdg({"frame", other, "--at", "1", "--out", png}).out;
    EXPECT_EQ(plain, Cdg({"frame", other, "--at", "1", "--out", png, "--channels", "3"}).out);
    EXPECT_NE(plain, Cdg({"frame", other, "--at", "1", "--out", png, "--channels", "65535"}).out);
}

TEST_F(CliCdg, TellsBadFilesAndWords) {
    const std::string png = (i_folder / "out.png").string();
    for (std::size_t sizeL = 0; sizeL < 4; ++sizeL) {
        const CliRun run = Cdg({"info", Write(std::string(sizeL, 'x'))});
        EXPECT_EQ(run.status, 1);
        EXPECT_THAT(run.err, testing::HasSubstr("\"status\":-39}"));
    }
    EXPECT_THAT(Cdg({"info", "/no/such/file"}).err, testing::HasSubstr("\"status\":-43}"));
    EXPECT_EQ(Cdg({"frame", i_folder.string(), "--at", "0", "--out", png}).status, 1);
    const std::string file = Write(std::string(24, '\0'));
    const std::vector<std::vector<std::string>> wrong{
        {},
        {"dance"},
        {"info"},
        {"info", file, file},
        {"frame", file},
        {"frame", file, "--at", "-1", "--out", png},
        {"frame", file, "--at", "nan", "--out", png},
        {"frame", file, "--at", "1x", "--out", png},
        {"frame", file, "--at", "1", "--out", png, "--channels", "65536"},
        {"frame", file, "--at"},
    };
    for (const auto& words : wrong) EXPECT_EQ(Cdg(words).status, 2) << testing::PrintToString(words);
    EXPECT_EQ(Cdg({"frame", file, "--at", "1", "--out", "/no/such/folder/x.png"}).status, 1);
}
}   // namespace
