#include "Graphics/CReedSolomon64.h"

#include <algorithm>
#include <array>
#include <random>

namespace {
using Word = std::vector<std::uint8_t>;

/** The field by long multiplication, bit by bit: shares nothing with the tables. */
unsigned SlowTimes(unsigned a, unsigned b) {
    unsigned product = 0;
    for (unsigned bit = 0; bit < 6; ++bit)
        if ((b >> bit & 1) != 0) product ^= a << bit;
    for (unsigned bit = 10; bit >= 6; --bit)
        if ((product >> bit & 1) != 0) product ^= 0x43U << (bit - 6);
    return product;
}
bool IsCodeword(const Word& word, std::size_t parityL) {
    unsigned root = 1;
    for (std::size_t n = 0; n < parityL; ++n, root = SlowTimes(root, 2)) {
        unsigned sum = 0;
        for (const std::uint8_t symbol : word) sum = SlowTimes(sum, root) ^ symbol;
        if (sum != 0) return false;
    }
    return true;
}

struct Kind {
    const char* name;
    std::size_t sizeL, parityL;
};
constexpr Kind kQ{"Q", 4, 2}, kP{"P", 24, 4};

Word RandomWord(std::mt19937& random, const Kind& kind) {
    Word word(kind.sizeL);
    for (auto& symbol : word) symbol = static_cast<std::uint8_t>(random() % 64);
    CReedSolomon64::Encode(word, kind.parityL);
    return word;
}
int Decode(Word& word, const Kind& kind) { return CReedSolomon64::Decode(word, kind.parityL); }

/** Every codeword at a distance of at most parityL / 2, by trying all changes; with P pairs this is slow. */
std::vector<Word> Nearest(const Word& word, const Kind& kind) {
    std::vector<Word> found;
    if (IsCodeword(word, kind.parityL)) return {word};
    for (std::size_t a = 0; a < kind.sizeL; ++a)
        for (std::uint8_t change = 1; change < 64; ++change) {
            Word one = word;
            one[a] ^= change;
            if (IsCodeword(one, kind.parityL)) found.push_back(one);
            for (std::size_t b = a + 1; kind.parityL == 4 && b < kind.sizeL; ++b) {
                // The first two syndromes leave one change of b that could do.
                unsigned sum = 0;
                for (const std::uint8_t symbol : one) sum ^= symbol;
                Word two = one;
                two[b] = static_cast<std::uint8_t>(two[b] ^ sum);
                if (sum != 0 && IsCodeword(two, kind.parityL)) found.push_back(two);
            }
        }
    return found;
}

TEST(CReedSolomon64, EncodesIntoTheRootsOfTheGenerator) {
    std::mt19937 random(1);
    for (const Kind& kind : {kQ, kP})
        for (int n = 0; n < 200; ++n) {
            Word word = RandomWord(random, kind);
            ASSERT_TRUE(IsCodeword(word, kind.parityL)) << kind.name;
            ASSERT_EQ(Decode(word, kind), 0);
        }
}

TEST(CReedSolomon64, CorrectsEverySingleError) {
    std::mt19937 random(2);
    for (const Kind& kind : {kQ, kP}) {
        const Word right = RandomWord(random, kind);
        for (std::size_t at = 0; at < kind.sizeL; ++at)
            for (std::uint8_t change = 1; change < 64; ++change) {
                Word word = right;
                word[at] ^= change;
                ASSERT_EQ(Decode(word, kind), 1) << kind.name << at;
                ASSERT_EQ(word, right) << kind.name << at;
            }
    }
}

TEST(CReedSolomon64, CorrectsEveryDoubleErrorOfP) {
    std::mt19937 random(3);
    const Word right = RandomWord(random, kP);
    for (std::size_t a = 0; a < kP.sizeL; ++a)
        for (std::size_t b = a + 1; b < kP.sizeL; ++b)
            for (std::uint8_t change = 1; change < 64; ++change)
                for (const std::uint8_t other : std::array<std::uint8_t, 3>{1, 37, 62}) {
                    Word word = right;
                    word[a] ^= change;
                    word[b] ^= other;
                    ASSERT_EQ(Decode(word, kP), 2) << a << ' ' << b;
                    ASSERT_EQ(word, right) << a << ' ' << b;
                }
}

TEST(CReedSolomon64, ChangesAWordOnlyWhereFewChangesExplainIt) {
    std::mt19937 random(4);
    for (const Kind& kind : {kQ, kP}) {
        int stoodL = 0;
        for (int n = 0; n < (kind.parityL == 2 ? 3000 : 150); ++n) {
            Word word = RandomWord(random, kind);
            const std::size_t errorsL = kind.parityL / 2 + 1 + random() % 2;
            for (std::size_t e = 0; e < errorsL; ++e) {
                std::uint8_t& symbol = word[random() % kind.sizeL];
                symbol = static_cast<std::uint8_t>(symbol ^ (random() % 63 + 1));
            }
            const Word before = word;
            const std::vector<Word> nearest = Nearest(before, kind);
            ASSERT_LE(nearest.size(), 1U);
            const int result = Decode(word, kind);
            if (nearest.empty()) {
                ASSERT_EQ(result, CReedSolomon64::kBeyondRepair) << kind.name;
                ASSERT_EQ(word, before);
                ++stoodL;
            } else {
                ASSERT_EQ(word, nearest[0]) << kind.name;
            }
        }
        EXPECT_GT(stoodL, 50) << kind.name;   // the case was really met
    }
}
std::size_t Changes(const Word& a, const Word& b) {
    std::size_t changedL = 0;
    for (std::size_t at = 0; at < a.size(); ++at) changedL += a[at] != b[at];
    return changedL;
}

TEST(CReedSolomon64, NeverChangesMoreSymbolsThanItMay) {
    std::mt19937 random(5);
    for (const Kind& kind : {kQ, kP})
        for (int n = 0; n < 30000; ++n) {
            Word word(kind.sizeL);
            for (auto& symbol : word) symbol = static_cast<std::uint8_t>(random() % 64);
            const Word before = word;
            const int result = Decode(word, kind);
            ASSERT_LE(Changes(word, before), kind.parityL / 2) << kind.name;
            ASSERT_EQ(IsCodeword(word, kind.parityL), result >= 0) << kind.name;
        }
}

// Some of these have syndromes that three changes explain and two do not: they must stand.
TEST(CReedSolomon64, LetsTripleErrorsStandOrTakesThemForFewer) {
    for (unsigned a = 1; a < 64; ++a)
        for (unsigned b = 1; b < 64; ++b)
            for (unsigned c = 1; c < 64; ++c) {
                Word word(kP.sizeL);   // all zero is a codeword
                word[3] = static_cast<std::uint8_t>(a);
                word[11] = static_cast<std::uint8_t>(b);
                word[22] = static_cast<std::uint8_t>(c);
                const Word before = word;
                const int result = Decode(word, kP);
                ASSERT_LE(result, 2) << a << ' ' << b << ' ' << c;
                ASSERT_EQ(Changes(word, before), static_cast<std::size_t>(std::max(result, 0)));
            }
}
}   // namespace
