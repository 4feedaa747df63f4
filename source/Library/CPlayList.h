#pragma once
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "Core/SuperString.h"
#include "Library/CListWatcher.h"
#include "Library/CMutex_PLIVec.h"
#include "Library/CRowValues.h"
#include "Library/SourceType.h"

class CSongDatabase;
struct SortJob;

/** One list of the library: songs, or the singers of a venue. Its rows stand in slots (CMutex_PLIVec), in the user's
    order, and in the order of any keys by which it was sorted.
    Threads  main; from elsewhere by the operations of CSongDatabase, which take ids. Items() may be read on any thread
             that keeps hold of it.
    Owner    CSongDatabase.
    Errors   a row that is not there is a fault of the caller, asserted, and nothing changes. */
class CPlayList {
public:
    /** By CSongDatabase::AddPlaylist. An empty name gives the kind's title. */
    CPlayList(CSongDatabase& database, SourceType type, const SuperString& name, PlaylistID id);
    ~CPlayList();
    CPlayList(const CPlayList&) = delete;
    CPlayList& operator=(const CPlayList&) = delete;

    [[nodiscard]] PlaylistID ID() const noexcept { return i_playlistID; }
    [[nodiscard]] SourceType Type() const noexcept { return i_sourceType; }
    [[nodiscard]] const SuperString& Name() const noexcept { return i_name; }
    /** Shown to those alone who look for faults: the lists of warnings. */
    [[nodiscard]] bool IsHidden() const { return i_name.UTF8().starts_with("* "); }
    [[nodiscard]] bool IsModifyable() const;
    /** Titles are normalised. A user playlist or a venue renames its file first; when that fails, the name stays. */
    OSErr Rename(const SuperString& name);
    [[nodiscard]] SingerID Singer() const noexcept { return i_singerID; }
    void SetSinger(SingerID singer) noexcept { i_singerID = singer; }
    /** What a disc's list asks its disc: made up by us, and not being imported. */
    void SetDisc(bool virtualB, bool importingB) noexcept { i_virtualDiscB = virtualB, i_importingB = importingB; }

    /** The browser's columns, as the list's file keeps them. */
    [[nodiscard]] const CCFDictionary& Columns() const noexcept { return i_columns; }
    void SetColumns(CCFDictionary columns);
    /** What its file has and this program has no key for: written again as it is. Set at the load. */
    [[nodiscard]] const CCFDictionary& OtherKeys() const noexcept { return i_otherKeys; }
    void SetOtherKeys(CCFDictionary keys) { i_otherKeys = std::move(keys); }
    /** Grows with each change that the list's file must hold. */
    [[nodiscard]] std::uint32_t Revision() const noexcept { return i_revisionL; }

    // ---- Rows ----
    [[nodiscard]] const std::shared_ptr<CMutex_PLIVec>& Items() const noexcept { return i_list; }
    [[nodiscard]] std::size_t Count() const { return i_list->Count(); }
    /** The id of the row. A singer's list takes a song once: it answers the row that is there. `where` is a row from
        1; others, 0 too, are the end. */
    PLItemID AddItem(PLNewItem item, RowIndex where = SDB_Index_END);
    /** The same for a block, told to watchers once. */
    std::vector<PLItemID> AddItemVec(std::vector<PLNewItem> items, RowIndex where = SDB_Index_END);
    /** fnfErr when it is not in the list. */
    OSErr RemoveItem(PLItemID item);
    OSErr RemoveItems(const SDB_Selection& selection);
    OSErr RemoveItems(std::vector<PLItemID> items);
    /** Puts the rows in front of row `to` of the user order; the new row of the first. */
    RowIndex MoveItems(std::span<const PLItemID> items, RowIndex to);
    /** Null for a hole or an id beyond; 0 and SDB_Index_END are asserted. */
    [[nodiscard]] CPlayListItem* GetIndPLItem(PLItemID item) const;
    /** Its row in the user order; SDB_Index_NONE without. */
    [[nodiscard]] RowIndex GetPLI_Index(PLItemID item) const { return i_list->RowOf(item); }
    /** By slot; `proc` may remove the row it is given. */
    template <class Proc>
    void ForEachPLItem(Proc&& proc) {
        for (const PLItemID id : i_list->FindAll([](const PLTarget&) { return true; }))
            if (CPlayListItem* itemP = GetIndPLItem(id)) proc(*itemP);
    }
    /** Writes the row numbers into the rows now, rather than when somebody asks. */
    void UpdateIndices() { (void)i_list->UpdateIndices(); }
    [[nodiscard]] CMetaValue ValueOf(PLItemID item, MetaKey key) const;
    /** What the rows show, for any thread. */
    [[nodiscard]] CRowValues Values() const;
    /** A value of this key that is set in this list is the row's own; else it is its song's, in all lists. */
    [[nodiscard]] bool KeepsInRow(MetaKey key) const;
    /** A value of the row's own, integers made legal; true when it changed. For keys that KeepsInRow. */
    bool SetRowValue(PLItemID item, MetaKey key, CMetaValue value);
    /** What its songs last together, in 300ths, as it was summed up last. When rows or durations have changed since,
        this starts a task that does it anew, and watchers hear of its end (DurationChanged). */
    [[nodiscard]] std::uint64_t Duration300();
    /** Sums them up now: for the load. */
    void CalculateDuration();
    /** "12 Songs, 41 Minutes, 102 MB". Logs the sums. */
    [[nodiscard]] std::string GetSummary() const;

    // ---- Orders ----
    [[nodiscard]] const SortSpec& Spec() const noexcept { return i_sortSpec; }
    enum class SortWait : bool { kNo, kYes };
    enum class SortTold : bool { kTold, kSilent };
    /** Sorts by these keys; nothing when the first key and its direction are those of now. Without kYes a list of two
        and more is sorted by a task: what is shown stays as it is until then, and a further call waits its turn.
        The user's order has one direction, and no further keys. */
    void SetSort(SortSpec spec, SortWait wait = SortWait::kNo, SortTold told = SortTold::kTold);
    [[nodiscard]] bool IsSorting() const noexcept { return i_sortingB; }
    /** The sort as a file has it: a key that may not be kept falls back to the order of the slots. */
    void SetSavedSort(MetaKey key, bool ascendingB);
    /** The rows in the shown order, which is made if there is none. */
    [[nodiscard]] const std::vector<PLItemID>& GetSortedList();
    /** From 1; null beyond. */
    [[nodiscard]] CPlayListItem* GetIndSortedItem(RowIndex row);
    [[nodiscard]] SDB_Selection GetAsSelection_FromViewer();
    /** The shown order becomes the user's. */
    void MakeUserOrder();

    // ---- What comes next ----
    enum class Step : bool { kForward, kBackward };
    /** The row to play after `item` (SDB_kNoItem: after the selected one) in the shown order, round its end; rows that
        cannot be played are passed over. SDB_kNoItem when there is none. */
    [[nodiscard]] PLItemID GetNextID(PLItemID item, Step step);
    void SetSelectedItem(PLItemID item) noexcept;
    [[nodiscard]] PLItemID SelectedItem() const noexcept { return i_selectedItem; }

    /** Values of these rows changed: they take their new places in the orders by these keys. */
    void ItemsChanged(std::span<const PLItemID> items, std::span<const MetaKey> keys);
    /** A sort is over; by its task. */
    void SortCompletion(SortJob job, OSErr err);
    /** Durations were summed up; by their task. */
    void SumCompletion(std::uint64_t sum300, OSErr err);

private:
    /** The list's file must be written again. */
    void Touch(std::string_view reason);
    void ItemChanged(ListMessage message, std::span<const PLItemID> items);
    void DurationIsStale();
    [[nodiscard]] bool TunesRows() const;
    [[nodiscard]] SortJob MakeJob(SortSpec spec) const;
    void StartSort(SortSpec spec);
    /** After a block: at once, or when the present task is done. */
    void SortAgain(const SortSpec& spec);
    void SortHere(SortSpec spec);
    void Shown(SortSpec spec, SortTold told);
    /** Puts new rows into all orders; a big block waits at the end of the shown one for a sort. */
    void PlaceInOrders(const std::vector<PLItemID>& items);
    /** Finds the places of these rows, which are not in it, in the order by these keys. */
    void Insert(const SortSpec& spec, std::vector<PLRow> rows);
    /** These rows came, left or changed: what a task sorts is not right for them. */
    void NoteTouched(std::span<const PLItemID> items);
    std::vector<PLItemID> AddRows(std::vector<PLNewItem> items, RowIndex where);
    /** For the lists of singers: a song that is there, or comes twice, gets the row of the first. */
    std::vector<PLItemID> AddOnce(std::vector<PLNewItem> items, RowIndex where);
    void SortTroubles(const SortSpec& spec) const;

    CSongDatabase& i_database;
    const PlaylistID i_playlistID;
    const SourceType i_sourceType;
    SuperString i_name;
    SingerID i_singerID{SDB_kUninitializedID};
    bool i_virtualDiscB = false, i_importingB = false;
    CCFDictionary i_columns, i_otherKeys;
    std::uint32_t i_revisionL = 0;
    const std::shared_ptr<CMutex_PLIVec> i_list;
    SortSpec i_sortSpec;
    bool i_sortingB = false;                 // a task sorts, or waits for its completion
    bool i_showResultB = true;               // of the running task; not when another order was made meanwhile
    bool i_staleShownB = false;              // the shown order was left unsorted while the task sorts by other keys
    std::optional<SortSpec> i_waitingSpec;   // asked for meanwhile
    SortTold i_waitingTold = SortTold::kTold;
    std::vector<PLItemID> i_touched;   // rows that came, left or changed while a task sorts; some more than once
    PLItemID i_selectedItem = SDB_kNoItem;
    std::uint64_t i_duration300 = 0;
    bool i_durationStaleB = false;   // rows or durations have changed since
    bool i_summingB = false;         // a task sums up, or waits for its completion
};

/** The order of two lists among the sources: by kind. Singer folders and stores among themselves are ordered by those
    who know the singers and the catalogues. */
[[nodiscard]] int CompareSources(const CPlayList& a, const CPlayList& b);
