#include "Media/SampleForms.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

TEST(SampleForms, EverySampleComesBack) {
    std::vector<std::int16_t> all, back(65536);
    for (int n = -32768; n < 32768; ++n) all.push_back(static_cast<std::int16_t>(n));
    std::vector<float> floats(all.size());
    IntegerToFloat(all, floats);
    FloatToInteger(floats, back);
    EXPECT_EQ(back[0], -32767);
    for (std::size_t n = 1; n < all.size(); ++n) ASSERT_EQ(back[n], all[n]);
}

TEST(SampleForms, LimitsRoundsAndTakesNoNumberForSilence) {
    const std::vector<float> floats{1.5F,
                                    -7.0F,
                                    0.4F / 32767,
                                    0.6F / 32767,
                                    -0.6F / 32767,
                                    std::numeric_limits<float>::quiet_NaN(),
                                    std::numeric_limits<float>::infinity()};
    std::vector<std::int16_t> integers(floats.size());
    FloatToInteger(floats, integers);
    EXPECT_EQ(integers, (std::vector<std::int16_t>{32767, -32767, 0, 1, -1, 0, 32767}));
}

TEST(SampleForms, ManyAreAsOne) {
    std::mt19937 random(2);
    std::uniform_real_distribution<float> level(-1.2F, 1.2F);
    std::vector<float> floats(1003);
    for (float& value : floats) value = random() % 50 == 0 ? std::numeric_limits<float>::quiet_NaN() : level(random);
    std::vector<std::int16_t> many(floats.size());
    FloatToInteger(floats, many);
    for (std::size_t n = 0; n < floats.size(); ++n) {
        const double limited = std::isnan(floats[n]) ? 0.0 : std::clamp(static_cast<double>(floats[n]), -1.0, 1.0);
        ASSERT_EQ(many[n], std::lrint(static_cast<float>(limited) * 32767.0F)) << floats[n];
    }
    std::vector<float> back(many.size());
    IntegerToFloat(many, back);
    for (std::size_t n = 0; n < many.size(); ++n)
        ASSERT_EQ(back[n], static_cast<float>(many[n]) * 3.051850947599719e-5F);
}
