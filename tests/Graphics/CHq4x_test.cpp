#include "Graphics/CHq4x.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "Graphics/TestFrames.h"

namespace {

/** U and V as the ffmpeg program rounds them, towards the middle and not down; its table also has white. */
std::uint32_t WitnessYuv(Pixel32 pixel) {
    const int red = pixel >> 16 & 0xFF, green = pixel >> 8 & 0xFF, blue = pixel & 0xFF;
    const int y = (299 * red + 587 * green + 114 * blue) / 1000;
    const int u = (-169 * red - 331 * green + 500 * blue) / 1000 + 128;
    const int v = (500 * red - 419 * green - 81 * blue) / 1000 + 128;
    return static_cast<std::uint32_t>(y << 16 | u << 8 | v);
}

bool WitnessDifferent(Pixel32 a, Pixel32 b) {
    const std::uint32_t first = WitnessYuv(a), second = WitnessYuv(b);
    const auto apart = [&](unsigned shift) {
        return std::abs(static_cast<int>(first >> shift & 0xFF) - static_cast<int>(second >> shift & 0xFF));
    };
    return apart(16) > 0x30 || apart(8) > 7 || apart(0) > 6;
}

/** Colours that both tables judge alike, pair by pair; `next` makes them. */
template <typename Next>
std::vector<Pixel32> AgreedPalette(std::size_t count, Next next) {
    std::vector<Pixel32> palette;
    while (palette.size() < count) {
        const Pixel32 color = next(palette);
        const bool agreedB = std::ranges::all_of(
            palette, [&](Pixel32 other) { return CHq4x::Different(color, other) == WitnessDifferent(color, other); });
        if (agreedB && (color & 0xFFFFFF) != 0xFFFFFF) palette.push_back(color);
    }
    return palette;
}

/** The frames through the ffmpeg program's filter: 4 times as wide and high, 4 bytes a pixel. */
std::vector<Pixel32> Witness(const std::vector<COffscreen>& frames) {
    std::string pattern = (std::filesystem::temp_directory_path() / "hq4x-XXXXXX").string();
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    {
        std::ofstream raw(folder / "in", std::ios::binary);
        for (const COffscreen& frame : frames)
            for (int y = 0; y < kFrame_Height; ++y)
                raw.write(reinterpret_cast<const char*>(frame.Row(y)), kFrame_Width * 4);
    }
    const std::string command = "ffmpeg -v error -threads 1 -f rawvideo -pix_fmt bgra -s 300x216 -i " +
                                (folder / "in").string() + " -vf hqx=4 -pix_fmt bgra -f rawvideo " +
                                (folder / "out").string();
    EXPECT_EQ(std::system(command.c_str()), 0);
    std::vector<Pixel32> out(frames.size() * kFrame_Width * kFrame_Height * 16);
    std::ifstream made(folder / "out", std::ios::binary);
    made.read(reinterpret_cast<char*>(out.data()), static_cast<std::streamsize>(out.size() * 4));
    EXPECT_EQ(static_cast<std::size_t>(made.gcount()), out.size() * 4);
    std::filesystem::remove_all(folder);
    return out;
}

void ExpectAsWitness(const std::vector<COffscreen>& frames) {
    const std::vector<Pixel32> witness = Witness(frames);
    CHq4x filter;
    COffscreen big;
    ASSERT_EQ(big.Create({0, 0, kFrame_Height * 4, kFrame_Width * 4}, 32), noErr);
    const Pixel32* expectedP = witness.data();
    for (std::size_t n = 0; n < frames.size(); ++n) {
        ASSERT_EQ(filter.Scale(frames[n], big), noErr);
        for (int y = 0; y < kFrame_Height * 4; ++y)
            for (int x = 0; x < kFrame_Width * 4; ++x, ++expectedP)
                ASSERT_EQ(big.Row32(y)[static_cast<std::size_t>(x)], *expectedP)
                    << "frame " << n << ", x " << x << ", y " << y;
    }
}

TEST(CHq4x, LyricsPagesAsTheWitness) {
    std::mt19937 random(3);
    std::vector<COffscreen> frames(8);
    for (std::size_t n = 0; n < frames.size(); ++n) {
        ASSERT_EQ(frames[n].Create({0, 0, kFrame_Height, kFrame_Width}, 32), noErr);
        const auto colors = AgreedPalette(4, [&](const auto&) { return Color12(static_cast<unsigned>(random())); });
        LyricsPage(static_cast<unsigned>(n), std::span(colors).first<4>())
            .Draw(frames[n], static_cast<int>(n % 4), 150);
    }
    ExpectAsWitness(frames);
}

// Noise meets every set of different neighbours; colours near to one another meet every pair that decides.
TEST(CHq4x, NoiseAsTheWitness) {
    std::mt19937 random(4);
    std::vector<COffscreen> frames(16);
    for (std::size_t n = 0; n < frames.size(); ++n) {
        ASSERT_EQ(frames[n].Create({0, 0, kFrame_Height, kFrame_Width}, 32), noErr);
        const auto colors = AgreedPalette(2 + n % 15, [&](const std::vector<Pixel32>& before) {
            const Pixel32 fresh = 0xFF000000U | (static_cast<Pixel32>(random()) & 0xFFFFFFU);
            if (before.empty() || random() % 3 == 0) return fresh;
            Pixel32 near = 0xFF000000U;   // a grey step away from one that is there
            const int step = static_cast<int>(random() % 90) - 45;
            for (unsigned shift = 0; shift < 24; shift += 8) {
                const int byte = static_cast<int>(before[random() % before.size()] >> shift & 0xFF);
                near |= static_cast<Pixel32>(std::clamp(byte + step, 0, 255)) << shift;
            }
            return near;
        });
        for (int y = 0; y < kFrame_Height; ++y)
            for (Pixel32& pixel : frames[n].Row32(y)) pixel = colors[random() % colors.size()];
    }
    ExpectAsWitness(frames);
}

constexpr struct {
    const char* name;
    Pixel32 a, b;
    bool differentB;
} kDifferent_Cases[] = {
    {"equal", 0xFF123456, 0xFF123456, false},
    {"white and white", 0xFFFFFFFF, 0xFFFFFFFF, false},
    {"white has no entry: its next neighbour differs", 0xFFFFFFFF, 0xFFFEFEFE, true},
    {"white and white of another alpha: both have the entry 0", 0xFFFFFFFF, 0x00FFFFFF, false},
    {"the alpha is not looked at", 0xFF101010, 0x00101010, false},
    {"Y 48 apart", 0xFF000000, 0xFF303030, false},
    {"Y 49 apart", 0xFF000000, 0xFF313131, true},
    {"U 7 apart", 0xFF000000, 0xFF00000F, false},   // 128 and 135
    {"U 8 apart", 0xFF000000, 0xFF000010, true},
    {"V 6 apart", 0xFF000000, 0xFF0D0000, false},   // 128 and 134
    {"V 7 apart", 0xFF000000, 0xFF0E0000, true},
};
TEST(CHq4x, Different) {
    for (const auto& c : kDifferent_Cases) {
        EXPECT_EQ(CHq4x::Different(c.a, c.b), c.differentB) << c.name;
        EXPECT_EQ(CHq4x::Different(c.b, c.a), c.differentB) << c.name;
    }
}

TEST(CHq4x, YuvAgainstTheFormulas) {
    EXPECT_EQ(CHq4x::Yuv(0xFFFFFFFF), 0U);
    EXPECT_EQ(CHq4x::Yuv(0), 0x008080U);
    EXPECT_EQ(CHq4x::Yuv(0xFF0000), 76U << 16 | 84U << 8 | 255U);    // 76.245, 84.905, 255.5
    EXPECT_EQ(CHq4x::Yuv(0x00FF00), 149U << 16 | 43U << 8 | 21U);    // 149.685, 43.595, 21.155
    EXPECT_EQ(CHq4x::Yuv(0x0000FF), 29U << 16 | 255U << 8 | 107U);   // 29.07, 255.5, 107.345
}

// A picture of any small size, its rows at any distance: the same as the middle of one that repeats its edges.
TEST(CHq4x, EdgesRepeatTheNearestPixel) {
    std::mt19937 random(5);
    for (short height = 1; height < 5; ++height)
        for (short width = 1; width < 6; ++width) {
            COffscreen small, framed, smallBig, framedBig;
            ASSERT_EQ(small.Create({7, -3, static_cast<short>(7 + height), static_cast<short>(width - 3)}, 32), noErr);
            const auto wideW = static_cast<short>(width + 2), wideH = static_cast<short>(height + 2);
            ASSERT_EQ(framed.Create({0, 0, wideH, wideW}, 32), noErr);
            ASSERT_EQ(smallBig.Create(MakeRect(0, 0, width * 4, height * 4), 32), noErr);
            ASSERT_EQ(framedBig.Create(MakeRect(0, 0, wideW * 4, wideH * 4), 32), noErr);
            for (int y = 7; y < 7 + height; ++y)
                for (Pixel32& pixel : small.Row32(y)) pixel = Color12(static_cast<unsigned>(random() % 3) * 0x484);
            for (int y = 0; y < wideH; ++y)
                for (int x = 0; x < wideW; ++x)
                    framed.Row32(y)[static_cast<std::size_t>(x)] =
                        small.PixelAt(std::clamp(x - 1, 0, width - 1) - 3, std::clamp(y - 1, 0, height - 1) + 7);
            CHq4x filter;
            ASSERT_EQ(filter.Scale(small, smallBig), noErr);
            ASSERT_EQ(filter.Scale(framed, framedBig), noErr);
            for (int y = 0; y < height * 4; ++y)
                for (int x = 0; x < width * 4; ++x)
                    ASSERT_EQ(smallBig.PixelAt(x, y), framedBig.PixelAt(x + 4, y + 4)) << x << ", " << y;
        }
}

TEST(CHq4x, RefusesAWrongSize) {
    COffscreen small, wrong;
    ASSERT_EQ(small.Create({0, 0, 10, 10}, 32), noErr);
    ASSERT_EQ(wrong.Create({0, 0, 40, 39}, 32), noErr);
    EXPECT_EQ(CHq4x().Scale(small, wrong), paramErr);
}

}   // namespace
