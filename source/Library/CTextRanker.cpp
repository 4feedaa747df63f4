#include "Library/CTextRanker.h"

#include <algorithm>
#include <bit>
#include <functional>

#include "Meta/CCollation.h"

namespace {

constexpr std::size_t kHead_Bytes = 8;
constexpr std::size_t kDeep = 512;   // a text may be as long as it likes, the stack not

/** Eight bytes of a key as a number; behind its end zeros, which no key holds. */
std::uint64_t Head(std::string_view key, std::size_t from) {
    std::uint64_t head = 0;
    for (std::size_t n = from; n < from + kHead_Bytes; ++n)
        head = head << 8 | (n < key.size() ? static_cast<unsigned char>(key[n]) : 0U);
    return head;
}

}   // namespace

CTextRanker::CTextRanker(std::size_t textsL) : i_table(std::bit_ceil(textsL + textsL / 2 + 1)) {}

std::uint32_t CTextRanker::Add(std::string_view text) {
    const std::size_t hash = std::hash<std::string_view>()(text), mask = i_table.size() - 1;
    const auto tag = static_cast<std::uint32_t>(hash >> 32);
    for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
        Entry& entry = i_table[at];
        if (entry.number1 == 0) {
            i_texts.push_back(text);
            entry = {tag, static_cast<std::uint32_t>(i_texts.size())};
        } else if (entry.hash != tag || i_texts[entry.number1 - 1] != text) {
            continue;
        }
        return entry.number1 - 1;
    }
}

void CTextRanker::MakeKeys() {
    std::u16string wide;
    i_ends.reserve(i_texts.size() + 1);
    i_ends.push_back(0);
    for (const std::string_view text : i_texts) {
        CCollation::User().AppendSortKey(text, i_keys, wide);
        i_ends.push_back(i_keys.size());
    }
}

std::vector<std::uint32_t> CTextRanker::Ranks() {
    MakeKeys();
    i_ranks.resize(i_texts.size());
    std::vector<Numbered> all(i_texts.size());
    for (std::uint32_t n = 0; n < all.size(); ++n) all[n].index = n;
    RankRun(all, 0);
    return std::move(i_ranks);
}

/** Ranks texts whose keys are equal in their first `depth` bytes, and none of which ends before. */
void CTextRanker::RankRun(std::span<Numbered> run, std::size_t depth) {
    if (depth >= kDeep) return RankWhole(run);
    for (Numbered& row : run) row.number = Head(Key(row.index), depth);
    SortNumbered(run, i_room);
    for (std::size_t begin = 0; begin < run.size();) {
        std::size_t end = begin + 1;
        while (end < run.size() && run[end].number == run[begin].number) ++end;
        const std::span<Numbered> alike = run.subspan(begin, end - begin);
        const bool moreB = alike.size() > 1 && Key(alike.front().index).size() > depth + kHead_Bytes;
        if (moreB) {
            RankRun(alike, depth + kHead_Bytes);
        } else {
            ++i_lastRank;
            for (const Numbered& row : alike) i_ranks[row.index] = i_lastRank;
        }
        begin = end;
    }
}

void CTextRanker::RankWhole(std::span<Numbered> run) {
    std::ranges::sort(run, {}, [this](const Numbered& row) { return Key(row.index); });
    for (std::size_t n = 0; n < run.size(); ++n) {
        if (n == 0 || Key(run[n].index) != Key(run[n - 1].index)) ++i_lastRank;
        i_ranks[run[n].index] = i_lastRank;
    }
}
