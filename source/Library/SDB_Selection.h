#pragma once
#include <vector>

#include "Library/LibraryIDs.h"
#include "Meta/CMeta.h"
#include "Threads/CMutex.h"

class CPlayList;

/** Keys and directions of a sort; none is the order of the slots. */
using SortSpec = std::vector<MetaSortKey>;
/** The first key, "piIx" without one. */
[[nodiscard]] MetaKey MainKey(const SortSpec& spec);
[[nodiscard]] bool SameSpec(const SortSpec& a, const SortSpec& b);

/** A set of item ids, a bit each: for passes over orders of a million rows. */
class PLItemSet {
public:
    void Add(PLItemID id);
    [[nodiscard]] bool Has(PLItemID id) const noexcept {
        const auto n = static_cast<std::size_t>(Number(id));
        return n < i_bits.size() && i_bits[n];
    }

private:
    std::vector<bool> i_bits;
};

/** An ordered set of rows of one list: what the user selected, or the whole list in the order of some keys.
    Threads  one on the stack has its owner's thread; those inside a list are guarded by the list's lock. */
class SDB_Selection {
public:
    explicit SDB_Selection(const CPlayList* listP = nullptr, SortSpec spec = {})
        : i_plP(listP), i_sortSpec(std::move(spec)) {}

    [[nodiscard]] const CPlayList* List() const;
    [[nodiscard]] const std::vector<PLItemID>& Items() const noexcept { return i_items; }
    [[nodiscard]] std::vector<PLItemID>& Items() noexcept { return i_items; }
    [[nodiscard]] std::size_t Count() const noexcept { return i_items.size(); }
    [[nodiscard]] const SortSpec& Spec() const noexcept { return i_sortSpec; }
    [[nodiscard]] MetaKey GetMainSortProperty() const { return MainKey(i_sortSpec); }
    void SetItems(std::vector<PLItemID> items) { i_items = std::move(items); }
    /** Takes out all of these in one pass. */
    void BatchErase(const PLItemSet& gone);

private:
    const CPlayList* i_plP;
    std::vector<PLItemID> i_items;
    SortSpec i_sortSpec;
};
