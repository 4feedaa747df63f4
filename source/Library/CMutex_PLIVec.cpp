#include "Library/CMutex_PLIVec.h"

#include <numeric>

#include "Core/Assertions.h"
#include "Core/CLog.h"

CMutex_PLIVec::CMutex_PLIVec(CPlayList* listP, Indexed indexed)
    : i_plP(listP),
      i_indexed(indexed),
      i_pliVec(1),
      i_userP(&i_orders.try_emplace(kKey_UserOrder, listP, SortSpec{{kKey_UserOrder}}).first->second) {}

// ---- Slots ----

bool CMutex_PLIVec::IsRow(PLItemID id) const noexcept {
    return Number(id) > 0 && Slot(id) < i_pliVec.size() && !i_pliVec[Slot(id)].IsHole();
}

std::size_t CMutex_PLIVec::TakeSlot(PLItemID wanted) {
    std::size_t slot = i_holes.empty() ? i_pliVec.size() : static_cast<std::size_t>(i_holes.front());
    // A file may ask for any slot, but not for a list of holes: what is far beyond the rows gets the next one.
    if (Number(wanted) > 0 && Slot(wanted) <= i_pliVec.size() * 4 + 4096 && !IsRow(wanted)) slot = Slot(wanted);
    while (i_pliVec.size() <= slot) {
        if (i_pliVec.size() < slot) {
            i_holes.push_back(static_cast<std::int32_t>(i_pliVec.size()));
            std::ranges::push_heap(i_holes, std::greater{});
        }
        i_pliVec.emplace_back();
    }
    return slot;
}

std::vector<PLItemID> CMutex_PLIVec::Add(std::vector<PLNewItem> items, RowIndex where) {
    const Scope guard(*this);
    std::vector<PLItemID> ids;
    ids.reserve(items.size());
    for (PLNewItem& asked : items) {
        const std::size_t slot = TakeSlot(asked.wanted);
        CPlayListItem& item = i_pliVec[slot];
        item.i_myPlP = i_plP;
        item.i_indexL = static_cast<std::int32_t>(slot);
        item.i_itemType = asked.target.type;
        item.i_targetL = asked.target.idL;
        item.i_sourceL = asked.sourceL;
        item.i_metaP = std::move(asked.metaP);
        item.i_stampL = i_nextStampL++;
        if (item.i_metaP != nullptr) ++i_metasL;
        if (i_indexed == Indexed::kYes) i_slotsOf.Add(item.i_targetL, item.i_indexL);
        ++i_countL;
        // Slots that were taken out of turn are still in the heap: they go when they come up.
        while (!i_holes.empty() && !i_pliVec[static_cast<std::size_t>(i_holes.front())].IsHole()) {
            std::ranges::pop_heap(i_holes, std::greater{});
            i_holes.pop_back();
        }
        ids.push_back(item.ID());
    }
    if (ids.empty()) return ids;
    std::vector<PLItemID>& user = User();
    const bool insideB = where >= 1 && where <= user.size();
    const std::size_t place = insideB ? where - 1 : user.size();
    user.insert(user.begin() + static_cast<std::ptrdiff_t>(place), ids.begin(), ids.end());
    Stale(place);
    return ids;
}

CMeta_PLItem* CMutex_PLIVec::MakeMeta(PLItemID id) {
    const Scope guard(*this);
    if (!IsRow(id)) return nullptr;
    CPlayListItem& item = i_pliVec[Slot(id)];
    if (item.i_metaP == nullptr) {
        item.i_metaP = std::make_unique<CMeta_PLItem>();
        ++i_metasL;
    }
    return item.Meta();
}

bool CMutex_PLIVec::CheckRemoval(PLItemID id, std::string_view listName) const {
    if (!AssertWords(Number(id) > 0, "indexS > 0")) return false;
    char words[256];
    const char* formatZ = Slot(id) >= i_pliVec.size()
                              ? "ASSERT: attempting to remove index %d from playlist <%.*s> when size is %d"
                              : "ASSERT: attempting to remove index %d from playlist <%.*s>, but it is already removed";
    if (IsRow(id)) return AssertWords(i_pliVec[Slot(id)].ID() == id, "pliP->i_pli_index == indexS");
    std::snprintf(words, sizeof words, formatZ, Number(id),
                  static_cast<int>(std::min(listName.size(), std::size_t{100})), listName.data(),
                  static_cast<int>(i_pliVec.size()));
    Log(words);   // asserted by the caller, without the lock
    return false;
}

void CMutex_PLIVec::Leave_(CPlayListItem& item) {
    i_holes.push_back(item.i_indexL);
    std::ranges::push_heap(i_holes, std::greater{});
    if (item.i_metaP != nullptr) --i_metasL;
    if (i_indexed == Indexed::kYes) i_slotsOf.Remove(item.i_targetL, item.i_indexL);
    item = CPlayListItem();
    --i_countL;
}

void CMutex_PLIVec::ResetIfEmpty() {
    if (i_countL != 0) return;
    i_pliVec.clear();
    i_pliVec.emplace_back();
    i_holes.clear();
    i_slotsOf.Clear();
    i_metasL = 0;
    for (auto& [key, order] : i_orders) order.Items().clear();
    i_staleL = SIZE_MAX;
    ++i_changesL;
}

bool CMutex_PLIVec::Remove(PLItemID id, std::string_view listName) { return Remove(std::span(&id, 1), listName) == 1; }

std::size_t CMutex_PLIVec::Remove(std::span<const PLItemID> ids, std::string_view listName) {
    std::size_t refusedL = 0, goneL = 0;
    {
        const Scope guard(*this);
        PLItemSet gone;
        std::size_t firstPlace = SIZE_MAX;
        if (ids.size() == 1 && IsRow(ids[0])) {
            Renumber();
            firstPlace = i_pliVec[Slot(ids[0])].i_rowL - 1;
        }
        for (const PLItemID id : ids) {
            if (!CheckRemoval(id, listName)) {
                ++refusedL;
                continue;
            }
            gone.Add(id);
            Leave_(i_pliVec[Slot(id)]);
            ++goneL;
        }
        if (goneL == 0) {
        } else if (goneL == 1 && firstPlace != SIZE_MAX) {
            std::vector<PLItemID>& user = User();
            user.erase(user.begin() + static_cast<std::ptrdiff_t>(firstPlace));
            Stale(firstPlace);
            for (auto& [key, order] : i_orders)
                if (&order != i_userP) std::erase(order.Items(), ids[0]);
        } else {
            for (auto& [key, order] : i_orders) order.BatchErase(gone);
            Stale(0);
        }
        if (goneL != 0) ResetIfEmpty();
    }
    // A fault of the caller: told without the lock, since telling may show a window.
    if (refusedL != 0) (void)AssertWords(false, "ASSERT: attempting to remove an item that is not in the playlist");
    return goneL;
}

void CMutex_PLIVec::Clear() {
    const Scope guard(*this);
    i_countL = 0;
    ResetIfEmpty();
}

// ---- The user's order ----

RowIndex CMutex_PLIVec::Move(PLItemID id, RowIndex to) { return Move(std::span(&id, 1), to); }

RowIndex CMutex_PLIVec::Move(std::span<const PLItemID> ids, RowIndex to) {
    const Scope guard(*this);
    std::vector<PLItemID>& user = User();
    const std::size_t target = std::min<std::size_t>(to == 0 ? user.size() : to - 1, user.size());
    PLItemSet moved;
    std::size_t countL = 0;
    for (const PLItemID id : ids)
        if (IsRow(id) && !moved.Has(id)) {
            moved.Add(id);
            ++countL;
        }
    if (countL == 0) return SDB_Index_NONE;
    Renumber();
    // Only the rows between the outermost moved one and the target change their places.
    std::size_t first = target, last = target;
    for (const PLItemID id : ids)
        if (IsRow(id)) {
            const std::size_t place = i_pliVec[Slot(id)].i_rowL - 1;
            first = std::min(first, place);
            last = std::max(last, place + 1);
        }
    const auto at = [&](std::size_t place) { return user.begin() + static_cast<std::ptrdiff_t>(place); };
    const auto isMoved = [&](PLItemID id) { return moved.Has(id); };
    // In front of the target the others close up to the left, behind it to the right; the moved ones meet there.
    const auto begin = std::stable_partition(at(first), at(target), std::not_fn(isMoved));
    std::stable_partition(at(target), at(last), isMoved);
    for (std::size_t n = first; n < last; ++n) i_pliVec[Slot(user[n])].i_rowL = static_cast<RowIndex>(n + 1);
    ++i_changesL;
    return static_cast<RowIndex>(begin - user.begin()) + 1;
}

bool CMutex_PLIVec::SetUserOrder(std::vector<PLItemID> ids) {
    const Scope guard(*this);
    PLItemSet seen;
    for (const PLItemID id : ids) {
        if (!IsRow(id) || seen.Has(id)) return false;
        seen.Add(id);
    }
    if (ids.size() != i_countL) return false;
    i_userP->SetItems(std::move(ids));
    Stale(0);
    return true;
}

void CMutex_PLIVec::Renumber() const {
    const std::vector<PLItemID>& user = User();
    for (std::size_t n = i_staleL; n < user.size(); ++n) i_pliVec[Slot(user[n])].i_rowL = static_cast<RowIndex>(n + 1);
    i_staleL = SIZE_MAX;
}

bool CMutex_PLIVec::UpdateIndices() const {
    const Scope guard(*this);
    const bool staleB = i_staleL < User().size();
    Renumber();
    return staleB;
}
