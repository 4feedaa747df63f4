#include "Audio/SampleForms.h"

#include <gtest/gtest.h>

#include <limits>
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
    const std::vector<float> floats{1.5F, -7.0F, 0.4F / 32767, 0.6F / 32767, -0.6F / 32767, std::numeric_limits<float>::quiet_NaN(),
                                    std::numeric_limits<float>::infinity()};
    std::vector<std::int16_t> integers(floats.size());
    FloatToInteger(floats, integers);
    EXPECT_EQ(integers, (std::vector<std::int16_t>{32767, -32767, 0, 1, -1, 0, 32767}));
}
