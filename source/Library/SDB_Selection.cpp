#include "Library/SDB_Selection.h"

#include "Core/Assertions.h"

MetaKey MainKey(const SortSpec& spec) { return spec.empty() ? CM_Key_SORT_INDEX : spec.front().key; }

bool SameSpec(const SortSpec& a, const SortSpec& b) {
    return std::ranges::equal(a, b, [](const MetaSortKey& one, const MetaSortKey& other) {
        return one.key == other.key && one.ascendingB == other.ascendingB;
    });
}

void PLItemSet::Add(PLItemID id) {
    if (Number(id) < 0) return;
    const auto n = static_cast<std::size_t>(Number(id));
    if (n >= i_bits.size()) i_bits.resize(std::max(n + 1, i_bits.size() * 2));
    i_bits[n] = true;
}

const CPlayList* SDB_Selection::List() const {
    (void)Assert(i_plP != nullptr);
    return i_plP;
}

void SDB_Selection::BatchErase(const PLItemSet& gone) {
    std::erase_if(i_items, [&](PLItemID id) { return gone.Has(id); });
}
