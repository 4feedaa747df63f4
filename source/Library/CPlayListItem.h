#pragma once
#include <memory>

#include "Library/LibraryIDs.h"
#include "Meta/CMeta_PLItem.h"

class CPlayList;

enum class PLItemType : std::int16_t { kNone = 0, SDB_kPLItem_SONG = 1, SDB_kPLItem_SINGER = 2 };
using enum PLItemType;

/** What a row points to: a song, or a singer. */
struct PLTarget {
    PLItemType type = PLItemType::kNone;
    std::int32_t idL = SDB_kOrphanID;

    PLTarget() = default;
    PLTarget(SongID song) : type(SDB_kPLItem_SONG), idL(Number(song)) {}   // NOLINT(google-explicit-constructor)
    PLTarget(SingerID singer)
        : type(SDB_kPLItem_SINGER), idL(Number(singer)) {}   // NOLINT(google-explicit-constructor)
    friend bool operator==(const PLTarget&, const PLTarget&) = default;
};

/** A row as it is asked for. */
struct PLNewItem {
    PLTarget target;
    std::int32_t sourceL = SDB_kUninitializedID;   // of the song, for rows of stores
    std::unique_ptr<CMeta_PLItem> metaP = {};      // null: no values of its own
    PLItemID wanted{SDB_kOrphanID};                // at the load only: the slot it had
};

/** One row of a list, or a hole that a row left. A list holds a million of these side by side; they do not move.
    Threads  under the lock of their list; main thread without it, as it alone changes them.
    Owner    CMutex_PLIVec. */
class CPlayListItem {
public:
    [[nodiscard]] bool IsHole() const noexcept { return i_itemType == PLItemType::kNone; }
    /** Its id and its slot: "piIx". */
    [[nodiscard]] PLItemID ID() const noexcept { return PLItemID{i_indexL}; }
    [[nodiscard]] PLItemType Type() const noexcept { return i_itemType; }
    [[nodiscard]] PLTarget Target() const noexcept;
    /** -1 when it points to no song: it cannot be played. */
    [[nodiscard]] SongID GetSongID() const noexcept;
    [[nodiscard]] SingerID GetSingerID() const noexcept;
    [[nodiscard]] CPlayList& List() const noexcept { return *i_myPlP; }
    /** Null for most rows. */
    [[nodiscard]] CMeta_PLItem* Meta() const noexcept { return i_metaP.get(); }
    /** Grows with every row that enters the list: tells a row from one that had its slot before. */
    [[nodiscard]] std::uint32_t Stamp() const noexcept { return i_stampL; }

private:
    friend class CMutex_PLIVec;
    friend class CPlayList;

    CPlayList* i_myPlP = nullptr;
    std::unique_ptr<CMeta_PLItem> i_metaP;
    std::int32_t i_indexL = SDB_kUninitializedID;
    RowIndex i_rowL = SDB_Index_NONE;   // "stIx"; exact above the list's first stale row
    std::int32_t i_targetL = SDB_kOrphanID;
    std::int32_t i_sourceL = SDB_kUninitializedID;
    std::uint32_t i_stampL = 0;
    PLItemType i_itemType = PLItemType::kNone;
};
static_assert(sizeof(CPlayListItem) <= 40, "a million of them lie in memory");
