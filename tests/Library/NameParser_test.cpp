#include "Library/NameParser.h"

#include <gtest/gtest.h>

#include <random>

namespace {

/** "label|track|song|artist|ignored|version", or "-" where nothing fits. */
std::string Read(std::string_view text, std::string_view name, NameHabits habits = {}) {
    const auto parsed = InterpretWithFallback(name, text, habits);
    if (!parsed) return "-";
    EXPECT_EQ(parsed->digitsL, parsed->Value(NameToken::kTrack).size());
    std::string all = parsed->values[0];
    for (const std::string& value : std::span(parsed->values).subspan(1)) all += "|" + value;
    return all;
}

TEST(NameParser, ReadsTheHabitsOfNames) {
    const struct {
        const char *templateZ, *nameZ, *readZ;
    } kCases[] = {
        {"S", "Any - name (at all)", "||Any - name (at all)|||"},
        {"R - S", "Artist - Song - Part 2", "||Song - Part 2|Artist||"},
        {"R - S", "Artist-Song", "-"},
        {"R-S", "Artist - Song", "|| Song|Artist ||"},   // as they stand in the name
        {"R - S", " - ", "|||||"},
        {"R - S", "Тату - Нас не догонят", "||Нас не догонят|Тату||"},
        {"L-T - R - S", "SC8123-05 - Artist - Song", "SC8123|05|Song|Artist||"},
        {"L-L-T - R - S", "SC-8123-05 - Artist - Song", "SC-8123|05|Song|Artist||"},
        {"L L-T S", "SC 8123-05 Song", "SC 8123|05|Song|||"},
        {"L-T-R-S", "SC8123-05-Artist-Song", "SC8123|05|Song|Artist||"},
        {"L-T-R-S", "SC8123-05 Artist-Song", "SC8123|05|Song|Artist||"},
        {"L-T-S-R", "SC8123-05 Song-Artist", "-"},   // no other template falls back
        // The track: digits, whatever stands before them, when the template goes on behind.
        {"T-S", "SC8123 05-Song", "|05|Song|||"},
        {"T-S", "Disc 5 Track 12-Song", "|12|Song|||"},
        {"T S", "1 Song", "-"},
        {"T S", "1 12 Song", "|12|Song|||"},
        {"T", "12 of 34", "|34||||"},
        {"T", "12 of", "-"},
        {"S-T", "Song-007", "|007|Song|||"},
        {"TS", "05Song", "|05|Song|||"},
        // Literals in a row are one, and what stands before the first may be more.
        {"S (V)", "A Song of Many Words (Live)", "||A Song of Many Words|||Live"},
        {"S (V)", "Song (Live) again", "-"},
        {"S [V]", "Song [Duet]", "||Song|||Duet"},
        {" - S", "front part - Song", "||Song|||"},
        {"[L] S", "x[SC] Song", "SC||Song|||"},
        {"I - S", "ZZ - Song", "||Song||ZZ|"},
        // Folders.
        {"/R/L/S", "more/Artist/SC8123/Song", "SC8123||Song|Artist||"},
        {"/R/S", "Artist/Song", "||Song|Artist||"},
        {"/R/S", "Song", "-"},
        {"/R/L/S", "Artist/Song", "-"},
        {"/R/T S", "Artist/5 Song", "-"},
        {"S", "Artist/Song", "||Song|||"},
        // No templates.
        {"R/S", "Artist/Song", "-"},
        {"/S", "a/Song", "-"},
        {"/A/B/C/S", "a/b/c/Song", "-"},
        {"S#", "Song#", "-"},
        {"", "", "-"},
    };
    for (const auto& c : kCases) EXPECT_EQ(Read(c.templateZ, c.nameZ), c.readZ) << c.templateZ << " on " << c.nameZ;
}

TEST(NameParser, HabitsOfTheUserHold) {
    constexpr NameHabits kOneDigit{.oneDigitB = true}, kParens{.parensB = true};
    EXPECT_EQ(Read("T S", "1 Song", kOneDigit), "|1|Song|||");
    EXPECT_EQ(Read("T-S", "SC8123 5-Song", kOneDigit), "|5|Song|||");
    EXPECT_EQ(Read("R - S", "Artist - Song (Live)", kParens), "||Song|Artist||Live");
    EXPECT_EQ(Read("R - S", "Artist - Song (Live (Acoustic))", kParens), "||Song|Artist||Live (Acoustic)");
    EXPECT_EQ(Read("R - S", "Artist - (Live) Song", kParens), "||(Live) Song|Artist||");
    EXPECT_EQ(Read("R - S", "Artist - Song)", kParens), "||Song)|Artist||");
    EXPECT_EQ(Read("/L/R - S", "(SC/Artist - Song)", kParens), "(SC||Song)|Artist||");   // of the file's name alone
    EXPECT_EQ(Read("L-T-R-S", "SC8123-05 Artist-Song (Live)", kParens), "SC8123|05|Song|Artist||Live");
}

/** Whatever is read out of a name, BuildName puts together again. */
TEST(NameParser, WhatIsBuiltIsReadAgain) {
    std::mt19937 random(7);
    for (const char* const templateZ : {"L-T - R - S", "R - S (V)", "T. R - S [V]", "L-L-T - S"})
        for (int n = 0; n < 200; ++n) {
            const auto word = [&random] {
                std::string text;
                for (int k = 0; k < 5; ++k) text += static_cast<char>('a' + random() % 26);
                return text;
            };
            const std::string label = std::string_view(templateZ).starts_with("L-L") ? word() + "-" + word() : word();
            const NameValues values = {label, std::to_string(10 + random() % 990), word(), word(), word(), word()};
            const auto built = BuildName(templateZ, values);
            ASSERT_TRUE(built);
            const auto parsed = Interpret(built->text, templateZ);
            ASSERT_TRUE(parsed) << built->text << " by " << templateZ;
            for (std::size_t value = 0; value < kName_Values; ++value)
                EXPECT_TRUE(parsed->values[value].empty() || parsed->values[value] == values[value]) << built->text;
            EXPECT_EQ(BuildName(templateZ, parsed->values)->text, built->text);
        }
}

}   // namespace
