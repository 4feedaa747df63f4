#pragma once
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "Library/CPlayListItem.h"
#include "Library/CTargetIndex.h"
#include "Library/SDB_Selection.h"
#include "Threads/CMutex.h"

/** The key of the order that the user gave a list. */
inline constexpr MetaKey kKey_UserOrder = "stIx"_key;

/** A copy of a row, for those who have no business with the row itself. */
struct PLRow {
    PLItemID id{SDB_kOrphanID};
    PLTarget target;
    RowIndex row = SDB_Index_NONE;
    std::int32_t sourceL = SDB_kUninitializedID;
    std::uint32_t stampL = 0;
};

/** The rows of one list, and its orders. A row's id is its slot; slot 0 is never used. A slot that was left is a hole,
    and the next row takes the lowest one; a list that emptied starts again at 1.
    Threads  changed on the main thread alone, read on any: each operation takes the lock for its own time. A pointer
             to a row is for the main thread, and good until that row goes.
    Owner    CPlayList, shared with a sort that runs: it may outlive its list by the length of that sort. */
class CMutex_PLIVec final : public CMutex {
public:
    /** Whether the rows of a song are looked up, or looked for: the library's list needs no index, as its songs know
        their rows. */
    enum class Indexed : bool { kNo, kYes };
    CMutex_PLIVec(CPlayList* listP, Indexed indexed);

    // ---- Changes: main thread. ----
    /** Adds all in this order, in front of row `where` if that is one of the list's, else at the end. Their ids; the
        wanted slot of an item is kept when it is free, which is for the load. */
    std::vector<PLItemID> Add(std::vector<PLNewItem> items, RowIndex where = SDB_Index_END);
    /** True for one that was there; others are asserted in the words of the log and change nothing. */
    bool Remove(PLItemID id, std::string_view listName);
    /** Removes all of these in one pass of each order; how many were there. */
    std::size_t Remove(std::span<const PLItemID> ids, std::string_view listName);
    void Clear();
    /** Puts a row in front of row `to` (the list's size + 1: at the end) of the user order; its new row. */
    RowIndex Move(PLItemID id, RowIndex to);
    /** The same for many, which keep the order among them; the row of the first. */
    RowIndex Move(std::span<const PLItemID> ids, RowIndex to);
    /** Makes `ids`, which must be all rows, the user order. */
    bool SetUserOrder(std::vector<PLItemID> ids);
    /** Makes values of its own for a row; null for a hole. */
    [[nodiscard]] CMeta_PLItem* MakeMeta(PLItemID id);

    // ---- Reading: any thread. ----
    [[nodiscard]] std::size_t Count() const;
    /** Slots that are left. */
    [[nodiscard]] std::size_t Holes() const;
    /** The slot that the next row gets. */
    [[nodiscard]] PLItemID NextSlot() const;
    /** Nothing for a hole, or for what is no slot. */
    [[nodiscard]] std::optional<PLRow> Get(PLItemID id) const;
    /** The rows of these that are there, a block under one lock. */
    [[nodiscard]] std::vector<PLRow> RowsOf(std::span<const PLItemID> ids) const;
    /** SDB_Index_NONE for what is not in the list. */
    [[nodiscard]] RowIndex RowOf(PLItemID id) const;
    /** By the user order, from 1. */
    [[nodiscard]] std::optional<PLRow> AtRow(RowIndex row) const;
    /** Rows of the user order from row `first` on, at most so many: a page for a browser or a phone. */
    [[nodiscard]] std::vector<PLRow> Page(RowIndex first, std::size_t countL) const;
    /** The first row of this song or singer by slot; SDB_kNoItem without. */
    [[nodiscard]] PLItemID Find(PLTarget target) const;
    /** All rows of these songs, which are sorted, by slot. */
    [[nodiscard]] std::vector<PLItemID> RowsOfSongs(std::span<const SongID> songs) const;
    /** All rows that point to one of these targets, by slot; `wanted(target)` runs under the lock. */
    template <class Wanted>
    [[nodiscard]] std::vector<PLItemID> FindAll(Wanted&& wanted) const {
        const Scope guard(*this);
        std::vector<PLItemID> found;
        for (std::size_t n = 1; n < i_pliVec.size(); ++n)
            if (!i_pliVec[n].IsHole() && wanted(i_pliVec[n].Target())) found.push_back(i_pliVec[n].ID());
        return found;
    }
    [[nodiscard]] std::vector<PLItemID> UserOrder() const;
    /** The rows in the user's order, as they stood at one moment, copied a block at a time: whoever wants the list
        meanwhile waits for one block. For workers, which have the time to begin again when the list changes. */
    [[nodiscard]] std::vector<PLRow> RowsInBlocks() const;
    /** The stamp that the next row gets. */
    [[nodiscard]] std::uint32_t NextStamp() const;
    /** The rows of earlier stamps, by slot, copied a block at a time: what leaves during the copy may be in it or not.
        For workers; the rows' places are those of the last numbering (UpdateIndices). */
    [[nodiscard]] std::vector<PLRow> RowsBefore(std::uint32_t stampL) const;
    /** The row's own value; none when the row, with this stamp, is gone or has none. */
    [[nodiscard]] CMetaValue RowValue(PLItemID id, std::uint32_t stampL, MetaKey key) const;
    /** The row's own values and other keys, as a property list has them; empty for a row without. */
    [[nodiscard]] CCFDictionary RowDictionary(PLItemID id, std::uint32_t stampL) const;
    /** True while any row has values of its own. */
    [[nodiscard]] bool HasRowValues() const;

    // ---- Orders by keys: filled on the main thread, read on any. ----
    /** Empty when there is no order by these keys. */
    [[nodiscard]] std::optional<std::vector<PLItemID>> Order(const SortSpec& spec) const;
    [[nodiscard]] bool HasOrder(const SortSpec& spec) const;
    void SetOrder(const SortSpec& spec, std::vector<PLItemID> ids);
    void DropOrder(MetaKey mainKey);
    /** The order itself; null without. Main thread. */
    [[nodiscard]] const SDB_Selection* FindOrder(const SortSpec& spec) const;
    /** Puts each row in front of the one that is at this place now; the places ascend. Main thread. */
    void InsertIntoOrder(MetaKey mainKey, std::span<const std::pair<std::size_t, PLItemID>> places);
    void AppendToOrder(MetaKey mainKey, std::span<const PLItemID> ids);
    void EraseFromOrder(MetaKey mainKey, std::span<const PLItemID> gone);
    /** The specs of all orders but the user's. */
    [[nodiscard]] std::vector<SortSpec> Orders() const;
    /** Writes the rows of the user order into the items; answers whether any was stale. */
    bool UpdateIndices() const;

    /** The row itself; null for a hole. Main thread. */
    [[nodiscard]] CPlayListItem* Item(PLItemID id);

private:
    [[nodiscard]] static std::size_t Slot(PLItemID id) noexcept { return static_cast<std::size_t>(Number(id)); }
    [[nodiscard]] bool IsRow(PLItemID id) const noexcept;   // lock held, as all of these
    std::size_t TakeSlot(PLItemID wanted);
    void Leave_(CPlayListItem& item);
    void ResetIfEmpty();
    bool CheckRemoval(PLItemID id, std::string_view listName) const;
    /** Rows or their order changed, from this place of the user order on. */
    void Stale(std::size_t place) noexcept {
        i_staleL = std::min(i_staleL, place);
        ++i_changesL;
    }
    /** Adds the next rows of the user order, `mostL` at most; true when all are there. Without the lock held. */
    bool CopyBlock(std::vector<PLRow>& rows, std::uint32_t& changesL, std::size_t mostL) const;
    void Renumber() const;
    [[nodiscard]] std::vector<PLItemID>& User() { return i_userP->Items(); }
    [[nodiscard]] const std::vector<PLItemID>& User() const { return i_userP->Items(); }
    [[nodiscard]] PLRow RowCopy(const CPlayListItem& item) const;

    CPlayList* const i_plP;
    const Indexed i_indexed;
    // All of it under the lock; the items do not move as the deque grows.
    mutable std::deque<CPlayListItem> i_pliVec;
    std::vector<std::int32_t> i_holes;   // a heap, the lowest in front
    CTargetIndex i_slotsOf;              // by what the rows point to; empty without an index
    std::size_t i_countL = 0;
    std::size_t i_metasL = 0;   // rows with values of their own
    std::uint32_t i_nextStampL = 1;
    std::uint32_t i_changesL = 1;   // grows with each change of the rows or of the user's order
    mutable std::size_t i_staleL =
        SIZE_MAX;   // places of the user order from here on are not yet written into the rows
    std::map<MetaKey, SDB_Selection> i_orders;   // by main key; "stIx" is always there
    SDB_Selection* i_userP;
};
