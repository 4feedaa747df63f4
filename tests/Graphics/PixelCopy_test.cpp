#include "Graphics/PixelCopy.h"

#include <cmath>
#include <random>

#include "Graphics/COffscreen.h"

namespace {

std::mt19937 s_random(11);   // a fixed seed: a failure comes back
int Pick(int from, int to) { return from + static_cast<int>(s_random() % static_cast<unsigned>(to - from + 1)); }

void FillRandom(COffscreen& pixels) {
    CPixels::ColorTable colors;
    for (RGBColor& color : colors)
        color = {static_cast<std::uint16_t>(s_random()), static_cast<std::uint16_t>(s_random()),
                 static_cast<std::uint16_t>(s_random())};
    pixels.SetColors(colors);
    const std::size_t bytesL = BytesOfRow(pixels.bounds().Width(), pixels.depth());
    for (int y = pixels.bounds().top; y < pixels.bounds().bottom; ++y)
        for (std::size_t n = 0; n < bytesL; ++n) pixels.Row(y)[n] = static_cast<std::uint8_t>(s_random());
}

Rect RandomRect(int room) {
    const int top = Pick(-room, room), left = Pick(-room, room);
    return MakeRect(left, top, Pick(-1, room), Pick(-1, room));
}

/** One pixel of any depth as a number that two buffers share. */
Pixel32 Value(const CPixels& pixels, int x, int y) {
    return pixels.depth() == 4 ? pixels.IndexAt(x, y) : pixels.PixelAt(x, y);
}

/** What the destination holds afterwards, one pixel at a time. */
std::vector<Pixel32> SlowCopy(const CPixels& source, const CPixels& dest, const Rect& from, const Rect& to,
                              std::optional<Pixel32> leftOut) {
    std::vector<Pixel32> out;
    const Rect& b = dest.bounds();
    for (int y = b.top; y < b.bottom; ++y)
        for (int x = b.left; x < b.right; ++x) {
            Pixel32 value = Value(dest, x, y);
            if (to.Contains(x, y) && !from.Empty()) {
                const int fromX = from.left + (x - to.left) * from.Width() / to.Width();
                const int fromY = from.top + (y - to.top) * from.Height() / to.Height();
                const bool indexB = dest.depth() == 4;
                const Pixel32 taken = indexB ? source.IndexAt(fromX, fromY) : source.PixelAt(fromX, fromY);
                if (source.bounds().Contains(fromX, fromY) && !(leftOut && (taken & 0xFFFFFF) == *leftOut))
                    value = taken;
            }
            out.push_back(value);
        }
    return out;
}

std::vector<Pixel32> Values(const CPixels& pixels) {
    std::vector<Pixel32> out;
    for (int y = pixels.bounds().top; y < pixels.bounds().bottom; ++y)
        for (int x = pixels.bounds().left; x < pixels.bounds().right; ++x) out.push_back(Value(pixels, x, y));
    return out;
}

TEST(PixelCopy, AgreesWithOnePixelAtATime) {
    constexpr struct { short from, to; } kDepths[] = {{4, 32}, {4, 4}, {32, 32}};
    for (const auto& depths : kDepths)
        for (int round = 0; round < 700; ++round) {
            SCOPED_TRACE(testing::Message() << depths.from << " to " << depths.to << ", round " << round);
            COffscreen source, dest;
            ASSERT_EQ(source.Create(MakeRect(Pick(-5, 5), Pick(-5, 5), Pick(1, 23), Pick(1, 9)), depths.from), noErr);
            ASSERT_EQ(dest.Create(MakeRect(Pick(-5, 5), Pick(-5, 5), Pick(1, 23), Pick(1, 9)), depths.to), noErr);
            FillRandom(source);
            FillRandom(dest);
            std::optional<Pixel32> leftOut;
            if (depths.from == 32 && round % 2 == 0) {
                const Pixel32 pixel = source.PixelAt(source.bounds().left, source.bounds().top);
                const auto word = [&](unsigned shift) {
                    return static_cast<std::uint16_t>((pixel >> shift & 0xFF) * 257);
                };
                ASSERT_EQ(source.SetTransparent({word(16), word(8), word(0)}), noErr);
                leftOut = pixel & 0xFFFFFF;
            }
            const Rect from = RandomRect(25);
            Rect to = RandomRect(25);
            if (round % 3 == 0) to = MakeRect(to.left, to.top, from.Width(), from.Height());   // not scaled
            const auto expected = SlowCopy(source, dest, from, to, leftOut);
            ASSERT_EQ(CopyPixels(source, dest, from, to, CopyMode::kTransparent), noErr);
            ASSERT_EQ(Values(dest), expected);
        }
}

TEST(PixelCopy, WithinOneBufferAsFromACopy) {
    for (int round = 0; round < 300; ++round) {
        COffscreen one, copy;
        ASSERT_EQ(one.Create({0, 0, 13, 17}, 32), noErr);
        ASSERT_EQ(copy.Create({0, 0, 13, 17}, 32), noErr);
        FillRandom(one);
        ASSERT_EQ(CopyPixels(one, copy, one.bounds(), one.bounds()), noErr);
        const Rect from = RandomRect(18), to = RandomRect(18);
        const auto expected = SlowCopy(copy, one, from, to, {});
        ASSERT_EQ(CopyPixels(one, one, from, to), noErr);
        ASSERT_EQ(Values(one), expected) << round;
    }
}

TEST(PixelCopy, PairsFollowTheColors) {
    COffscreen source, dest;
    ASSERT_EQ(source.Create({0, 0, 1, 2}, 4), noErr);
    ASSERT_EQ(dest.Create({0, 0, 1, 2}, 32), noErr);
    source.Row(0)[0] = 0x1F;
    ASSERT_EQ(CopyPixels(source, dest, source.bounds(), dest.bounds()), noErr);
    EXPECT_EQ(dest.PixelAt(1, 0), 0xFF000000U);
    source.SetColor(15, {0x1234, 0xFF00, 0x00FF});
    ASSERT_EQ(CopyPixels(source, dest, source.bounds(), dest.bounds()), noErr);
    EXPECT_EQ(dest.PixelAt(0, 0), 0xFF000000U);
    EXPECT_EQ(dest.PixelAt(1, 0), 0xFF12FF00U);
}

TEST(PixelCopy, AlphaFades) {
    constexpr struct {
        const char* name;
        Pixel32 above, below;
        float alpha;
        Pixel32 expected;
    } kCases[] = {
        {"all of it", 0xFF204060, 0xFFFFFFFF, 1.0F, 0xFF204060},
        {"more than all", 0xFF204060, 0xFFFFFFFF, 7.0F, 0xFF204060},
        {"nothing", 0xFF204060, 0xFF010203, 0.0F, 0xFF010203},
        {"below nothing", 0xFF204060, 0xFF010203, -1.0F, 0xFF010203},
        {"no number", 0xFF204060, 0xFF010203, NAN, 0xFF010203},
        {"half", 0xFFFF0000, 0xFF0000FF, 0.5F, 0xFF800080},
        {"clear stays clear", 0x00000000, 0xFF123456, 1.0F, 0xFF123456},
        {"half clear", 0x80800000, 0xFF0000FF, 1.0F, 0xFF80007F},
        {"brighter than its alpha allows: the end of the range", 0x00FFFFFF, 0xFFFFFFFF, 1.0F, 0xFFFFFFFF},
    };
    for (const auto& c : kCases) {
        COffscreen source, dest;
        ASSERT_EQ(source.Create({0, 0, 1, 1}, 32), noErr);
        ASSERT_EQ(dest.Create({0, 0, 1, 1}, 32), noErr);
        source.Row32(0)[0] = c.above;
        dest.Row32(0)[0] = c.below;
        ASSERT_EQ(CopyPixelsAlpha(source, dest, {0, 0, 1, 1}, {0, 0, 1, 1}, c.alpha), noErr);
        EXPECT_EQ(dest.PixelAt(0, 0), c.expected) << c.name << std::hex << " got " << dest.PixelAt(0, 0);
    }
}

}   // namespace
