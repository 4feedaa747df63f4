#pragma once
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Library/SortNumbered.h"

/** Gives texts their places in the order of CCollation::User(): 1 for the first, equal ones alike. Each different text
    is looked at once and its key made once; the keys are then sorted eight bytes at a time.
    Threads  one at a time. The texts outlive it. */
class CTextRanker {
public:
    /** `textsL` is how many Add may be given at most. */
    explicit CTextRanker(std::size_t textsL);
    /** The number of the text, from 0; the same for an equal one. */
    std::uint32_t Add(std::string_view text);
    /** The places, by the number of the text. Once, at the end. */
    [[nodiscard]] std::vector<std::uint32_t> Ranks();

private:
    // Open addressing, the hash beside the number: a new text touches no text but itself. A node-based map took a
    // third of the whole sort of a million different names.
    struct Entry {
        std::uint32_t hash = 0, number1 = 0;   // from 1; 0: free
    };
    void MakeKeys();
    void RankRun(std::span<Numbered> run, std::size_t depth);
    void RankWhole(std::span<Numbered> run);
    [[nodiscard]] std::string_view Key(std::uint32_t text) const {
        return std::string_view(i_keys).substr(i_ends[text], i_ends[text + 1] - i_ends[text]);
    }

    std::vector<Entry> i_table;
    std::vector<std::string_view> i_texts;
    std::string i_keys;                // one behind the other
    std::vector<std::size_t> i_ends;   // of the key before, so that there is one more
    std::vector<std::uint32_t> i_ranks;
    std::vector<Numbered> i_room;
    std::uint32_t i_lastRank = 0;
};
