#include <fstream>

#include "Cli/CliRun.h"
#include "Core/TempFolder.h"

namespace {

TEST(CliName, ParsesByATemplateAndTheSettings) {
    const TempFolder root;
    const auto parse = [&](const std::string& text, const std::string& name) {
        return RunCli("name", root.Path(), true, {"parse", text, name});
    };
    EXPECT_EQ(
        parse("L-T-R-S", "SC8123-05 Artist-\"Song\"").out,
        R"({"match":true,"label":"SC8123","track":"05","song":"\"Song\"","artist":"Artist","ignored":"","version":"","digits":2})"
        "\n");
    const std::string none =
        R"({"match":false,"label":"","track":"","song":"","artist":"","ignored":"","version":"","digits":0})"
        "\n";
    EXPECT_EQ(parse("T - S", "5 - Song").out, none);
    EXPECT_EQ(parse("T - S", "5 - Song").status, 0);
    ASSERT_EQ(RunCli("prefs", root.Path(), true, {"set", "Track Number can be single digit", "true"}).status, 0);
    EXPECT_NE(parse("T - S", "5 - Song").out, none);
    const CliRun illegal = parse("S#", "Song#"), shaped = parse("R/S", "a/b");
    EXPECT_EQ(illegal.status, 1);
    EXPECT_EQ(illegal.err, R"({"error":"You have entered an illegal character in one of your templates. )"
                           R"(Legal characters are LTRSI-()/. and Space.","status":-50})"
                           "\n");
    EXPECT_EQ(shaped.status, 1);
    EXPECT_NE(shaped.err.find("\"status\":-50}"), std::string::npos);
}

TEST(CliName, GuessesByTheFileOfTheUserWhenHeHasOne) {
    const TempFolder root;
    const auto guess = [&] {
        return RunCli("name", root.Path(), true,
                      {"guess", "SC8123-01 - Abba - Waterloo", "SC8123-02 - Queen - One", "x"})
            .out;
    };
    EXPECT_EQ(guess(), R"({"template":"L-T - R - S","matched":2,"names":3,"misfits":["x"]})"
                       "\n");
    std::filesystem::create_directories(root / "config/Vopla");
    std::ofstream(root / "config/Vopla/Name Parser Templates.txt") << "L-T - S - R\tmine\n";
    EXPECT_EQ(guess(), R"({"template":"L-T - S - R","matched":2,"names":3,"misfits":["x"]})"
                       "\n");
}

}   // namespace
