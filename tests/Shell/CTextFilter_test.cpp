#include "Shell/CTextFilter.h"

#include <gtest/gtest.h>

namespace {

constexpr struct {
    const char *typed, *name, *artist;
    bool plainB, foundB;
} kFilter_Cases[] = {
    {"", "Anything", "Anyone", true, true},
    {"  \t ", "Anything", "Anyone", true, true},
    {"night", "Good Night", "X", true, true},
    {"NIGHT", "Good night", "X", true, true},
    {"night x", "Good Night", "Xavier", true, true},
    {"xav nig", "Good Night", "Xavier", true, true},
    {"night y", "Good Night", "Xavier", true, false},
    {"dnight", "Good Night", "X", true, false},   // not across a blank
    {"ightx", "Good Night", "X", true, false},    // nor across the two fields
    {"beyonce", "", "Beyoncé", true, true},
    {"beyonce", "", "Beyoncé", false, false},
    {"BEYONCÉ", "", "beyoncé", false, true},
    {"beyonce\xCC\x81", "", "Beyoncé", false, true},   // the mark as a character of its own
    {"ЗЕМ", "Земля", "", true, true},
    {"istanbul", "\xC4\xB0stanbul", "\xC3\x98rsted", true, true},
    {"orsted", "\xC4\xB0stanbul", "\xC3\x98rsted", true, false},   // a letter of its own, no mark
    {"\xC3\xA9", "e\xCC\x81", "\xC3\xA9", false, true},
    {"caf", "CAF\xC3", "", true, true},   // cut off in a letter
    {"夜", "夜に", "", true, true},
};

TEST(CTextFilter, FindsWhatAPersonMeans) {
    for (const auto& c : kFilter_Cases) {
        SCOPED_TRACE(testing::Message() << c.typed << " in " << c.name << " / " << c.artist);
        EXPECT_EQ(CTextFilter(c.typed, c.plainB).Matches(c.name, c.artist), c.foundB);
    }
}

}   // namespace
