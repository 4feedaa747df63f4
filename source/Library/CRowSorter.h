#pragma once
#include <cstdint>
#include <span>
#include <vector>

#include "Library/SortNumbered.h"
#include "Meta/CMeta.h"

/** The order of two values of a key, as CMeta compares them: no value first, checked boxes of "sgKJ" and "PSNT" first,
    the direction last. -1, 0, 1. */
[[nodiscard]] int CompareValues(const CMetaValue& a, const CMetaValue& b, const MetaSortKey& by);

/** Sorts rows by columns of values, in the order of CompareValues. Each column becomes small numbers at once: equal
    texts are looked at once, their keys made once and ranked, so that the sort itself compares numbers only.
    Threads  one at a time; holds no reference to the values once a column is added. */
class CRowSorter {
public:
    explicit CRowSorter(std::size_t rowsL) : i_rowsL(rowsL) {}
    /** The next column; `values` has one for each row. */
    void AddColumn(const MetaSortKey& by, std::span<const CMetaValue> values);
    /** The rows in order; those equal in all columns stay as they were. */
    [[nodiscard]] std::vector<std::uint32_t> Sort();

private:
    // Columns side by side in one number as long as they fit; the first is the highest.
    struct Word {
        std::vector<std::uint64_t> values;
        unsigned bits = 0;
    };
    void SortGroups(std::span<Numbered> rows, std::size_t word, std::vector<Numbered>& room) const;

    const std::size_t i_rowsL;
    std::vector<Word> i_words;
};
