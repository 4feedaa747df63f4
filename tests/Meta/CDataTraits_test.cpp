#include "Meta/CDataTraits.h"

#include <limits>

#include "Core/NumberForms.h"
#include "Meta/MetaTest.h"
#include "Meta/TempoSteps.h"
#include "Meta/TimeCode.h"

namespace {

using CDataTraitsTest = MetaTest;

constexpr struct {
    MetaKey key;
    long value, index;
} kValueToIndex[] = {
    {"vChn"_key, 0, 1},   {"vChn"_key, 3, 4},   {"PICH"_key, 0, 13}, {"PICH"_key, 12, 1},     {"PICH"_key, -12, 25},
    {"colr"_key, 0, 1},   {"colr"_key, 1, 3},   {"colr"_key, 7, 9},  {"gChn"_key, 3, 1},      {"gChn"_key, 5, 2},
    {"gChn"_key, 1, 0},   {"gChn"_key, 0, 0},   {"gChn"_key, -5, 0}, {"gChn"_key, 65535, 15}, {"SmsC"_key, 0, 1},
    {"SmsR"_key, 11, 12}, {"trak"_key, 11, 11},
};
constexpr struct {
    MetaKey key;
    long index, value;
} kIndexToValue[] = {
    {"vChn"_key, 1, 0},   {"vChn"_key, 4, 3},      {"PICH"_key, 0, 255}, {"PICH"_key, 1, 12},     {"PICH"_key, 25, -12},
    {"colr"_key, 1, 0},   {"colr"_key, 3, 1},      {"colr"_key, 9, 7},   {"gChn"_key, 2, 5},      {"gChn"_key, 1, 3},
    {"gChn"_key, 0, 1},   {"gChn"_key, 15, 32769}, {"gChn"_key, -1, 1},  {"gChn"_key, 99, 32769}, {"SmsC"_key, 1, 0},
    {"SmsR"_key, 12, 11}, {"trak"_key, 11, 11},
};
constexpr struct {
    MetaKey key;
    long value;
    bool legalB;
    long legalized;
    std::int32_t usable;
} kLegal[] = {
    {"vChn"_key, -1, false, 0, 0},      {"vChn"_key, 255, true, 0, 0},  {"vChn"_key, 0, true, 0, 0},
    {"vChn"_key, 3, true, 3, 3},        {"vChn"_key, -2, false, -2, 0}, {"PICH"_key, 255, false, 0, 0},
    {"PICH"_key, -1, true, -1, -1},     {"PICH"_key, 12, true, 12, 12}, {"PICH"_key, 13, true, 12, 12},
    {"PICH"_key, -999, true, -12, -12}, {"colr"_key, 7, true, 7, 7},    {"colr"_key, 8, false, 0, 0},
    {"colr"_key, -1, false, 0, 0},      {"gChn"_key, 1, false, 0, 3},   {"gChn"_key, 0, false, 0, 3},
    {"gChn"_key, 2, true, 2, 2},        {"gChn"_key, -4, false, 0, 3},  {"SmsC"_key, 0, true, 0, 0},
    {"SmsC"_key, -1, false, 0, 0},      {"SmsR"_key, 5, true, 5, 5},    {"drtn"_key, -9, true, -9, -9},
};
constexpr struct {
    MetaKey key;
    std::int32_t value;
    const char* textZ;
} kDisplay[] = {
    {"trak"_key, 0, ""},
    {"trak"_key, 12, "12"},
    {"SIZE"_key, 0, ""},
    {"SIZE"_key, 1536, "1.5 KB"},
    {"SIZE"_key, std::numeric_limits<std::int32_t>::min(), "2 GB"},
    {"strt"_key, 150, "00:2.000"},
    {"strt"_key, 0, "00:0.000"},
    {"Tsrt"_key, 25035, "1:23.450"},   // 300ths, as all times of a song
    {"Tsrt"_key, 1501, "0:05.003"},
    {"Tend"_key, 0, ""},
    {"drtn"_key, 0, ""},
    {"drtn"_key, 55500, "3:05"},
    {"cryr"_key, 1999, "1999"},
    {"PICH"_key, -3, "-3"},
    {"PICH"_key, 2, "+2"},
    {"PICH"_key, 0, "0"},
    {"PICH"_key, 255, "None"},
    {"colr"_key, 1, "Red"},
    {"colr"_key, 9, ""},
    {"colr"_key, -1, ""},
    {"gChn"_key, 5, "Channel 2"},
    {"gChn"_key, 0, ""},
    {"vChn"_key, 1, "Left"},
    {"vChn"_key, 99, ""},
    {"SmsC"_key, 1, "Two"},
    {"SmsC"_key, 2, ""},
    {"SmsC"_key, -1, ""},
};

TEST_F(CDataTraitsTest, MenusMapBothWays) {
    for (const auto& c : kValueToIndex)
        EXPECT_EQ(i_manager.GetTraits(c.key).ValueToMenuIndex(c.value), c.index) << MetaKeyText(c.key) << c.value;
    for (const auto& c : kIndexToValue)
        EXPECT_EQ(i_manager.GetTraits(c.key).MenuIndexToValue(c.index), c.value) << MetaKeyText(c.key) << c.index;
    using Limits = std::numeric_limits<long>;
    for (const MetaKey key : i_manager.Keys())   // none of them overflows
        for (const long value : {Limits::min(), Limits::max()}) {
            const CDataTraits& traits = i_manager.GetTraits(key);
            (void)traits.ValueToMenuIndex(value);
            (void)traits.MenuIndexToValue(value);
            if (traits.Has(kKeyFlag_Popup)) (void)traits.GetMenuItemText(value);
        }
}

TEST_F(CDataTraitsTest, IllegalNumbersAreMadeLegal) {
    for (const auto& c : kLegal) {
        const CDataTraits& traits = i_manager.GetTraits(c.key);
        EXPECT_EQ(traits.IsLegal(c.value), c.legalB) << MetaKeyText(c.key) << c.value;
        EXPECT_EQ(traits.Legalize(c.value), c.legalized) << MetaKeyText(c.key) << c.value;
        EXPECT_EQ(traits.Usable(c.value), c.usable) << MetaKeyText(c.key) << c.value;
    }
    EXPECT_EQ(TakeAsserted(), std::vector<std::string>());
    EXPECT_TRUE(i_manager.GetTraits("name"_key).IsLegal(0));
    EXPECT_EQ(TakeAsserted(), std::vector<std::string>{"i_type == CData::ValType_INTEGER"});
}

TEST_F(CDataTraitsTest, NumbersReadAsPeopleReadThem) {
    i_manager.GetTraits("SmsC"_key).SetMenuTexts({"One", "Two"});
    for (const auto& c : kDisplay)
        EXPECT_EQ(i_manager.GetTraits(c.key).Display(CMetaValue(c.value)), c.textZ) << MetaKeyText(c.key) << c.value;
    const auto shown = [&](MetaKey key, auto value) {
        return i_manager.GetTraits(key).Display(CMetaValue(value)).UTF8();
    };
    EXPECT_EQ(shown("Slip"_key, 1.005), "1.00");
    EXPECT_EQ(shown("Duet"_key, BoolValueType::kTrue), "true");
    EXPECT_EQ(shown("Duet"_key, BoolValueType::kFalse), "false");
    EXPECT_EQ(shown("Duet"_key, BoolValueType::kMix), "mix");
    EXPECT_EQ(i_manager.GetTraits("TMPO"_key).Display({}), "1.00");
    EXPECT_EQ(i_manager.GetTraits("tsng"_key).Display({}), "0");
    SetDecimalMark(",");   // the form of the user is shown
    EXPECT_EQ(shown("Slip"_key, 1.005), "1,00");
    EXPECT_EQ(shown("SIZE"_key, 3'500'000), "3,3 MB");
    EXPECT_EQ(i_manager.GetTraits("TMPO"_key).Display({}), "1,00");
    EXPECT_EQ(TimeCodeText(83450), "1:23,450");
    SetDecimalMark(".");
    EXPECT_EQ(i_manager.GetTraits("Tsrt"_key).ToDisplayFromString("1:23.45"), "25035");
    EXPECT_EQ(i_manager.GetTraits("Tend"_key).ToDisplayFromString("0:05"), "1500");
    EXPECT_EQ(i_manager.GetTraits("Tsrt"_key).ToDisplayFromString("soon"), "soon");
    EXPECT_EQ(i_manager.GetTraits("trak"_key).ToDisplayFromString("1:23.45"), "1:23.45");
}

TEST(TimeCode, ReadsWhatPeopleType) {
    constexpr struct {
        const char* textZ;
        std::int64_t milliseconds;   // -1: no time code
    } kCases[] = {
        {"0", 0},           {"83.45", 83450}, {"1:23", 83000}, {" 1:23.4567 ", 83456}, {"1:02:03.5", 3723500},
        {"90:00", 5400000}, {"1:60", -1},     {"1:2:60", -1},  {"1:2:3:4", -1},        {"", -1},
        {":", -1},          {"1:", -1},       {"1.", -1},      {"1,5", 1500},          {"1:23,450", 83450},
        {"-0:01", -1000},   {"--1", -1},      {"x", -1},       {"9999999999", -1},     {"1.5x", -1},
    };
    for (const auto& c : kCases) {
        if (c.milliseconds == -1)
            EXPECT_EQ(ParseTimeCode(c.textZ), std::nullopt) << c.textZ;
        else
            EXPECT_EQ(ParseTimeCode(c.textZ), c.milliseconds) << c.textZ;
    }
    for (const std::int64_t value : {0L, 1L, 999L, 1000L, 59'999L, 60'000L, 3'599'999L, 3'600'000L, -61'001L})
        EXPECT_EQ(ParseTimeCode(TimeCodeText(value)), value);
    for (const std::int64_t value : {0L, 1L, 2L, 299L, 1501L, 2147483647L, -7L})
        EXPECT_EQ(In300ths(MillisecondsOf300ths(value)), value);
    EXPECT_EQ(In300ths(5000), 1500);
    EXPECT_EQ(TimeCodeText(std::numeric_limits<std::int64_t>::min()).UTF8().substr(0, 1), "-");
    EXPECT_EQ(DurationOf300ths(300 * 3723 + 299), "1:02:03");
    EXPECT_EQ(DurationOf300ths(-5), "0:00");
}

TEST(TempoSteps, EachByteOfAFileComesBack) {
    for (int byte = 0; byte <= 255; ++byte) {
        const double tempo = TempoOfStep(byte);
        EXPECT_EQ(static_cast<int>(tempo * 100.0), byte);   // as it is written
        EXPECT_EQ(TempoByte(tempo), byte);
        EXPECT_NEAR(tempo, byte / 100.0, 1e-12);
        EXPECT_EQ(QuantizedTempo(static_cast<float>(tempo)), tempo);   // and set once more
        EXPECT_EQ(QuantizedTempo(static_cast<float>(tempo) + 0.0049F), tempo);
        EXPECT_EQ(QuantizedTempo(static_cast<float>(tempo) - 0.0049F), tempo);
    }
    EXPECT_EQ(TempoOfStep(100), 1.0);
    // As many steps back lead back, whatever the hundredths cut off.
    for (const double percent : {0.1, 1.0, 1.5, 2.5, 5.0, 7.0})
        for (const int stepsL : {1, 3, 7, 12}) {
            double there = 1.0;
            for (int n = 0; n < stepsL; ++n) there = SteppedTempo(there, 1, percent);
            EXPECT_NEAR(there, 1.0 + stepsL * std::max(percent, 1.0) / 100, 0.0051);
            for (int n = 0; n < 2 * stepsL; ++n) there = SteppedTempo(there, -1, percent);
            for (int n = 0; n < stepsL; ++n) there = SteppedTempo(there, 1, percent);
            EXPECT_EQ(there, 1.0) << percent << " by " << stepsL;
        }
    EXPECT_NEAR(SteppedTempo(1.13, 1, 5.0), 1.15, 1e-6);
    EXPECT_NEAR(SteppedTempo(1.13, -1, 5.0), 1.10, 1e-6);
    EXPECT_EQ(QuantizedTempo(7.0F), TempoOfStep(255));
    EXPECT_EQ(QuantizedTempo(-1.0F), 0.0);
    EXPECT_EQ(QuantizedTempo(std::numeric_limits<float>::quiet_NaN()), 1.0);
    EXPECT_EQ(QuantizedTempo(std::numeric_limits<float>::infinity()), TempoOfStep(255));
}

}   // namespace
