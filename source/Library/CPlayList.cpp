#include "Library/CPlayList.h"

#include <unordered_map>

#include "Core/AlertHook.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Core/SizeForms.h"
#include "Library/CSongDatabase.h"
#include "Library/CT_SumDurations.h"
#include "Library/SongFileFacts.h"
#include "Meta/CMetaManager.h"
#include "Meta/FloatBounds.h"
#include "Meta/TitleText.h"
#include "Threads/ThreadInfo.h"

CPlayList::CPlayList(CSongDatabase& database, SourceType type, const SuperString& name, PlaylistID id)
    : i_database(database),
      i_playlistID(id),
      i_sourceType(type),
      i_name(NormalizedTitle(name.Empty() ? std::string_view(GetSourceName(type)) : std::string_view(name))),
      i_list(std::make_shared<CMutex_PLIVec>(
          this, type == kSourceDB_LIBRARY ? CMutex_PLIVec::Indexed::kNo : CMutex_PLIVec::Indexed::kYes)),
      i_sortSpec{{DefaultSortKey(type)}} {}

CPlayList::~CPlayList() { i_list->Clear(); }

bool CPlayList::IsModifyable() const {
    return ::IsModifyable(i_sourceType) || (Is_CD_PlayList(i_sourceType) && i_virtualDiscB && !i_importingB);
}

OSErr CPlayList::Rename(const SuperString& name) {
    const SuperString title(NormalizedTitle(name));
    if (title.Empty()) return paramErr;
    if (title == i_name) return noErr;
    if (i_sourceType == kSourceDB_PLAYLIST || i_sourceType == kSourceDB_VENUE) {
        if (const OSErr err = i_database.Host().RenameListFile(*this, title); Failed(err)) {
            const std::string why = FaultText(err, FaultOf::kFile, i_name.UTF8());
            Log("Error renaming <" + i_name.UTF8() + "> in the file system! (" + why + ")");
            ShowAlert(Localize("Error renaming <%1> in the file system! (%2)", {i_name.UTF8(), why}), "");
            return err;
        }
    }
    i_name = title;
    Touch("playlist renamed");
    i_database.Tell([&](CListWatcher& watcher) { watcher.ListRenamed(i_playlistID); });
    return noErr;
}

void CPlayList::Touch(std::string_view reason) {
    ++i_revisionL;
    i_database.SetDirty(true, reason);
}

void CPlayList::SetColumns(CCFDictionary columns) {
    if (columns == i_columns) return;
    i_columns = std::move(columns);
    Touch("columns");
}

// ---- Rows ----

PLItemID CPlayList::AddItem(PLNewItem item, RowIndex where) {
    std::vector<PLNewItem> items;
    items.push_back(std::move(item));
    return AddItemVec(std::move(items), where).front();
}

std::vector<PLItemID> CPlayList::AddItemVec(std::vector<PLNewItem> items, RowIndex where) {
    (void)Assert(IsMainThread());
    if (i_sourceType == kSourceDB_VENUE)
        for (const PLNewItem& item : items)
            (void)AssertWords(item.target.type == SDB_kPLItem_SINGER, "pliP0->i_itemType == SDB_kPLItem_SINGER");
    if (IsSingerList(i_sourceType)) return AddOnce(std::move(items), where);
    return AddRows(std::move(items), where);
}

std::vector<PLItemID> CPlayList::AddRows(std::vector<PLNewItem> items, RowIndex where) {
    std::vector<PLItemID> added = i_list->Add(std::move(items), where);
    if (added.empty()) return added;
    if (i_playlistID == kPlaylistID_Library) i_database.SongsEnteredLibrary(*this, added);
    PlaceInOrders(added);
    Touch("playlist items added");
    ItemChanged(ListMessage::kAdded, added);
    return added;
}

std::vector<PLItemID> CPlayList::AddOnce(std::vector<PLNewItem> items, RowIndex where) {
    std::unordered_map<std::int32_t, PLItemID> rowOfSong;   // of those asked for
    std::vector<PLTarget> asked;
    std::vector<PLNewItem> fresh;
    std::vector<std::size_t> places;   // of the fresh ones among those asked for
    for (PLNewItem& item : items) {
        asked.push_back(item.target);
        if (item.target.type == SDB_kPLItem_SONG) {
            const auto [it, newB] = rowOfSong.try_emplace(item.target.idL, SDB_kNoItem);
            if (newB) it->second = i_list->Find(item.target);
            if (!newB || it->second != SDB_kNoItem) continue;
        }
        places.push_back(asked.size() - 1);
        fresh.push_back(std::move(item));
    }
    const std::vector<PLItemID> added = AddRows(std::move(fresh), where);
    std::vector<PLItemID> answers(asked.size(), SDB_kNoItem);
    for (std::size_t n = 0; n < added.size(); ++n) {
        answers[places[n]] = added[n];
        if (asked[places[n]].type == SDB_kPLItem_SONG) rowOfSong[asked[places[n]].idL] = added[n];
    }
    for (std::size_t n = 0; n < asked.size(); ++n)
        if (answers[n] == SDB_kNoItem) answers[n] = rowOfSong[asked[n].idL];
    return answers;
}

OSErr CPlayList::RemoveItem(PLItemID item) { return RemoveItems(std::vector{item}); }
OSErr CPlayList::RemoveItems(const SDB_Selection& selection) {
    if (!AssertWords(selection.List() == this, "csiP->i_selP->i_plP == this")) return paramErr;
    return RemoveItems(selection.Items());
}

OSErr CPlayList::RemoveItems(std::vector<PLItemID> items) {
    (void)Assert(IsMainThread());
    std::ranges::sort(items);
    items.erase(std::unique(items.begin(), items.end()), items.end());
    if (i_playlistID == kPlaylistID_Library) i_database.SongsLeaveLibrary(*this, items);
    NoteTouched(items);
    i_database.Tell([&](CListWatcher& watcher) { watcher.ItemsLeave(i_playlistID, items); });
    const std::size_t goneL = i_list->Remove(items, i_name.UTF8());
    if (goneL == 0) return items.empty() ? noErr : fnfErr;
    Touch("playlist items removed");
    ItemChanged(ListMessage::kRemoved, items);
    return goneL == items.size() ? noErr : fnfErr;
}

RowIndex CPlayList::MoveItems(std::span<const PLItemID> items, RowIndex to) {
    const RowIndex row = i_list->Move(items, to);
    if (row == SDB_Index_NONE) return row;
    Touch("playlist items moved");
    ItemChanged(ListMessage::kMoved, items);
    return row;
}

CPlayListItem* CPlayList::GetIndPLItem(PLItemID item) const {
    if (!AssertWords(Number(item) != 0, "indexL != 0")) return nullptr;
    if (!AssertWords(Number(item) != SDB_kUninitializedID, "pli_id != SDB_kUninitializedID")) return nullptr;
    if (!AssertWords(item != SDB_kNoItem, "indexL != (size_t)SDB_Index_END")) return nullptr;
    return i_list->Item(item);
}

CMetaValue CPlayList::ValueOf(PLItemID item, MetaKey key) const {
    const auto row = i_list->Get(item);
    return row ? Values().Value(*row, key) : CMetaValue();
}

bool CPlayList::SetRowValue(PLItemID item, MetaKey key, CMetaValue value) {
    if (!AssertWords(CMeta_PLItem::IsRowKey(key), "IsRowKey(key)")) return false;
    if (value.Type() == ValType::ValType_INTEGER)
        value = CMetaValue(MetaManager().GetTraits(key).Usable(value.Integer()));
    if (value.Type() == ValType::ValType_FLOAT && !BoundsOf(key).Holds(value.Float())) return false;   // as a song does
    CMeta_PLItem* const metaP = i_list->MakeMeta(item);
    if (metaP == nullptr || !metaP->SetValue(key, std::move(value))) return false;
    Touch("playlist item changed");
    ItemsChanged(std::span(&item, 1), std::span(&key, 1));
    return true;
}

void CPlayList::ItemChanged(ListMessage message, std::span<const PLItemID> items) {
    if (message == ListMessage::kAdded || message == ListMessage::kRemoved) i_durationStaleB = true;
    i_database.Tell([&](CListWatcher& watcher) { watcher.ItemsChanged(i_playlistID, message, items); });
}

CRowValues CPlayList::Values() const {
    return {i_list, i_database.Songs(), i_database.SingerValues(), i_playlistID, TunesRows()};
}

bool CPlayList::TunesRows() const { return i_playlistID != kPlaylistID_Library && i_database.Settings()->tuneRowsB; }

bool CPlayList::KeepsInRow(MetaKey key) const {
    if (CMeta_PLItem::IsTuningKey(key)) return TunesRows();
    return CMeta_PLItem::IsRowKey(key) && i_playlistID != kPlaylistID_Library;
}

// ---- What the songs last together ----

std::uint64_t CPlayList::Duration300() {
    (void)Assert(IsMainThread());
    if (!i_durationStaleB || i_summingB) return i_duration300;
    auto taskP = std::make_unique<CT_SumDurations>(i_list, i_database.Songs(), i_playlistID, i_database.Self());
    i_summingB = CT_Preemptive::Start(std::move(taskP)) != 0;
    if (i_summingB) i_durationStaleB = false;   // what changes from now on makes it stale again
    return i_duration300;
}

void CPlayList::CalculateDuration() {
    i_duration300 = CT_SumDurations::Run(*i_list, *i_database.Songs());
    i_durationStaleB = false;
}

void CPlayList::SumCompletion(std::uint64_t sum300, OSErr err) {
    i_summingB = false;
    i_durationStaleB = i_durationStaleB || Failed(err);
    if (Failed(err)) return;   // the program ends: nobody shall ask again
    i_duration300 = sum300;
    i_database.Tell([&](CListWatcher& watcher) { watcher.DurationChanged(i_playlistID); });
}

void CPlayList::DurationIsStale() {
    i_durationStaleB = true;
    i_database.Tell([&](CListWatcher& watcher) { watcher.DurationChanged(i_playlistID); });
}

std::string CPlayList::GetSummary() const {
    const std::vector<PLRow> rows = i_list->RowsBefore(i_list->NextStamp());
    const CRowValues values = Values();
    double durationT = 0;
    std::uint64_t bytesL = 0;
    for (const CMetaValue& value : values.Column(rows, "drtn"_key)) durationT += std::max(value.Integer(), 0) / 300.0;
    for (const CMetaValue& value : values.Column(rows, "SIZE"_key)) bytesL += SizeOfStored(value.Integer());
    const char* wordZ = i_sourceType == kSourceDB_VENUE          ? "Singers"
                        : i_sourceType == kSourceDB_MUSIC_STORES ? "Music Stores"
                                                                 : "Songs";
    const std::string duration = durationT > 0 ? DurationText(durationT).UTF8() : "";
    const std::string size = bytesL > 0 ? SizeText(bytesL).UTF8() : "";
    char line[256];
    std::snprintf(line, sizeof line, "%lu %s%s%s%s%s", static_cast<unsigned long>(rows.size()), wordZ,
                  duration.empty() ? "" : ", ", duration.c_str(), size.empty() ? "" : ", ", size.c_str());
    Log("--- summary START");
    LogF("%s: %s", i_name.CString(), line);
    Log("--- summary END");
    return line;
}

int CompareSources(const CPlayList& a, const CPlayList& b) {
    const std::size_t mine = SourcePlace(a.Type()), theirs = SourcePlace(b.Type());
    if (mine != theirs) return mine < theirs ? -1 : 1;
    return std::clamp(a.Name().CollateNoCase(b.Name()), -1, 1);
}
