#include "Library/CRowSorter.h"

#include <bit>
#include <cmath>
#include <cstring>
#include <deque>
#include <limits>
#include <string>
#include <unordered_map>

#include "Library/CCollation.h"

namespace {

using Ranks = std::vector<std::uint64_t>;

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

/** The sort keys of different texts, one behind the other. */
class TextKeys {
public:
    void Add(std::string_view text) {
        const std::string key = CCollation::User().SortKey(text);
        i_keys.push_back({Head(key, 0), Head(key, 8), i_bytes.size(), static_cast<std::uint32_t>(key.size()),
                          static_cast<std::uint32_t>(i_keys.size())});
        i_bytes += key;
    }
    /** By the number of the text: 1 for the first in order. */
    std::vector<std::uint32_t> Ranked() {
        std::ranges::sort(i_keys, [this](const Key& a, const Key& b) {
            if (a.head != b.head) return a.head < b.head;
            if (a.neck != b.neck) return a.neck < b.neck;
            return View(a) < View(b);
        });
        std::vector<std::uint32_t> ranks(i_keys.size());
        std::uint32_t rank = 0;
        for (std::size_t n = 0; n < i_keys.size(); ++n) {
            if (n == 0 || !Alike(i_keys[n - 1], i_keys[n])) ++rank;
            ranks[i_keys[n].text] = rank;
        }
        return ranks;
    }

private:
    struct Key {
        std::uint64_t head, neck;   // the first sixteen bytes, which nearly always decide without a look at the others
        std::size_t begin;
        std::uint32_t size, text;
    };
    static std::uint64_t Head(const std::string& key, std::size_t from) {
        std::uint64_t head = 0;
        for (std::size_t n = from; n < from + 8; ++n)
            head = head << 8 | (n < key.size() ? static_cast<unsigned char>(key[n]) : 0U);
        return head;
    }
    std::string_view View(const Key& key) const { return std::string_view(i_bytes).substr(key.begin, key.size); }
    bool Alike(const Key& a, const Key& b) const { return a.head == b.head && a.neck == b.neck && View(a) == View(b); }
    std::string i_bytes;
    std::vector<Key> i_keys;
};

Ranks TextRanks(std::span<const CMetaValue> values) {
    Ranks ranks(values.size());
    std::unordered_map<std::string_view, std::uint32_t> known;
    known.reserve(values.size() / 2);
    std::deque<std::string> kept;
    TextKeys keys;
    for (std::size_t n = 0; n < values.size(); ++n) {
        if (!values[n]) continue;
        std::string_view text = values[n].Text();
        if (values[n].Type() == ValType::ValType_SONGFILE) text = kept.emplace_back(values[n].FilePath());
        const auto [it, newB] = known.try_emplace(text, static_cast<std::uint32_t>(known.size()));
        if (newB) keys.Add(text);
        ranks[n] = it->second + 1;
    }
    const std::vector<std::uint32_t> order = keys.Ranked();
    for (std::uint64_t& rank : ranks)
        if (rank != 0) rank = order[rank - 1];
    return ranks;
}

/** The place of a value that is no text; 0 for none and for what has no order. */
std::uint64_t PlaceOf(const CMetaValue& value) {
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
        for (const CMetaValue& value : values) ranks.push_back(PlaceOf(value));
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

void CRowSorter::SortGroups(std::vector<std::pair<std::uint64_t, std::uint32_t>>& rows, std::size_t begin,
                            std::size_t end, std::size_t word) const {
    if (word == i_words.size() || end - begin < 2) return;
    for (std::size_t n = begin; n < end; ++n) rows[n].first = i_words[word].values[rows[n].second];
    // By the number, then by the row: equal rows stay as they were.
    std::sort(rows.begin() + static_cast<std::ptrdiff_t>(begin), rows.begin() + static_cast<std::ptrdiff_t>(end));
    if (word + 1 == i_words.size()) return;
    for (std::size_t n = begin; n < end;) {
        std::size_t next = n + 1;
        while (next < end && rows[next].first == rows[n].first) ++next;
        SortGroups(rows, n, next, word + 1);
        n = next;
    }
}

std::vector<std::uint32_t> CRowSorter::Sort() {
    std::vector<std::pair<std::uint64_t, std::uint32_t>> rows(i_rowsL);
    for (std::size_t n = 0; n < i_rowsL; ++n) rows[n].second = static_cast<std::uint32_t>(n);
    SortGroups(rows, 0, rows.size(), 0);
    std::vector<std::uint32_t> order;
    order.reserve(i_rowsL);
    for (const auto& [value, row] : rows) order.push_back(row);
    return order;
}
