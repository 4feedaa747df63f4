#include "Meta/TitleText.h"

#include <gtest/gtest.h>

#include <random>

#include "Meta/CCollation.h"

namespace {

TEST(TitleText, NormalizesAndIsThenNormal) {
    constexpr struct {
        const char *textZ, *resultZ;
    } kCases[] = {
        {"", ""},
        {" ", ""},
        {"Plain text", "Plain text"},
        {"  two  blanks\t\r\nand a tab  ", "two blanks and a tab"},
        {"Beyonce\u0301", "Beyonc\u00e9"},                      // composed
        {"e\u0001\u0301", "\u00e9"},                            // also over what is taken out
        {"no\u00a0break\u3000space\u2028", "no break space"},   // white space of other scripts
        {"bell\u0007 and \u0085 next line", "bell and next line"},
        {"\u212b", "\u00c5"},   // the sign for Angstrom is the letter
        {"\xff\xfe", "\uFFFD\uFFFD"},
    };
    for (const auto& c : kCases) {
        EXPECT_EQ(NormalizedTitle(c.textZ), c.resultZ);
        EXPECT_EQ(NormalizedTitle(c.resultZ), c.resultZ);
    }
    std::mt19937 random(1);
    for (int round = 0; round < 500; ++round) {
        std::string text;
        for (std::size_t n = random() % 12; n > 0; --n)
            text += " \t\x01 abe\xcc\x81\xc2\x85\xe2\x80\x83\xff"[random() % 15];
        const std::string once = NormalizedTitle(text);
        EXPECT_EQ(NormalizedTitle(once), once);
        EXPECT_EQ(once.find("  "), std::string::npos);
    }
}

TEST(TitleText, ArticlesGoToTheEnd) {
    constexpr struct {
        const char *textZ, *resultZ;
    } kCases[] = {
        {"The Who", "Who, The"},
        {"The The", "The, The"},
        {"Las Ketchup", "Ketchup, Las"},
        {"Los Lobos", "Lobos, Los"},
        {"El Chombo", "Chombo, El"},
        {"La Bouche", "Bouche, La"},
        {"The La Las", "Las, The, La"},
        {"Los El Tri", "El Tri, Los"},
        {"The", "The"},
        {"Them", "Them"},
        {"the who", "the who"},
        {"The ", ", The"},
        {"", ""},
        {"Who, The", "Who, The"},
        {"La's", "La's"},
    };
    for (const auto& c : kCases) EXPECT_EQ(ArticleAtEnd(c.textZ), c.resultZ) << c.textZ;
}

TEST(CCollation, OrdersLikePeopleDo) {
    const CCollation english("en_US");
    const char* const kInOrder[] = {"",      "2 Unlimited", "10cc",     "abba", "Äbc",
                                    "abc d", "Track 9",     "track 10", "Zoë",  "Жар"};
    for (std::size_t a = 0; a < std::size(kInOrder); ++a)
        for (std::size_t b = 0; b < std::size(kInOrder); ++b) {
            const int expected = a < b ? -1 : a > b ? 1 : 0;
            EXPECT_EQ(english.Compare(kInOrder[a], kInOrder[b]), expected) << kInOrder[a] << " " << kInOrder[b];
        }
    EXPECT_EQ(english.Compare("ABBA", "abba"), 0);
    EXPECT_NE(english.Compare("Zoe", "Zoë"), 0);
    EXPECT_LT(CCollation("sv").Compare("z", "ä"), 0);   // a letter of its own there
    EXPECT_GT(english.Compare("z", "ä"), 0);
}

TEST(CCollation, SortKeysGiveTheSameOrder) {
    const CCollation& user = CCollation::User();
    std::mt19937 random(2);
    const auto text = [&] {
        std::string made;
        for (std::size_t n = random() % 8; n > 0; --n) made += "aAbB 019-\xc3\xa9\xff"[random() % 12];
        return made;
    };
    for (int round = 0; round < 3000; ++round) {
        const std::string a = text(), b = text();
        const int byKey = user.SortKey(a).compare(user.SortKey(b));
        EXPECT_EQ(user.Compare(a, b), byKey < 0 ? -1 : byKey > 0 ? 1 : 0) << a << "|" << b;
    }
    EXPECT_EQ(user.SortKey(std::string(5000, 'x')).size() > 5000, true);   // longer than the first guess
}

}   // namespace
