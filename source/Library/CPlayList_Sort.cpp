// The orders of a list: sorting, and what keeps an order right as rows come, go and change.
#include <iterator>

#include "Core/AlertHook.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Library/CPlayList.h"
#include "Library/CSongDatabase.h"
#include "Library/CT_SortSelection.h"
#include "Meta/CMetaManager.h"
#include "Threads/ThreadInfo.h"

namespace {

// Up to so many rows find their places one by one (some 20 comparisons each); more are sorted by a task.
constexpr std::size_t kMostInserted = 64;

bool UsesOneOf(const SortSpec& spec, std::span<const MetaKey> keys) {
    return std::ranges::any_of(spec,
                               [&](const MetaSortKey& by) { return std::ranges::find(keys, by.key) != keys.end(); });
}

}   // namespace

SortJob CPlayList::MakeJob(SortSpec spec) const {
    return {Values(), i_list, std::move(spec), i_list->NextStamp(), i_playlistID, i_name.UTF8()};
}

void CPlayList::Shown(SortSpec spec, SortTold told) {
    if (!SameSpec(spec, i_sortSpec)) ++i_revisionL;   // kept with the next save; no reason for one by itself
    i_sortSpec = std::move(spec);
    if (told == SortTold::kSilent) return;
    i_database.Tell([&](CListWatcher& watcher) { watcher.SortChanged(i_playlistID, i_sortSpec, false); });
}

void CPlayList::SetSort(SortSpec spec, SortWait wait, SortTold told) {
    (void)Assert(IsMainThread());
    if (MainKey(spec) == kKey_UserOrder) spec = {{kKey_UserOrder}};
    const auto first = [](const SortSpec& keys) {
        return SortSpec(keys.begin(), keys.begin() + (keys.empty() ? 0 : 1));
    };
    if (i_sortingB && wait == SortWait::kNo) {
        i_waitingSpec = std::move(spec);
        i_waitingTold = told;
        return;
    }
    if (i_sortingB) {   // this one will not wait: what the task brings is kept, not shown
        i_showResultB = false;
        i_waitingSpec.reset();
        if (std::exchange(i_staleShownB, false)) i_list->DropOrder(MainKey(i_sortSpec));
    }
    if (SameSpec(first(spec), first(i_sortSpec)) && (i_list->HasOrder(i_sortSpec) || Count() < 2)) return;
    if (Count() < 2 || i_list->HasOrder(spec)) return Shown(std::move(spec), told);
    if (wait == SortWait::kNo) return StartSort(std::move(spec));
    SortHere(spec);
    Shown(std::move(spec), told);
}

void CPlayList::SortHere(SortSpec spec) {
    SortJob job = MakeJob(std::move(spec));
    CT_SortSelection::Run(job);
    i_list->SetOrder(job.spec, std::move(job.order));
}

void CPlayList::StartSort(SortSpec spec) {
    if (!AssertWords(!i_sortingB, "!sortingB.Get()")) return;
    i_sortingB = i_showResultB = true;
    i_touched.clear();
    i_database.Tell([&](CListWatcher& watcher) { watcher.SortChanged(i_playlistID, spec, true); });
    SortJob job = MakeJob(spec);
    if (CT_SortSelection::Start(std::make_unique<CT_SortSelection>(std::move(job), i_database.Self())) != 0) return;
    job = MakeJob(std::move(spec));   // no thread can be had: then here
    CT_SortSelection::Run(job);
    SortCompletion(std::move(job), noErr);
}

void CPlayList::SortAgain(const SortSpec& spec) {
    if (i_sortingB)
        i_staleShownB = true;   // the completion looks after it
    else
        StartSort(spec);
}

void CPlayList::SortTroubles(const SortSpec& spec) const {
    char blurb[256];
    std::snprintf(
        blurb, sizeof blurb,
        "Upon completion of sorting column %s, we found that the sort column was not being sorted? (Key count: "
        "%d) Please send the log file.",
        MetaKeyText(MainKey(spec)).c_str(), static_cast<int>(spec.size()));
    Log(blurb);
    ShowAlert(blurb, "");
}

void CPlayList::SortCompletion(SortJob job, OSErr err) {
    if (!i_sortingB) return SortTroubles(job.spec);
    i_sortingB = false;
    const std::vector<PLItemID> touched = std::exchange(i_touched, {});
    if (Failed(err)) {
        LogF("### Error sorting %s (%d)", i_name.CString(), static_cast<int>(err));
    } else {
        // What left, came or changed meanwhile goes out, and what is there of it finds its place anew.
        PLItemSet all;
        std::vector<PLItemID> fresh;
        for (const PLItemID id : touched)
            if (!all.Has(id)) {
                all.Add(id);
                if (i_list->Get(id)) fresh.push_back(id);
            }
        if (!touched.empty()) std::erase_if(job.order, [&](PLItemID id) { return all.Has(id); });
        // Too many stand at the end until they are sorted too; whoever waits for another order does not wait for that.
        const bool againB = fresh.size() > kMostInserted;
        const bool keptB = !againB || (i_showResultB && !i_waitingSpec);
        if (keptB) i_list->SetOrder(job.spec, std::move(job.order));
        if (keptB && !againB) Insert(job.spec, i_list->RowsOf(fresh));
        if (keptB && againB) i_list->AppendToOrder(MainKey(job.spec), fresh);
        const bool staleB = std::exchange(i_staleShownB, false) && MainKey(job.spec) != MainKey(i_sortSpec);
        if (staleB) i_list->DropOrder(MainKey(i_sortSpec));   // made anew when it is wanted
        if (keptB && i_showResultB) Shown(job.spec, SortTold::kTold);
        if (keptB && againB) StartSort(std::move(job.spec));
    }
    if (auto next = std::exchange(i_waitingSpec, std::nullopt)) SetSort(std::move(*next), SortWait::kNo, i_waitingTold);
}

void CPlayList::Insert(const SortSpec& spec, std::vector<PLRow> rows) {
    const SDB_Selection* const orderP = i_list->FindOrder(spec);
    if (orderP == nullptr || rows.empty()) return;
    const CRowValues values = Values();
    const std::vector<PLItemID>& ids = orderP->Items();
    std::ranges::sort(rows, {}, &PLRow::id);
    std::vector<std::pair<std::size_t, PLItemID>> places;
    auto from = ids.begin();
    for (const PLRow& row : values.Sorted(rows, spec)) {
        const auto before = [&](PLItemID id) {
            const auto other = i_list->Get(id);
            return other && values.Compare(*other, row, spec) < 0;
        };
        // Most rows come at the end: a new song has the highest id.
        from = ids.empty() || before(ids.back()) ? ids.end() : std::partition_point(from, ids.end(), before);
        places.emplace_back(static_cast<std::size_t>(from - ids.begin()), row.id);
    }
    i_list->InsertIntoOrder(MainKey(spec), places);
}

void CPlayList::NoteTouched(std::span<const PLItemID> items) {
    if (!i_sortingB) return;
    i_touched.insert(i_touched.end(), items.begin(), items.end());
}

void CPlayList::PlaceInOrders(const std::vector<PLItemID>& items) {
    NoteTouched(items);
    const std::vector<SortSpec> specs = i_list->Orders();
    if (specs.empty()) return;
    const std::vector<PLRow> rows = items.size() <= kMostInserted ? i_list->RowsOf(items) : std::vector<PLRow>();
    for (const SortSpec& spec : specs) {
        if (items.size() <= kMostInserted) {
            Insert(spec, rows);
        } else if (SameSpec(spec, i_sortSpec)) {
            i_list->AppendToOrder(MainKey(spec), items);
            SortAgain(spec);
        } else {
            i_list->DropOrder(MainKey(spec));
        }
    }
}

void CPlayList::ItemsChanged(std::span<const PLItemID> items, std::span<const MetaKey> keys) {
    NoteTouched(items);
    for (const SortSpec& spec : i_list->Orders()) {
        if (!UsesOneOf(spec, keys)) continue;
        if (items.size() <= kMostInserted) {
            i_list->EraseFromOrder(MainKey(spec), items);
            Insert(spec, i_list->RowsOf(items));
        } else if (SameSpec(spec, i_sortSpec)) {
            SortAgain(spec);   // the old order is shown until then
        } else {
            i_list->DropOrder(MainKey(spec));
        }
    }
    ItemChanged(ListMessage::kChanged, items);
    if (std::ranges::find(keys, "drtn"_key) != keys.end()) DurationIsStale();
}

void CPlayList::SetSavedSort(MetaKey key, bool ascendingB) {
    const bool refusedB = MetaManager().GetTraits(key).Has(kKeyFlag_NoSavedSort) ||
                          (key == "DAdd"_key && !i_database.Host().IsDateAddedReal());
    i_sortSpec = {{refusedB ? CM_Key_SORT_INDEX : key, ascendingB || key == kKey_UserOrder}};
}

const std::vector<PLItemID>& CPlayList::GetSortedList() {
    if (const SDB_Selection* const orderP = i_list->FindOrder(i_sortSpec)) return orderP->Items();
    SortHere(i_sortSpec);
    return i_list->FindOrder(i_sortSpec)->Items();
}

CPlayListItem* CPlayList::GetIndSortedItem(RowIndex row) {
    const std::vector<PLItemID>& ids = GetSortedList();
    return row == 0 || row > ids.size() ? nullptr : i_list->Item(ids[row - 1]);
}

SDB_Selection CPlayList::GetAsSelection_FromViewer() {
    SDB_Selection selection(this, i_sortSpec);
    selection.SetItems(GetSortedList());
    return selection;
}

void CPlayList::MakeUserOrder() {
    if (i_sortingB) return ShowAlert(Localize("Please wait until the sort tasks are finished."), "");
    LogF("Setting user sort order for %s\n", i_name.CString());
    if (!AssertWords(i_list->SetUserOrder(GetSortedList()), "the shown order holds every row")) return;
    Touch("user sort order");
    ItemChanged(ListMessage::kMoved, GetSortedList());
}

void CPlayList::SetSelectedItem(PLItemID item) noexcept {
    if (std::exchange(i_selectedItem, item) != item) ++i_revisionL;   // likewise
}

PLItemID CPlayList::GetNextID(PLItemID item, Step step) {
    const bool backwardsB = step == Step::kBackward;
    if (item == SDB_kNoItem) item = i_selectedItem;
    const std::vector<PLItemID>& ids = GetSortedList();
    const std::size_t countL = ids.size();
    const auto it = std::ranges::find(ids, item);
    // An item that is not there stands before the first and behind the last.
    std::size_t place = it != ids.end() ? static_cast<std::size_t>(it - ids.begin()) : backwardsB ? 0 : countL - 1;
    for (std::size_t n = 0; n < countL; ++n) {
        place = backwardsB ? (place + countL - 1) % countL : (place + 1) % countL;
        const CPlayListItem* const itemP = i_list->Item(ids[place]);
        const bool playsB =
            itemP != nullptr && (itemP->Type() == SDB_kPLItem_SINGER || Number(itemP->GetSongID()) != SDB_kOrphanID);
        if (playsB) return ids[place];
    }
    return SDB_kNoItem;
}
