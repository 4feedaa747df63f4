#include "Import/NameGuess.h"

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>

namespace {

std::vector<NameTemplateLine> Templates() {
    std::stringstream text;
    text << std::ifstream(VOPLA_SOURCE_DIR "/resources/Name Parser Templates.txt").rdbuf();
    return ReadNameTemplates(text.str());
}

/** Each line of the file reads its own remark, or the remark would be no example. */
TEST(NameGuess, EveryTemplateReadsItsExample) {
    const auto templates = Templates();
    ASSERT_GT(templates.size(), 40U);
    for (const auto& [parser, remark] : templates) {
        const auto parsed = parser.Interpret(remark.substr(0, remark.find(',')), {});
        ASSERT_TRUE(parsed) << parser.Text();
        EXPECT_EQ(parsed->Value(NameToken::kSong), "Song") << parser.Text();
        EXPECT_TRUE(parsed->Value(NameToken::kTrack).empty() || parsed->Value(NameToken::kTrack) == "05");
        if (const std::string& label = parsed->Value(NameToken::kLabel); !label.empty())
            EXPECT_TRUE(label == "SC8123" || label == "SC-8123") << parser.Text();
    }
}

TEST(NameGuess, TheLinesOfAFileThatPeopleEdit) {
    const auto lines = ReadNameTemplates("\xEF\xBB\xBFR - S\tremark\r\n\n\tonly a remark\nS#\nS (V)");
    ASSERT_EQ(lines.size(), 2U);
    EXPECT_EQ(lines[0].remark, "remark");
    EXPECT_EQ(lines[1].parser.Text(), "S (V)");
}

TEST(NameGuess, TheHabitsOfMakers) {
    const std::vector<std::string> artists = {"Abba", "Queen", "Elvis Presley", "Abba", "U2", "Queen", "Cher", "Abba"};
    const std::vector<std::string> songs = {"Waterloo", "Bohemian Rhapsody", "Suspicious Minds", "Dancing Queen",
                                            "One",      "Radio Ga Ga",       "Believe",          "Chiquitita"};
    const auto templates = Templates();
    const auto names = [&](const std::string& form) {
        std::vector<std::string> made;
        for (std::size_t n = 0; n < songs.size(); ++n) {
            std::string name;
            for (const char letter : form.substr(form.starts_with('/')))
                name += letter == 'R'   ? artists[n]
                        : letter == 'S' ? songs[n]
                        : letter == 'L' ? "SC8123"
                        : letter == 'T' ? "0" + std::to_string(n + 1)
                                        : std::string(1, letter);
            made.push_back(name);
        }
        return made;
    };
    for (const char* const formZ :
         {"L-T - R - S", "L-T - S - R", "L - T - R - S", "L T - R - S", "L-T R - S", "L - R - S", "T - R - S",
          "T. R - S", "R - S", "S - R", "[L-T] R - S", "R - S - L-T", "L-T - S", "T - S", "R-S", "/L/T - R - S"}) {
        const auto guess = GuessNameTemplate(names(formZ), templates);
        ASSERT_NE(guess.parserP, nullptr) << formZ;
        EXPECT_EQ(guess.parserP->Text(), formZ);
        EXPECT_EQ(guess.matchedL, songs.size()) << formZ;
    }
    // A word in front of all is nobody's artist, and no code.
    EXPECT_EQ(GuessNameTemplate(names("Karaoke - R - S"), templates).parserP->Text(), "I - R - S");
    EXPECT_EQ(GuessNameTemplate(names("L-T R-S"), templates).parserP->Text(), "L-T-R-S");   // by its fallback
    // A few names of another habit change nothing, and are told.
    auto mixed = names("L-T - R - S");
    mixed.push_back("readme");
    const auto guess = GuessNameTemplate(mixed, templates);
    EXPECT_EQ(guess.parserP->Text(), "L-T - R - S");
    EXPECT_EQ(guess.misfits, std::vector<std::size_t>{8});
    EXPECT_EQ(GuessNameTemplate(std::vector<std::string>{"readme"}, templates).parserP, nullptr);
}

TEST(NameGuess, WhichOfTwoIsTheArtist) {
    const auto templates = Templates();
    const std::vector<std::string> two = {"Cher - Believe", "Queen - One Vision"};
    const auto known = [](const std::string& artist) { return artist == "Believe"; };
    EXPECT_EQ(GuessNameTemplate(two, templates).parserP->Text(), "R - S");
    EXPECT_EQ(GuessNameTemplate(two, templates, {}, known).parserP->Text(), "S - R");
    std::vector<std::string> one;   // a disc of one singer
    for (const char* const songZ : {"Help", "Yesterday", "Girl", "Let It Be", "Michelle", "Something", "Because"})
        one.push_back(std::string(songZ) + " - The Beatles");
    EXPECT_EQ(GuessNameTemplate(one, templates).parserP->Text(), "S - R");
}

}   // namespace
