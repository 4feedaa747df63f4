#include "Library/CRowSorter.h"

#include <bit>
#include <cmath>
#include <deque>
#include <limits>
#include <string>

#include "Library/CTextRanker.h"
#include "Library/SongFileFacts.h"

namespace {

using Ranks = std::vector<std::uint64_t>;
constexpr MetaKey kKey_Size = "SIZE"_key;

/** A number in the order of the doubles; all NaN are one, after the others. */
std::uint64_t OrderedBits(double value) {
    if (std::isnan(value)) return std::numeric_limits<std::uint64_t>::max();
    const auto bits = std::bit_cast<std::uint64_t>(value == 0.0 ? 0.0 : value);
    return (bits >> 63) != 0 ? ~bits : bits | 1ULL << 63;
}

/** Values become 1, 2, 3 ... in their order, equal ones alike; 0 stays 0. */
void MakeDense(Ranks& ranks) {
    Ranks known = ranks;
    std::ranges::sort(known);
    known.erase(std::unique(known.begin(), known.end()), known.end());
    const std::uint64_t shift = known.empty() || known.front() != 0 ? 1 : 0;
    for (std::uint64_t& rank : ranks)
        if (rank != 0) rank = static_cast<std::uint64_t>(std::ranges::lower_bound(known, rank) - known.begin()) + shift;
}

Ranks TextRanks(std::span<const CMetaValue> values) {
    Ranks ranks(values.size());
    std::deque<std::string> kept;
    CTextRanker ranker(values.size());
    for (std::size_t n = 0; n < values.size(); ++n) {
        if (!values[n]) continue;
        std::string_view text = values[n].Text();
        if (values[n].Type() == ValType::ValType_SONGFILE) text = kept.emplace_back(values[n].FilePath());
        ranks[n] = std::uint64_t{ranker.Add(text)} + 1;
    }
    const std::vector<std::uint32_t> order = ranker.Ranks();
    for (std::uint64_t& rank : ranks)
        if (rank != 0) rank = order[rank - 1];
    return ranks;
}

/** The place of a value that is no text; 0 for none and for what has no order. */
std::uint64_t PlaceOf(const CMetaValue& value, MetaKey key) {
    if (key == kKey_Size && value) return std::uint64_t{SizeOfStored(value.Integer())} + 1;
    switch (value.Type()) {
        case ValType::ValType_BOOL:
            return value.Bool() == BoolValueType::kTrue ? 1 : value.Bool() == BoolValueType::kMix ? 2 : 3;
        case ValType::ValType_INTEGER:
            return static_cast<std::uint64_t>(std::int64_t{value.Integer()} + (std::int64_t{1} << 31) + 1);
        case ValType::ValType_FLOAT:
            return OrderedBits(value.Float());
        case ValType::ValType_DATE:
            return OrderedBits(value.Date().absoluteT);
        case ValType::ValType_NONE:
            return 0;
        default:
            return 1;   // blocks and dictionaries: there, all alike
    }
}

bool IsChecksFirst(MetaKey key) { return key == "sgKJ"_key || key == "PSNT"_key; }

}   // namespace

int CompareValues(const CMetaValue& a, const CMetaValue& b, const MetaSortKey& by) {
    int order = 0;
    if (!a != !b)
        order = !a ? -1 : 1;
    else if (a && by.key == kKey_Size)
        order = static_cast<int>(SizeOfStored(a.Integer()) > SizeOfStored(b.Integer())) -
                static_cast<int>(SizeOfStored(a.Integer()) < SizeOfStored(b.Integer()));
    else if (a)
        order = a.IsLessThan(b) ? -1 : b.IsLessThan(a) ? 1 : 0;
    if (IsChecksFirst(by.key)) order = -order;
    return by.ascendingB ? order : -order;
}

void CRowSorter::AddColumn(const MetaSortKey& by, std::span<const CMetaValue> values) {
    const auto it = std::ranges::find_if(values, [](const CMetaValue& value) { return static_cast<bool>(value); });
    if (it == values.end()) return;   // nobody has one: nothing is decided here
    const bool textB = it->Type() == ValType::ValType_STRING || it->Type() == ValType::ValType_SONGFILE;
    Ranks ranks;
    if (textB) {
        ranks = TextRanks(values);
    } else {
        ranks.reserve(values.size());
        for (const CMetaValue& value : values) ranks.push_back(PlaceOf(value, by.key));
        if (std::ranges::max(ranks) >> 34 != 0) MakeDense(ranks);   // doubles
    }
    const std::uint64_t most = std::ranges::max(ranks);
    if (by.ascendingB == IsChecksFirst(by.key))
        for (std::uint64_t& rank : ranks) rank = most - rank;
    const auto bits = static_cast<unsigned>(std::bit_width(most));
    if (i_words.empty() || i_words.back().bits + bits > 64) {
        i_words.push_back({std::move(ranks), bits});
        return;
    }
    Word& word = i_words.back();
    word.bits += bits;
    for (std::size_t n = 0; n < i_rowsL; ++n) word.values[n] = word.values[n] << bits | ranks[n];
}

void CRowSorter::SortGroups(std::span<Numbered> rows, std::size_t word, std::vector<Numbered>& room) const {
    if (word == i_words.size() || rows.size() < 2) return;
    for (Numbered& row : rows) row.number = i_words[word].values[row.index];
    SortNumbered(rows, room);
    if (word + 1 == i_words.size()) return;
    for (std::size_t n = 0; n < rows.size();) {
        std::size_t next = n + 1;
        while (next < rows.size() && rows[next].number == rows[n].number) ++next;
        SortGroups(rows.subspan(n, next - n), word + 1, room);
        n = next;
    }
}

std::vector<std::uint32_t> CRowSorter::Sort() {
    std::vector<Numbered> rows(i_rowsL), room;
    for (std::size_t n = 0; n < i_rowsL; ++n) rows[n].index = static_cast<std::uint32_t>(n);
    SortGroups(rows, 0, room);
    std::vector<std::uint32_t> order;
    order.reserve(i_rowsL);
    for (const Numbered& row : rows) order.push_back(row.index);
    return order;
}
