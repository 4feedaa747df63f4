#include "Core/NumberForms.h"

#include <limits>

namespace {

TEST(NumberForms, APersonWritesAPointOrAComma) {
    const struct {
        const char* textZ;
        std::optional<double> front, whole;
    } kCases[] = {
        {"1.1", 1.1, 1.1},
        {"1,1", 1.1, 1.1},
        {" -0,25 ", -0.25, -0.25},
        {"+2", 2, 2},
        {"1,", 1, 1},
        {",5", 0.5, 0.5},
        {"1.234", 1.234, 1.234},
        {"1.234,5", 1234.5, 1234.5},
        {"1,234.5", 1234.5, 1234.5},
        {"1,234,567", 1234567, 1234567},
        {"1.5 (slower)", 1.5, {}},
        {"1.5x", 1.5, {}},
        {"", {}, {}},
        {" ", {}, {}},
        {",", {}, {}},
        {"-", {}, {}},
        {"fast", {}, {}},
        {"nan", {}, {}},
        {"inf", {}, {}},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(ReadPersonsNumber(c.textZ), c.front) << c.textZ;
        EXPECT_EQ(ReadWholePersonsNumber(c.textZ), c.whole) << c.textZ;
    }
    EXPECT_EQ(ReadPersonsNumber(std::string(400, '9')), std::nullopt);
}

/** In whatever locale the tests run: programs read a point, people their own mark. */
TEST(NumberForms, OneFormIsStoredAnotherShown) {
    EXPECT_EQ(FixedText(1.5, 2), "1.50");
    EXPECT_EQ(FixedText(-std::numeric_limits<double>::max(), 2).size(), 1U + 309 + 3);
    EXPECT_EQ(ShownNumber(1.5, 1), "1.5");
    SetDecimalMark(",");
    EXPECT_EQ(ShownNumber(1.5, 1), "1,5");
    EXPECT_EQ(FixedText(1.5, 1), "1.5");
    SetDecimalMark({});
    EXPECT_EQ(ShownNumber(1.5, 1), "1.5");
}

}   // namespace
