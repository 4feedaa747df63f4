// What a list tells: rows, pages and orders. Any thread.
#include <chrono>
#include <thread>
#include <utility>

#include "Library/CMutex_PLIVec.h"

namespace {

constexpr std::size_t kCopy_Block = 4096;   // some 0.1 ms of rows that lie scattered
constexpr long kCopy_Beginnings = 8;
constexpr std::chrono::microseconds kCopy_Pause(50);

}   // namespace

PLRow CMutex_PLIVec::RowCopy(const CPlayListItem& item) const {
    return {item.ID(), item.Target(), item.i_rowL, item.i_sourceL, item.i_stampL};
}

std::size_t CMutex_PLIVec::Count() const {
    const Scope guard(*this);
    return i_countL;
}
std::size_t CMutex_PLIVec::Holes() const {
    const Scope guard(*this);
    return i_pliVec.size() - 1 - i_countL;
}
PLItemID CMutex_PLIVec::NextSlot() const {
    const Scope guard(*this);
    return PLItemID{i_holes.empty() ? static_cast<std::int32_t>(i_pliVec.size()) : i_holes.front()};
}
bool CMutex_PLIVec::HasRowValues() const {
    const Scope guard(*this);
    return i_metasL != 0;
}

std::optional<PLRow> CMutex_PLIVec::Get(PLItemID id) const {
    const Scope guard(*this);
    if (!IsRow(id)) return std::nullopt;
    Renumber();
    return RowCopy(i_pliVec[Slot(id)]);
}

std::vector<PLRow> CMutex_PLIVec::RowsOf(std::span<const PLItemID> ids) const {
    std::vector<PLRow> rows;
    rows.reserve(ids.size());
    for (; !ids.empty(); ids = ids.subspan(std::min(ids.size(), kCopy_Block))) {
        const Scope guard(*this);
        Renumber();
        for (const PLItemID id : ids.first(std::min(ids.size(), kCopy_Block)))
            if (IsRow(id)) rows.push_back(RowCopy(i_pliVec[Slot(id)]));
    }
    return rows;
}

RowIndex CMutex_PLIVec::RowOf(PLItemID id) const {
    const auto row = Get(id);
    return row ? row->row : SDB_Index_NONE;
}

std::optional<PLRow> CMutex_PLIVec::AtRow(RowIndex row) const {
    const std::vector<PLRow> page = Page(row, 1);
    return page.empty() ? std::nullopt : std::optional(page.front());
}

std::vector<PLRow> CMutex_PLIVec::Page(RowIndex first, std::size_t countL) const {
    const Scope guard(*this);
    const std::vector<PLItemID>& user = User();
    std::vector<PLRow> page;
    if (first == 0 || first > user.size()) return page;
    const std::size_t end = std::min(user.size() - (first - 1), countL) + first - 1;
    page.reserve(end - (first - 1));
    for (std::size_t n = first - 1; n < end; ++n) {
        page.push_back(RowCopy(i_pliVec[Slot(user[n])]));
        page.back().row = static_cast<RowIndex>(n + 1);
    }
    return page;
}

PLItemID CMutex_PLIVec::Find(PLTarget target) const {
    const Scope guard(*this);
    if (i_indexed == Indexed::kYes) {
        PLItemID first = SDB_kNoItem;
        i_slotsOf.ForEach(target.idL, [&](std::int32_t slot) {
            if (i_pliVec[static_cast<std::size_t>(slot)].Target() == target &&
                (first == SDB_kNoItem || slot < Number(first)))
                first = PLItemID{slot};
            return true;
        });
        return first;
    }
    for (std::size_t n = 1; n < i_pliVec.size(); ++n)
        if (!i_pliVec[n].IsHole() && i_pliVec[n].Target() == target) return i_pliVec[n].ID();
    return SDB_kNoItem;
}

std::vector<PLItemID> CMutex_PLIVec::RowsOfSongs(std::span<const SongID> songs) const {
    if (i_indexed == Indexed::kNo || songs.size() > Count())
        return FindAll([songs](const PLTarget& target) {
            return target.type == SDB_kPLItem_SONG && std::ranges::binary_search(songs, SongID{target.idL});
        });
    std::vector<PLItemID> found;
    {
        const Scope guard(*this);
        for (const SongID song : songs)
            i_slotsOf.ForEach(Number(song), [&](std::int32_t slot) {
                if (i_pliVec[static_cast<std::size_t>(slot)].Target() == PLTarget(song))
                    found.push_back(PLItemID{slot});
                return true;
            });
    }
    std::ranges::sort(found);
    return found;
}

std::vector<PLItemID> CMutex_PLIVec::UserOrder() const {
    const Scope guard(*this);
    return User();
}

bool CMutex_PLIVec::CopyBlock(std::vector<PLRow>& rows, std::uint32_t& changesL, std::size_t mostL) const {
    const Scope guard(*this);
    if (changesL != i_changesL) {   // the first block, or those before are of another moment
        changesL = i_changesL;
        rows.clear();
        rows.reserve(i_countL);
    }
    const std::vector<PLItemID>& user = User();
    const std::size_t end = std::min(user.size() - rows.size(), mostL) + rows.size();
    for (std::size_t n = rows.size(); n < end; ++n) {
        rows.push_back(RowCopy(i_pliVec[Slot(user[n])]));
        rows.back().row = static_cast<RowIndex>(n + 1);
    }
    return end == user.size();
}

std::vector<PLRow> CMutex_PLIVec::RowsInBlocks() const {
    std::vector<PLRow> rows;
    std::uint32_t changesL = 0, beforeL = 0;
    for (long beginningsL = 0;;) {
        // A list that never rests is copied in one go: the save must end.
        if (CopyBlock(rows, changesL, beginningsL < kCopy_Beginnings ? kCopy_Block : SIZE_MAX)) return rows;
        if (std::exchange(beforeL, changesL) != changesL) ++beginningsL;
        // Without a pause the lock would be taken again before whoever waits for it has woken.
        std::this_thread::sleep_for(kCopy_Pause);
    }
}

std::uint32_t CMutex_PLIVec::NextStamp() const {
    const Scope guard(*this);
    return i_nextStampL;
}

std::vector<PLRow> CMutex_PLIVec::RowsBefore(std::uint32_t stampL) const {
    std::vector<PLRow> rows;
    for (std::size_t begin = 1;; begin += kCopy_Block) {
        {
            const Scope guard(*this);
            if (begin == 1) rows.reserve(i_countL);
            const std::size_t end = std::min(i_pliVec.size(), begin + kCopy_Block);
            for (std::size_t n = begin; n < end; ++n)
                if (const CPlayListItem& item = i_pliVec[n]; !item.IsHole() && item.i_stampL < stampL)
                    rows.push_back(RowCopy(item));
            if (end >= i_pliVec.size()) return rows;
        }
        std::this_thread::sleep_for(kCopy_Pause);
    }
}

CMetaValue CMutex_PLIVec::RowValue(PLItemID id, std::uint32_t stampL, MetaKey key) const {
    const Scope guard(*this);
    if (!IsRow(id)) return {};
    const CPlayListItem& item = i_pliVec[Slot(id)];
    return item.i_stampL == stampL && item.Meta() != nullptr ? item.Meta()->Stored(key) : CMetaValue();
}

CCFDictionary CMutex_PLIVec::RowDictionary(PLItemID id, std::uint32_t stampL) const {
    const Scope guard(*this);
    if (!IsRow(id)) return {};
    const CPlayListItem& item = i_pliVec[Slot(id)];
    if (item.i_stampL != stampL || item.Meta() == nullptr) return {};
    CCFDictionary keys = item.Meta()->OtherKeys();
    for (const auto& [key, value] : item.Meta()->ToDictionary()) keys.Set(key, value);
    return keys;
}

std::optional<std::vector<PLItemID>> CMutex_PLIVec::Order(const SortSpec& spec) const {
    const Scope guard(*this);
    const auto it = i_orders.find(MainKey(spec));
    if (it == i_orders.end() || !SameSpec(it->second.Spec(), spec)) return std::nullopt;
    return it->second.Items();
}

bool CMutex_PLIVec::HasOrder(const SortSpec& spec) const {
    const Scope guard(*this);
    const auto it = i_orders.find(MainKey(spec));
    return it != i_orders.end() && SameSpec(it->second.Spec(), spec);
}

void CMutex_PLIVec::SetOrder(const SortSpec& spec, std::vector<PLItemID> ids) {
    SDB_Selection order(i_plP, spec);
    order.SetItems(std::move(ids));
    const Scope guard(*this);
    if (MainKey(spec) != "stIx"_key) i_orders.insert_or_assign(MainKey(spec), std::move(order));
}

void CMutex_PLIVec::DropOrder(MetaKey mainKey) {
    const Scope guard(*this);
    if (mainKey != "stIx"_key) i_orders.erase(mainKey);
}

const SDB_Selection* CMutex_PLIVec::FindOrder(const SortSpec& spec) const {
    const Scope guard(*this);
    const auto it = i_orders.find(MainKey(spec));
    return it == i_orders.end() || !SameSpec(it->second.Spec(), spec) ? nullptr : &it->second;
}

void CMutex_PLIVec::InsertIntoOrder(MetaKey mainKey, std::span<const std::pair<std::size_t, PLItemID>> places) {
    const Scope guard(*this);
    const auto it = i_orders.find(mainKey);
    if (it == i_orders.end() || mainKey == "stIx"_key) return;
    std::vector<PLItemID>& ids = it->second.Items();
    const auto at = [&](std::size_t n) { return ids.begin() + static_cast<std::ptrdiff_t>(n); };
    // From the end, so that each id moves once, however many come.
    std::size_t end = ids.size();
    ids.resize(end + places.size());
    for (std::size_t n = places.size(); n-- > 0;) {
        const std::size_t place = std::min(places[n].first, end);
        std::move_backward(at(place), at(end), at(end + n + 1));
        ids[place + n] = places[n].second;
        end = place;
    }
}

void CMutex_PLIVec::AppendToOrder(MetaKey mainKey, std::span<const PLItemID> ids) {
    const Scope guard(*this);
    const auto it = i_orders.find(mainKey);
    if (it == i_orders.end() || mainKey == "stIx"_key) return;
    it->second.Items().insert(it->second.Items().end(), ids.begin(), ids.end());
}

void CMutex_PLIVec::EraseFromOrder(MetaKey mainKey, std::span<const PLItemID> gone) {
    constexpr std::size_t kOneByOne =
        4;   // a key press changes one row of a million: no set, no pass that moves each id
    const Scope guard(*this);
    const auto it = i_orders.find(mainKey);
    if (it == i_orders.end() || mainKey == "stIx"_key) return;
    if (gone.size() > kOneByOne) {
        PLItemSet all;
        for (const PLItemID id : gone) all.Add(id);
        return it->second.BatchErase(all);
    }
    std::vector<PLItemID>& ids = it->second.Items();
    for (const PLItemID id : gone)
        if (const auto at = std::ranges::find(ids, id); at != ids.end()) ids.erase(at);
}

std::vector<SortSpec> CMutex_PLIVec::Orders() const {
    const Scope guard(*this);
    std::vector<SortSpec> specs;
    for (const auto& [key, order] : i_orders)
        if (&order != i_userP) specs.push_back(order.Spec());
    return specs;
}

CPlayListItem* CMutex_PLIVec::Item(PLItemID id) {
    const Scope guard(*this);
    if (!IsRow(id)) return nullptr;
    Renumber();
    return &i_pliVec[Slot(id)];
}
