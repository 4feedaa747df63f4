#include "Graphics/ImageFile.h"

#include <cstdlib>
#include <fstream>
#include <iterator>

#include "Core/CLog.h"

namespace {

namespace fs = std::filesystem;
constexpr Rect kMost{0, 0, 2160, 3840};

class ImageFileTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (fs::temp_directory_path() / "images-XXXXXX").string();
        i_folder = ::mkdtemp(pattern.data());
    }
    void TearDown() override { fs::remove_all(i_folder); }
    /** A picture of 64 x 40: red above on the left, green on the right, blue below, made by ffmpeg. */
    fs::path Make(const std::string& name, const std::string& options = {}) const {
        const fs::path file = i_folder / name;
        const std::string command =
            "ffmpeg -v error -y -f lavfi -i color=blue:s=64x40 -vf 'format=rgb24,drawbox=0:0:32:20:red:fill,"
            "drawbox=32:0:32:20:lime:fill' -frames:v 1 " +
            options + " '" + file.string() + "'";
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return file;
    }
    fs::path i_folder;
};

/** Lossy formats come near. */
bool Near(Pixel32 pixel, Pixel32 wanted) {
    for (unsigned shift = 0; shift < 32; shift += 8)
        if (std::abs(static_cast<int>(pixel >> shift & 0xFFU) - static_cast<int>(wanted >> shift & 0xFFU)) > 24)
            return false;
    return true;
}
constexpr Pixel32 kRed = 0xFFFF0000, kGreen = 0xFF00FF00, kBlue = 0xFF0000FF;

TEST_F(ImageFileTest, ReadsTheFormatsOfPictures) {
    for (const char* const nameZ : {"a.png", "a.jpg", "a.bmp", "a.tif", "a.gif", "50%02d off.png"}) {
        const fs::path made = Make("made" + fs::path(nameZ).extension().string());
        const fs::path file = i_folder / nameZ;
        fs::rename(made, file);
        OSErr err = noErr;
        const auto picture = ReadImageFile(file, kMost, err);
        ASSERT_NE(picture, nullptr) << nameZ << ' ' << Number(err);
        EXPECT_EQ(picture->bounds(), (Rect{0, 0, 40, 64})) << nameZ;
        EXPECT_TRUE(Near(picture->PixelAt(8, 8), kRed)) << nameZ;
        EXPECT_TRUE(Near(picture->PixelAt(56, 8), kGreen)) << nameZ;
        EXPECT_TRUE(Near(picture->PixelAt(30, 34), kBlue)) << nameZ;
    }
}

TEST_F(ImageFileTest, FindsTheCoverInsideASong) {
    const fs::path front = Make("front.png");
    const auto run = [this](const std::string& words, const std::string& name) {
        const std::string command =
            "cd '" + i_folder.string() + "' && ffmpeg -v error -y -nostdin " + words + " " + name;
        EXPECT_EQ(std::system(command.c_str()), 0) << command;
        return i_folder / name;
    };
    run("-f lavfi -i color=gray:s=20x20 -frames:v 1", "back.png");
    run("-f lavfi -i sine=d=2", "tone.wav");
    const std::string twoPictures =
        "-i tone.wav -i back.png -i front.png -map 0 -map 1 -map 2 -c:v png "
        "-metadata:s:v:0 comment='Cover (back)' -metadata:s:v:1 comment='Cover (front)'";
    const std::string onePicture = "-i tone.wav -i front.png -map 0 -map 1 -c:v png -disposition:v attached_pic";
    const struct {
        fs::path file;
        bool coverB;
    } kCases[] = {
        {run(twoPictures, "two.mp3"), true},
        {run(onePicture + " -c:a flac", "one.flac"), true},
        {run(onePicture, "one.m4a"), true},
        {i_folder / "tone.wav", false},
        {run("-i tone.wav", "none.mp3"), false},
        {front, false},
        {i_folder / "two.zip", true},
    };
    const std::string zip = "cd '" + i_folder.string() + "' && python3 -m zipfile -c two.zip two.mp3";
    ASSERT_EQ(std::system(zip.c_str()), 0);
    for (const auto& c : kCases) {
        OSErr err = paramErr;
        const auto cover = ReadCover(CFileRef(c.file), {0, 0, 20, 32}, err);
        ASSERT_EQ(err, noErr) << c.file;
        ASSERT_EQ(cover != nullptr, c.coverB) << c.file;
        if (cover == nullptr) continue;
        EXPECT_EQ(cover->bounds(), (Rect{0, 0, 20, 32})) << c.file;
        EXPECT_TRUE(Near(cover->PixelAt(4, 4), kRed)) << c.file;
    }
    fs::resize_file(i_folder / "two.mp3", 700);   // in the middle of the pictures
    OSErr err = noErr;
    EXPECT_EQ(ReadCover(CFileRef(i_folder / "two.mp3"), kMost, err), nullptr);
    EXPECT_EQ(ReadCover(CFileRef(i_folder / "gone.mp3"), kMost, err), nullptr);
    EXPECT_EQ(err, fnfErr);
}

TEST_F(ImageFileTest, ALargeOneIsMadeToFit) {
    const fs::path file = Make("a.png");
    OSErr err = noErr;
    const auto picture = ReadImageFile(file, {0, 0, 30, 16}, err);
    ASSERT_NE(picture, nullptr);
    EXPECT_EQ(picture->bounds(), (Rect{0, 0, 10, 16}));
    EXPECT_TRUE(Near(picture->PixelAt(12, 2), kGreen));
}

TEST_F(ImageFileTest, StandsUprightByItsCamera) {
    std::ifstream stream(Make("a.jpg"), std::ios::binary);
    const std::string jpeg{std::istreambuf_iterator<char>(stream), {}};
    const struct {
        char turn;
        Rect bounds;
        Pixel32 topLeft, topRight, bottomLeft;
    } cases[] = {{1, {0, 0, 40, 64}, kRed, kGreen, kBlue},
                 {3, {0, 0, 40, 64}, kBlue, kBlue, kGreen},
                 {6, {0, 0, 64, 40}, kBlue, kRed, kBlue},
                 {8, {0, 0, 64, 40}, kGreen, kBlue, kRed}};
    for (const auto& c : cases) {
        const std::string exif =
            std::string("Exif\0\0II*\0\x08\0\0\0\x01\0\x12\x01\x03\0\x01\0\0\0", 24) + c.turn + std::string(7, '\0');
        const std::string segment = std::string("\xFF\xE1\0", 3) + static_cast<char>(exif.size() + 2) + exif;
        const fs::path file = i_folder / "turned.jpg";
        std::ofstream(file, std::ios::binary) << jpeg.substr(0, 2) << segment << jpeg.substr(2);
        OSErr err = noErr;
        const auto picture = ReadImageFile(file, kMost, err);
        ASSERT_NE(picture, nullptr) << int{c.turn};
        ASSERT_EQ(picture->bounds(), c.bounds) << int{c.turn};
        const int right = c.bounds.right - 6, bottom = c.bounds.bottom - 6;
        EXPECT_TRUE(Near(picture->PixelAt(5, 5), c.topLeft)) << int{c.turn};
        EXPECT_TRUE(Near(picture->PixelAt(right, 5), c.topRight)) << int{c.turn};
        EXPECT_TRUE(Near(picture->PixelAt(5, bottom), c.bottomLeft)) << int{c.turn};
    }
}

TEST_F(ImageFileTest, RefusesWhatIsNoPicture) {
    OSErr err = noErr;
    EXPECT_EQ(ReadImageFile(i_folder / "none.png", kMost, err), nullptr);
    EXPECT_EQ(err, fnfErr);
    EXPECT_EQ(ReadImageFile(i_folder, kMost, err), nullptr);
    std::ofstream(i_folder / "words.png") << "#EXTM3U\nhttp://localhost:1/x.png\n";
    EXPECT_EQ(ReadImageFile(i_folder / "words.png", kMost, err), nullptr);
    EXPECT_EQ(err, paramErr);
    std::ifstream stream(Make("whole.png"), std::ios::binary);
    const std::string png{std::istreambuf_iterator<char>(stream), {}};
    for (std::size_t sizeL = 0; sizeL < png.size() - 16; sizeL += 7) {
        std::ofstream(i_folder / "cut.png", std::ios::binary) << png.substr(0, sizeL);
        err = noErr;
        if (ReadImageFile(i_folder / "cut.png", kMost, err) == nullptr) {
            ASSERT_EQ(err, paramErr) << sizeL;
        }
    }
}

}   // namespace
