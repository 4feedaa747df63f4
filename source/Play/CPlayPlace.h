#pragma once
#include <span>

#include "Library/CPlayList.h"

class CSongDatabase;

/** Where the show stands: the row that plays, in its list. The id of a row that has left is soon another row's, so it
    is forgotten at once; the place is then behind the row that stood before it. A copy is a place of its own.
    Threads  main.
    Owner    CPlayControl, and the song that it may go back to. */
class CPlayPlace {
public:
    explicit CPlayPlace(CSongDatabase& database) : i_databaseP(&database) {}
    void Set(PlaylistID list, PLItemID item);
    /** Rows are about to leave their list; sorted by id. */
    void RowsLeave(PlaylistID list, std::span<const PLItemID> items);

    [[nodiscard]] PlaylistID ListID() const noexcept { return i_listID; }
    /** SDB_kNoItem before the first play, and once the row has left. */
    [[nodiscard]] PLItemID Item() const noexcept { return i_item; }
    /** Null before the first play, and once the list was deleted. */
    [[nodiscard]] CPlayList* List() const;
    /** The row to play after this one; SDB_kNoItem when there is none. */
    [[nodiscard]] PLItemID Next(CPlayList::AtEnd end) const { return After(CPlayList::Step::kForward, end); }
    [[nodiscard]] PLItemID Previous() const { return After(CPlayList::Step::kBackward, CPlayList::AtEnd::kStop); }
    /** Nothing stands behind it in the order that is shown. */
    [[nodiscard]] bool IsLast() const;
    [[nodiscard]] bool IsFirst() const;

private:
    [[nodiscard]] PLItemID After(CPlayList::Step step, CPlayList::AtEnd end) const;

    CSongDatabase* i_databaseP;   // outlives it
    PlaylistID i_listID{SDB_kUninitializedID};
    PLItemID i_item = SDB_kNoItem;
    bool i_leftB = false;              // the row has left
    PLItemID i_before = SDB_kNoItem;   // then: the one before its place, if there is one
};
