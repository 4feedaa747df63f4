#include "Values/JSONWriter.h"

#include <cmath>

#include "Core/SizeForms.h"
#include "Values/CCFDictionary.h"
#include "Values/DateForms.h"

namespace {

TEST(JSONWriter, ValuesByType) {
    const struct {
        CCFValue value;
        const char* json;
    } kCases[] = {
        {3, "3"},
        {3.0, "3"},
        {-0.0, "0"},
        {0.1, "0.1"},
        {1e300, "1e+300"},
        {-9223372036854775808.0, "-9223372036854775808"},
        {9223372036854775808.0, "9223372036854775808"},
        {std::nan(""), "null"},
        {INFINITY, "null"},
        {INT64_MAX, "9223372036854775807"},
        {true, "true"},
        {false, "false"},
        {"null", "null"},
        {"Null", "\"Null\""},
        {"", "\"\""},
        {"a\"b\\c/\b\f\n\r\t\x01\x1F é🎤", "\"a\\\"b\\\\c/\\b\\f\\n\\r\\t\\u0001\\u001f é🎤\""},
        {"x\xFFy\xE2\x82", "\"x\uFFFDy\uFFFD\""},
        {CFArray{}, "[]"},
        {CFArray{1, "a", CFArray{}}, "[1,\"a\",[]]"},
        {CCFDictionary{}, "{}"},
        {CCFDictionary{{"b", CCFDictionary{{"\"", 1}}}, {"a", ",]"}}, "{\"a\":\",]\",\"b\":{\"\\\"\":1}}"},
        {CFDate{0}, "\"/Date(978307200000+0000)/\""},
        {CFDate{-978307200.001}, "\"/Date(-1+0000)/\""},
        {CFDate{std::nan("")}, "\"/Date(0+0000)/\""},
        {CFData{std::byte{'a'}, std::byte{'b'}}, "\"YWI=\""},
    };
    for (const auto& c : kCases) EXPECT_EQ(CopyToJSON(c.value), c.json);
    EXPECT_EQ(JSONString("null"), "\"null\"");
    EXPECT_EQ(JSONString(std::string_view("\0", 1)), "\"\\u0000\"");
}

TEST(JSONWriter, ReadsDates) {
    const struct {
        const char* textZ;
        OSErr err;
        double seconds1970T;
    } kCases[] = {
        {"/Date(1234567890123+0000)/", noErr, 1234567890.123},
        {"/Date(1234567890123-0700)/", noErr, 1234567890.123},
        {"/Date(-1000)/", noErr, -1},
        {"/Date()/", paramErr, 0},
        {"/Date(1+000)/", paramErr, 0},
        {"/Date(1)", paramErr, 0},
        {"/Date(/", paramErr, 0},
        {"/Date(99999999999999999999)/", paramErr, 0},
        {"/Date(1x)/", paramErr, 0},
        {"", paramErr, 0},
    };
    for (const auto& c : kCases) {
        CFDate date{42};
        EXPECT_EQ(ReadJSONDate(c.textZ, date), c.err) << c.textZ;
        EXPECT_NEAR(date.absoluteT, Failed(c.err) ? 42 : c.seconds1970T - 978307200, 1e-6) << c.textZ;
    }
}

TEST(DateForms, PrintAndParse) {
    const CFDate date{1e9};   // 2032-09-09 01:46:40 UTC, by `date -u -d @1978307200`
    const struct {
        DateForm form;
        const char* textZ;
        double readT;
    } kCases[] = {
        {DateForm::kMail, "Thu, 9 Sep 2032 1:46:40 UTC", 1e9},
        {DateForm::kLong, "September 9, 2032 1:46:40 AM UTC", 1e9},
        {DateForm::kWeekday, "Thursday, September 9, 2032 - 1:46 AM UTC", 1e9 - 40},
        {DateForm::kSortable, "2032-9-09 1:46:40.000 +0000", 1e9},
        {DateForm::kDayZone, "9/09/2032 UTC", 1e9 - 6400},
        {DateForm::kDay, "9/09/2032", 1e9 - 6400},
        {DateForm::kYearFirst, "2032/9/09", 1e9 - 6400},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(PrintDate(date, c.form, "UTC"), c.textZ);
        CFDate read;
        EXPECT_EQ(ParseDate(c.textZ, c.form, read, "UTC"), noErr) << c.textZ;
        EXPECT_EQ(read.absoluteT, c.readT) << c.textZ;
        EXPECT_EQ(ParseDate(std::string(c.textZ) + "x", c.form, read, "UTC"), paramErr) << c.textZ;
        EXPECT_EQ(ReadDate(c.textZ, read, "UTC"), noErr);
        EXPECT_EQ(read.absoluteT, c.readT) << c.textZ;
    }
    CFDate read{42};
    EXPECT_EQ(ParseDate("13/45/2032", DateForm::kDay, read, "UTC"), paramErr);
    EXPECT_EQ(ParseDate("", DateForm::kDay, read), paramErr);
    EXPECT_EQ(ParseDate("September 9, 2032 13:46:40 PM UTC", DateForm::kLong, read), noErr);
    EXPECT_EQ(read.absoluteT, 1e9 + 12 * 3600);
    read.absoluteT = 42;
    EXPECT_EQ(read.absoluteT, 42);
    EXPECT_EQ(PrintDate(CFDate{0}, DateForm::kSortable, "America/New_York"), "2000-12-31 19:00:00.000 -0500");
}

TEST(SizeForms, SizesDurationsAndFrames) {
    const struct {
        std::uint64_t bytesL;
        const char* textZ;
    } kSizes[] = {{0, "0 bytes"},        {1023, "1023 bytes"},      {1024, "1 KB"},
                  {1536, "1.5 KB"},      {1572864, "1.5 MB"},       {3U << 30, "3 GB"},
                  {UINT64_MAX, "16 EB"}, {10 * 1024 + 51, "10 KB"}, {1048575, "1024 KB"}};
    for (const auto& c : kSizes) EXPECT_EQ(SizeText(c.bytesL), c.textZ);
    EXPECT_EQ(DurationText(2 * 86400 + 3 * 3600 + 20 * 60 + 1.9), "2 Days 3 Hours 20 Minutes 1 Second");
    EXPECT_EQ(DurationText(3600), "1 Hour");
    for (const double noneT : {0.0, 0.5, -5.0, static_cast<double>(NAN), static_cast<double>(INFINITY)})
        EXPECT_EQ(DurationText(noneT), "0 Seconds");
    EXPECT_EQ(CDFrameText(150), "00:2.000");
    EXPECT_EQ(CDFrameText(75 * 61 + 1), "01:1.013");
    EXPECT_EQ(CDFrameText(-1), "00:0.000");
}

}   // namespace
