#include "Graphics/COffscreen.h"

#include <random>

namespace {

TEST(Geometry, Rectangles) {
    EXPECT_EQ(Intersect({0, 0, 10, 10}, {5, -5, 20, 4}), (Rect{5, 0, 10, 4}));
    EXPECT_EQ(Intersect({0, 0, 10, 10}, {10, 0, 20, 10}), Rect{});
    EXPECT_EQ(Union({0, 0, 1, 1}, {5, 5, 6, 7}), (Rect{0, 0, 6, 7}));
    EXPECT_EQ(Union({3, 3, 3, 9}, {5, 5, 6, 7}), (Rect{5, 5, 6, 7}));
    EXPECT_EQ(Offset({0, 0, 10, 10}, 32767, -3), (Rect{-3, 32767, 7, 32767}));   // stops at the end of 16 bits
    EXPECT_TRUE((Rect{5, 5, 5, 9}).Empty());
    EXPECT_EQ((Rect{-32768, -32768, 32767, 32767}).Width(), 65535);
}

TEST(COffscreen, RefusesWhatItCannotHold) {
    COffscreen pixels;
    ASSERT_EQ(pixels.Create({0, 0, 2, 3}, 4), noErr);
    EXPECT_EQ(pixels.Create({0, 0, 2, 3}, 16), paramErr);
    EXPECT_EQ(pixels.Create({0, 0, 0, 3}, 32), paramErr);
    EXPECT_EQ(pixels.Create({-32768, -32768, 32767, 32767}, 128), memFullErr);
    EXPECT_EQ(pixels.bounds(), (Rect{0, 0, 2, 3}));   // as it was
    EXPECT_EQ(pixels.depth(), 4);
    EXPECT_EQ(CPixelsLock(COffscreen()).Err(), memFullErr);
}

TEST(COffscreen, LocksNest) {
    COffscreen pixels;
    ASSERT_EQ(pixels.Create({0, 0, 2, 3}, 4), noErr);
    {
        const CPixelsLock outer(pixels);
        { const CPixelsLock inner(pixels); }
        EXPECT_TRUE(pixels.IsLocked());
    }
    EXPECT_FALSE(pixels.IsLocked());
}

TEST(COffscreen, TransparentOnlyAtDepth32) {
    COffscreen pixels;
    ASSERT_EQ(pixels.Create({0, 0, 2, 3}, 4), noErr);
    EXPECT_EQ(pixels.SetTransparent({1, 2, 3}), paramErr);
    ASSERT_EQ(pixels.Create({0, 0, 2, 3}, 32), noErr);
    EXPECT_EQ(pixels.SetTransparent({1, 2, 3}), noErr);
}

TEST(CPixels, AlphaAndSwapOverAPart) {
    COffscreen pixels;
    ASSERT_EQ(pixels.Create({1, 1, 3, 4}, 32), noErr);
    ASSERT_EQ(pixels.Fill32(pixels.bounds(), 0x11223344), noErr);
    ASSERT_EQ(pixels.SetAlpha(0xAB, Rect{-9, 2, 2, 99}), noErr);
    EXPECT_EQ(pixels.PixelAt(1, 1), 0x11223344U);
    EXPECT_EQ(pixels.PixelAt(3, 1), 0xAB223344U);
    EXPECT_EQ(pixels.PixelAt(3, 2), 0x11223344U);
    ASSERT_EQ(pixels.SwapRedBlue(false), noErr);
    EXPECT_EQ(pixels.PixelAt(3, 1), 0xAB443322U);
    ASSERT_EQ(pixels.SwapRedBlue(true, Rect{1, 3, 2, 4}), noErr);
    EXPECT_EQ(pixels.PixelAt(3, 1), 0x00223344U);
    EXPECT_EQ(pixels.PixelAt(2, 1), 0xAB443322U);
}

TEST(CPixels, FillNibblesTouchesTheRectangleAlone) {
    COffscreen pixels;
    ASSERT_EQ(pixels.Create({0, 0, 3, 6}, 4), noErr);
    ASSERT_EQ(pixels.FillNibbles({1, 2, 99, 4}, 0xF7), noErr);
    for (int y = 0; y < 3; ++y)
        for (int x = 0; x < 6; ++x)
            EXPECT_EQ(pixels.IndexAt(x, y), y >= 1 && x >= 2 && x < 4 ? 7 : 0) << x << ", " << y;
    ASSERT_EQ(pixels.FillNibbles({0, 3, 1, 4}, 5), noErr);   // an odd edge: the whole byte
    EXPECT_EQ(pixels.IndexAt(2, 0), 5);
}

TEST(CPixels, ScrollAgreesWithOnePixelAtATime) {
    std::mt19937 random(7);
    constexpr int kWidth = 12, kHeight = 7;
    for (int round = 0; round < 400; ++round) {
        COffscreen pixels;
        ASSERT_EQ(pixels.Create({2, 4, 2 + kHeight, 4 + kWidth}, 4), noErr);
        std::vector<std::uint8_t> before;
        for (int y = 2; y < 2 + kHeight; ++y)
            for (int n = 0; n < kWidth / 2; ++n) pixels.Row(y)[n] = static_cast<std::uint8_t>(random());
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) before.push_back(pixels.IndexAt(x + 4, y + 2));
        const int dx = (static_cast<int>(random() % 17) - 8) * 2, dy = static_cast<int>(random() % 21) - 10;
        std::optional<std::uint8_t> fill;
        if (round % 2 != 0) fill = static_cast<std::uint8_t>(random() % 16);
        ASSERT_EQ(pixels.ScrollNibbles(dx, dy, fill), noErr);
        for (int y = 0; y < kHeight; ++y)
            for (int x = 0; x < kWidth; ++x) {
                const int fromX = x - dx, fromY = y - dy;
                const bool insideB = fromX >= 0 && fromX < kWidth && fromY >= 0 && fromY < kHeight;
                const int wrapped =
                    ((fromY % kHeight + kHeight) % kHeight) * kWidth + (fromX % kWidth + kWidth) % kWidth;
                const int expected = insideB || !fill ? before[static_cast<std::size_t>(wrapped)] : *fill;
                ASSERT_EQ(pixels.IndexAt(x + 4, y + 2), expected) << dx << ", " << dy << " at " << x << ", " << y;
            }
    }
}

}   // namespace
