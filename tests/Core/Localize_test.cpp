#include "Core/Localize.h"

#include <gtest/gtest.h>
#include <clocale>
#include <cstdlib>

namespace {

TEST(Localize, ValuesGoToTheirPlaces) {
    EXPECT_EQ(Localize("", {"x"}), "");   // the empty text is the heading of a catalogue
    EXPECT_EQ(Localize("%2 of %1: 100 %, %3 %", {"%2", "b"}), "b of %2: 100 %, %3 %");   // a name may look like a place
    EXPECT_EQ(LocalizeCount("%1 song", "%1 songs", 1), "1 song");
    EXPECT_EQ(LocalizeCount("%1 song", "%1 songs", 0), "0 songs");
}

TEST(Localize, TheCatalogueIsAsked) {
    ::setenv("LANGUAGE", "xx", 1);
    std::setlocale(LC_MESSAGES, "C.UTF-8");
    ChooseCatalogue(std::filesystem::path(VOPLA_BINARY_DIR) / "locale");
    EXPECT_EQ(Localize("Cancel"), "Çàñçél~~");
    EXPECT_EQ(Localize("“%1” plays.", {"a"}).find("“a” plàýs."), 0U);
    EXPECT_EQ(LocalizeCount("%1 song could be read.", "%1 songs could be read.", 3).find("3 söñgs"), 0U);
    EXPECT_EQ(Localize("of no catalogue"), "of no catalogue");
    ::unsetenv("LANGUAGE");
    std::setlocale(LC_MESSAGES, "C");
}

}   // namespace
