#include "Play/CPlayPlace.h"

#include <algorithm>
#include <iterator>

#include "Library/CSongDatabase.h"

namespace {
constexpr PLItemID kBeyond{0};   // no row has it: before the first, behind the last
}

void CPlayPlace::GoTo(PLItemID item) {
    i_item = item;
    i_before = SDB_kNoItem;
    i_leftB = false;
}

CPlayList* CPlayPlace::List() const {
    return Number(i_listID) == SDB_kUninitializedID ? nullptr : i_databaseP->GetPlayList(i_listID);
}

void CPlayPlace::RowsLeave(PlaylistID list, std::span<const PLItemID> items) {
    const PLItemID here = i_leftB ? i_before : i_item;
    CPlayList* const listP = List();
    if (list != i_listID || listP == nullptr || !std::ranges::binary_search(items, here)) return;
    const std::vector<PLItemID>& ids = listP->GetSortedList();
    const std::reverse_iterator from(std::ranges::find(ids, here));
    const auto before =
        std::find_if(from, ids.rend(), [items](PLItemID id) { return !std::ranges::binary_search(items, id); });
    i_before = before == ids.rend() ? SDB_kNoItem : *before;
    i_item = SDB_kNoItem;
    i_leftB = true;
}

PLItemID CPlayPlace::After(CPlayList::Step step) const {
    CPlayList* const listP = List();
    if (listP == nullptr) return SDB_kNoItem;
    if (!i_leftB) return listP->GetNextID(i_item, step);
    if (i_before == SDB_kNoItem) return listP->GetNextID(kBeyond, step);
    if (step == CPlayList::Step::kForward) return listP->GetNextID(i_before, step);
    const std::vector<PLItemID>& ids = listP->GetSortedList();
    const auto before = std::ranges::find(ids, i_before);
    const bool lastB = before == ids.end() || before + 1 == ids.end();
    return listP->GetNextID(lastB ? kBeyond : before[1], step);
}

std::vector<PLItemID> CPlayPlace::Ahead(std::size_t mostL) const {
    CPlayList* const listP = List();
    if (listP == nullptr) return {};
    const PLItemID next = Next();
    const std::vector<PLItemID>& ids = listP->GetSortedList();
    const auto from = std::ranges::find(ids, next);
    const auto countL = std::min<std::ptrdiff_t>(ids.end() - from, static_cast<std::ptrdiff_t>(mostL));
    return {from, from + countL};
}

bool CPlayPlace::RewindsFirst() const {
    const CPlayList* const listP = List();
    return listP != nullptr && listP->Type() != kSourceDB_SINGER_PL_TONIGHT;
}

bool CPlayPlace::IsLast() const {
    CPlayList* const listP = List();
    if (listP == nullptr) return false;
    const std::vector<PLItemID>& ids = listP->GetSortedList();
    const PLItemID here = i_leftB ? i_before : i_item;
    return ids.empty() ? i_leftB : ids.back() == here;
}
