#include "Graphics/CPictures.h"

#include <cstdlib>
#include <fstream>
#include <random>
#include <sstream>

#include "Core/CLog.h"
#include "Graphics/Png.h"

namespace {

std::string ReadAll(const std::filesystem::path& file) {
    std::stringstream all;
    all << std::ifstream(file, std::ios::binary).rdbuf();
    return all.str();
}
void WriteAll(const std::filesystem::path& file, std::string_view bytes) {
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}
bool RunsWell(const std::string& command) { return std::system(command.c_str()) == 0; }

class PicturesTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "pictures-XXXXXX").string();
        i_app = ::mkdtemp(pattern.data());
        i_folder = i_app / "pictures";
        std::filesystem::create_directory(i_folder);
        CLog::Get().SetFile(i_app / "log.txt");
        CLog::Get().SetLive(true);
        CLog::Get().SetSwitch(LogSwitch::kLogging, true);
    }
    void TearDown() override {
        CLog::Get().SetFile({});
        CLog::Get().SetLive(false);
        std::filesystem::remove_all(i_app);
    }
    [[nodiscard]] bool Logged(const std::string& line) const {
        return ReadAll(i_app / "log.txt").find(line) != std::string::npos;
    }
    std::filesystem::path i_app, i_folder;
    std::vector<std::string> i_told;
    std::function<void(std::string_view)> i_tell = [this](std::string_view text) { i_told.emplace_back(text); };
};

COffscreen& Colorful(COffscreen& pixels, bool opaqueB) {
    std::mt19937 random(2);
    EXPECT_EQ(pixels.Create({3, -2, 12, 11}, 32), noErr);
    for (int y = 3; y < 12; ++y)
        for (Pixel32& pixel : pixels.Row32(y))
            pixel = opaqueB || random() % 2 == 0 ? 0xFF000000U | (random() & 0xFFFFFFU) : 0;
    return pixels;
}

TEST_F(PicturesTest, AnotherProgramReadsWhatWeWrite) {
    for (const bool opaqueB : {true, false}) {
        COffscreen pixels;
        ASSERT_EQ(WritePng(Colorful(pixels, opaqueB), i_folder / "a.png"), noErr);
        ASSERT_TRUE(RunsWell("ffmpeg -y -v error -i " + (i_folder / "a.png").string() + " -pix_fmt bgra -f rawvideo " +
                             (i_folder / "raw").string()));
        const std::string raw = ReadAll(i_folder / "raw");
        ASSERT_EQ(raw.size(), 13U * 9 * 4);
        for (int y = 0; y < 9; ++y)
            EXPECT_EQ(raw.substr(static_cast<std::size_t>(y) * 13 * 4, 13 * 4),
                      std::string(reinterpret_cast<const char*>(pixels.Row(y + 3)), 13 * 4));
    }
    COffscreen pixels;
    EXPECT_EQ(WritePng(Colorful(pixels, true), i_folder / "no folder" / "a.png"), fnfErr);
    EXPECT_FALSE(std::filesystem::exists(i_folder / "no folder"));
}

TEST_F(PicturesTest, LoadsOnceAndKeeps) {
    COffscreen pixels;
    ASSERT_EQ(WritePng(Colorful(pixels, false), i_folder / "logo.png"), noErr);
    CPictures pictures(i_app, i_tell);
    const CPictures::Picture first = pictures.Load("logo");
    ASSERT_NE(first, nullptr);
    for (int y = 0; y < 9; ++y) EXPECT_TRUE(std::ranges::equal(first->Row32(y), pixels.Row32(y + 3)));
    EXPECT_TRUE(Logged("Cacheing picture in RAM: logo\n"));
    std::filesystem::remove(i_folder / "logo.png");
    EXPECT_EQ(pictures.Load(0, {"logo"}), first);
    EXPECT_TRUE(i_told.empty());
    pictures.Forget();
    EXPECT_EQ(pictures.Load("logo"), nullptr);
}

TEST_F(PicturesTest, TellsWhatIsMissing) {
    CPictures pictures(i_app, i_tell);
    EXPECT_EQ(pictures.Load("none"), nullptr);
    EXPECT_TRUE(Logged("$$$ WTF could not find PNG file: " + i_folder.string() + "/none.png\n"));
    EXPECT_EQ(pictures.Load("../log"), nullptr);
    EXPECT_EQ(pictures.Load(2, {"a", "b"}), nullptr);
    EXPECT_TRUE(Logged("Attempt to get pict index 2 from vector of size 2\n"));
    WriteAll(i_folder / "broken.png", "no picture");
    EXPECT_EQ(pictures.Load("broken"), nullptr);
    EXPECT_TRUE(Logged("$$$ WTF could not load PNG: " + (i_folder / "broken.png").string() + "\n"));
    std::filesystem::remove_all(i_folder);
    EXPECT_EQ(pictures.Load("none"), nullptr);
    EXPECT_TRUE(Logged("$$$ WTF could not Pictures folder: " + i_app.string() + "/pictures\n"));
    EXPECT_EQ(i_told, std::vector<std::string>(5, std::string(CPictures::kNoPicture_Text)));
}

TEST_F(PicturesTest, TheLargestPictureOfAnIconIsTaken) {
    // 256 pixels are written as 0 in an icon's directory, and as a PNG behind it.
    ASSERT_TRUE(RunsWell("convert '(' -size 48x48 xc:red ')' '(' -size 256x256 'xc:#204060' ')' " +
                         (i_folder / "two.ico").string()));
    CPictures pictures(i_app, i_tell);
    const CPictures::Picture icon = pictures.Load("two.ico");
    ASSERT_NE(icon, nullptr);
    EXPECT_EQ(icon->bounds(), (Rect{0, 0, 256, 256}));
    EXPECT_EQ(icon->PixelAt(128, 128), 0xFF204060U);
}

TEST_F(PicturesTest, IconOfAnotherProgram) {
    ASSERT_TRUE(RunsWell(
        "ffmpeg -v error -f lavfi -i color=c=0x204060:s=32x16,format=bgra -frames:v 1 -pix_fmt bgra -c:v bmp " +
        (i_folder / "app.ico").string()));
    CPictures pictures(i_app, i_tell);
    const CPictures::Picture icon = pictures.Load("app.ico");
    ASSERT_NE(icon, nullptr);
    EXPECT_EQ(icon->bounds(), (Rect{0, 0, 16, 32}));
    EXPECT_EQ(icon->PixelAt(31, 15), 0xFF204060U);
    const std::string bytes = ReadAll(i_folder / "app.ico");
    for (std::size_t n = 0; n < bytes.size(); n += 7) {   // cut anywhere: a picture or none, never a crash
        WriteAll(i_folder / "cut.ico", bytes.substr(0, n));
        const CPictures::Picture cut = pictures.Load("cut.ico");
        EXPECT_TRUE(cut == nullptr || cut->bounds().Width() == 32) << n;
        pictures.Forget();
    }
}

TEST_F(PicturesTest, BrokenPng) {
    COffscreen pixels;
    ASSERT_EQ(WritePng(Colorful(pixels, false), i_folder / "a.png"), noErr);
    const std::string text = ReadAll(i_folder / "a.png");
    std::vector<std::uint8_t> bytes(text.begin(), text.end());
    OSErr err = noErr;
    EXPECT_NE(ReadPng(bytes, err), nullptr);
    for (std::size_t n = 0; n + 12 < bytes.size(); ++n) {   // without its end mark it may still be whole
        EXPECT_EQ(ReadPng(std::span(bytes).first(n), err), nullptr) << n;
        EXPECT_EQ(err, paramErr) << n;
    }
    for (const std::size_t n : {16U, 18U}) {   // a width of 2^31 and more, then above 32,767
        auto large = bytes;
        large[n] = 0x90;
        EXPECT_EQ(ReadPng(large, err), nullptr);
        EXPECT_EQ(err, memFullErr);
    }
}

}   // namespace
