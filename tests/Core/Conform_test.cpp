#include "Core/Conform.h"

namespace {

TEST(Conform, Names) {
    const struct {
        const char *given, *plain, *small;
    } kCases[] = {
        {"", "", ""},
        {"  the WIND and the rain ", "The Wind And The Rain", "The Wind and the Rain"},
        {"to the to the to", "To The To The To", "To the to the To"},
        {"SINEAD o'connor", "Sinead O'Connor", "Sinead O'Connor"},
        {"paul mccartney", "Paul McCartney", "Paul McCartney"},
        {"mccartney,mcdonald", "Mccartney,McDonald", "Mccartney,McDonald"},
        {"young mc", "Young MC", "Young MC"},
        {"mc hammer & mc lyte", "Mc Hammer & MC Lyte", "Mc Hammer & MC Lyte"},
        {"mc-5", "MC-5", "MC-5"},
        {"aBBa gold", "ABBA Gold", "ABBA Gold"},
        {"abbaye", "Abbaye", "Abbaye"},
        {"inxs", "INXS", "INXS"},
        {"melody elo", "Melody ELO", "Melody ELO"},
        {"ac-dc, ac dc, acdc, ac/dc", "AC/DC, AC/DC, AC/DC, AC/DC", "AC/DC, AC/DC, AC/DC, AC/DC"},
        {"ub40", "UB40", "UB40"},
        {"10cc", "10CC", "10CC"},
        {"-nsync", "'N Sync", "'N Sync"},
        {"adam ant", "Adam and the Ants", "Adam and the Ants"},
        {"adam & the ants", "Adam and the Ants", "Adam and the Ants"},
        {"adam antler", "Adam Antler", "Adam Antler"},
        {"alanis morrisette", "Alanis Morrisete", "Alanis Morrisete"},
        {"rocky ii theme", "Rocky II Theme", "Rocky II Theme"},
        {"rocky ii", "Rocky Ii", "Rocky Ii"},
        {"batman tv theme", "Batman TV Theme", "Batman TV Theme"},
        {"my tv set", "My tv Set", "My tv Set"},
        {"songs folder", "Songs", "Songs"},
        {"songs folders", "Songs Folders", "Songs Folders"},
        {"pack.zip", "Pack", "Pack"},
        {"bEATLES", "The Beatles", "The Beatles"},
        {"beatles live", "Beatles Live", "Beatles Live"},
        {"a dj in love", "A DJ In Love", "A DJ in Love"},
        {"las cosas las", "Las Cosas Las", "Las Cosas Las"},
        {"con las y el", "Con Las Y El", "Con las y El"},
        {"one\r\ntwo\n", "OneTwo", "OneTwo"},
        {"black sabbath", "Black Sabbath", "Black Sabbath"},
        {"o'", "O'", "O'"},
        {"tango'd", "Tango'd", "Tango'd"},
        {"été o'érable", "Été O'Érable", "Été O'Érable"},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(Conform(c.given), c.plain) << c.given;
        EXPECT_EQ(Conform(c.given, {.lowerSmallWordsB = true}), c.small) << c.given;
        // What stands conformed stays, but for what was cut off at an end.
        EXPECT_EQ(Conform(Conform(c.given)), Conform(SuperString(c.plain))) << c.given;
    }
    EXPECT_EQ(Conform("one\r\ntwo\n", {.keepLineEndsB = true}), "One\r\nTwo");
}

}   // namespace
