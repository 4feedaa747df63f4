#include "Graphics/DeepBlit.h"

#include <cmath>

#include "Graphics/COffscreen.h"

namespace {

constexpr struct {
    const char* name;
    PixelF rgb, hsv;
} kHSV_Cases[] = {
    {"red", {1, 1, 0, 0}, {1, 0, 1, 1}},
    {"green", {1, 0, 1, 0}, {1, 120, 1, 1}},
    {"blue", {1, 0, 0, 1}, {1, 240, 1, 1}},
    {"yellow: green decides the tie", {1, 1, 1, 0}, {1, 60, 1, 1}},
    {"magenta: blue decides the tie", {1, 1, 0, 1}, {1, 300, 1, 1}},
    {"a negative hue goes round", {1, 1, 0, 0.5F}, {1, 330, 1, 1}},
    {"black", {0.5F, 0, 0, 0}, {0.5F, 0, 0, 0}},
    {"grey", {0.25F, 0.5F, 0.5F, 0.5F}, {0.25F, 0, 0, 0.5F}},
};

void ExpectNear(const PixelF& got, const PixelF& expected) {
    EXPECT_NEAR(got.alpha, expected.alpha, 1e-5);
    EXPECT_NEAR(got.red, expected.red, 1e-3);
    EXPECT_NEAR(got.green, expected.green, 1e-5);
    EXPECT_NEAR(got.blue, expected.blue, 1e-5);
}

TEST(DeepBlit, HueSaturationValue) {
    for (const auto& c : kHSV_Cases) {
        SCOPED_TRACE(c.name);
        ExpectNear(RGBtoHSV(c.rgb), c.hsv);
        ExpectNear(HSVtoRGB(c.hsv), c.rgb);
    }
}

TEST(DeepBlit, HueOutsideTheSectors) {
    ExpectNear(HSVtoRGB({1, 420, 1, 1}), {1, 1, 1, 0});                   // 360 less: yellow
    ExpectNear(HSVtoRGB({1, 360, 0.5F, 0.25F}), {1, 360, 0.5F, 0.25F});   // sector 6: as it stands
    ExpectNear(HSVtoRGB({1, -61, 0.5F, 0.25F}), {1, -61, 0.5F, 0.25F});
    EXPECT_TRUE(std::isnan(HSVtoRGB({1, NAN, 0.5F, 0.25F}).red));
}

TEST(DeepBlit, EveryByteComesBack) {
    COffscreen bytes, floats, back;
    ASSERT_EQ(bytes.Create({0, 0, 1, 256}, 32), noErr);
    ASSERT_EQ(floats.Create({5, 5, 6, 261}, 128), noErr);
    ASSERT_EQ(back.Create({0, 0, 1, 256}, 32), noErr);
    for (Pixel32 n = 0; n < 256; ++n) bytes.Row32(0)[n] = n << 24 | (255 - n) << 16 | (n ^ 85) << 8 | n;
    ASSERT_EQ(CP_DeepBlit32toF().Blit(bytes, floats), noErr);
    EXPECT_FLOAT_EQ(floats.RowF(5)[51].alpha, 0.2F);
    ASSERT_EQ(CP_DeepBlitFto32().Blit(floats, back), noErr);
    EXPECT_TRUE(std::ranges::equal(back.Row32(0), bytes.Row32(0)));
}

TEST(DeepBlit, HueRoundTripIsOneStepAtMost) {
    const CP_RGBtoHSV there;
    const CP_HSVtoRGB back;
    for (Pixel32 rgb = 0; rgb < 0x1000000; rgb += 997) {
        const Pixel32 got = back.Convert(there.Convert(0x7F000000U | rgb));
        for (unsigned shift = 0; shift < 32; shift += 8)
            ASSERT_LE(
                std::abs(static_cast<int>(got >> shift & 0xFF) - static_cast<int>((0x7F000000U | rgb) >> shift & 0xFF)),
                1)
                << std::hex << rgb << " " << got;
    }
}

TEST(DeepBlit, FloatsOutsideTheRange) {
    EXPECT_EQ(CP_DeepBlitFto32().Convert({1.5F, -0.5F, NAN, 0.999F}), 0xFF0000FEU);
    EXPECT_EQ(ToRGBColor({0, 1.0F, 0.5F, -3.0F}), (RGBColor{65535, 32767, 0}));
}

TEST(DeepBlit, WrongDepths) {
    COffscreen small, deep;
    ASSERT_EQ(small.Create({0, 0, 1, 1}, 32), noErr);
    ASSERT_EQ(deep.Create({0, 0, 1, 1}, 128), noErr);
    EXPECT_EQ(CP_DeepBlit32toF().Blit(deep, deep), paramErr);
    EXPECT_EQ(CP_DeepBlitFto32().Blit(small, small), paramErr);
}

}   // namespace
