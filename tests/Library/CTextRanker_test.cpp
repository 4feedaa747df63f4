#include "Library/CTextRanker.h"

#include <gtest/gtest.h>
#include <algorithm>
#include <random>

#include "Meta/CCollation.h"

namespace {

TEST(SortNumbered, IsAStableSort) {
    std::mt19937_64 random(3);
    std::vector<Numbered> room;
    for (const std::size_t rowsL : {0U, 1U, 2U, 2047U, 2048U, 9000U}) {
        for (const unsigned bits : {0U, 1U, 11U, 12U, 36U, 64U}) {
            SCOPED_TRACE(testing::Message() << rowsL << " rows of " << bits << " bits");
            std::vector<Numbered> rows;
            for (std::uint32_t n = 0; n < rowsL; ++n) rows.push_back({bits == 0 ? 7 : random() >> (64 - bits), n});
            std::vector<Numbered> wanted = rows;
            std::ranges::stable_sort(wanted, {}, &Numbered::number);
            SortNumbered(rows, room);
            for (std::size_t n = 0; n < rowsL; ++n) {
                ASSERT_EQ(rows[n].number, wanted[n].number) << n;
                ASSERT_EQ(rows[n].index, wanted[n].index) << n;
            }
        }
    }
}

TEST(CTextRanker, TextsStandInTheOrderOfTheirComparison) {
    const char* const kWords[] = {"love", "Love",    "LÖVE", "lo",   "9",      "10",  "09",  "",  " ",
                                  "é",    "e\u0301", "日本", "\xff", "heart-", "the", "The", "!", "🎤"};
    std::mt19937 random(5);
    std::vector<std::string> texts;
    for (const char* endZ : {"a", "b", "A", ""}) texts.emplace_back(40'000, 'x').append(endZ);
    for (int n = 0; n < 3000; ++n) {
        std::string text = n % 3 == 0 ? "a common beginning that is long " : "";
        for (std::uint32_t words = random() % 4; words > 0; --words) text += kWords[random() % std::size(kWords)];
        texts.push_back(text);
    }
    CTextRanker ranker(texts.size());
    std::vector<std::uint32_t> numbers;
    for (const std::string& text : texts) numbers.push_back(ranker.Add(text));
    const std::vector<std::uint32_t> ranks = ranker.Ranks();
    std::vector<std::size_t> order(texts.size());
    for (std::size_t n = 0; n < order.size(); ++n) order[n] = n;
    const CCollation& rules = CCollation::User();
    std::ranges::stable_sort(order,
                             [&](std::size_t a, std::size_t b) { return rules.Compare(texts[a], texts[b]) < 0; });
    std::uint32_t rank = 0;
    for (std::size_t n = 0; n < order.size(); ++n) {
        if (n == 0 || rules.Compare(texts[order[n - 1]], texts[order[n]]) != 0) ++rank;
        ASSERT_EQ(ranks[numbers[order[n]]], rank) << texts[order[n]].substr(0, 100);
    }
}

}   // namespace
