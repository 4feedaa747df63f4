#pragma once
#include <memory>
#include <span>
#include <string_view>
#include <vector>

#include "Library/LibraryIDs.h"

/** What the show goes through, and where it stands there: asked what comes next. Asking changes nothing and stops nothing;
    the order moves when it is told that a row is played. The form of a list is CPlayPlace; CPlayHost::OrderOf chooses.
    Threads  main.
    Owner    CPlayControl; a copy, with the song that it may go back to. */
class CPlayOrder {
public:
    virtual ~CPlayOrder() = default;
    /** A place of its own from now on. */
    [[nodiscard]] virtual std::unique_ptr<CPlayOrder> Clone() const = 0;

    /** The list that is gone through. */
    [[nodiscard]] virtual PlaylistID ListID() const = 0;
    /** False before the first play, and once what is gone through was deleted. */
    [[nodiscard]] virtual bool IsThere() const = 0;
    /** The row that plays; SDB_kNoItem before the first play, and once that row has left: the place stays. */
    [[nodiscard]] virtual PLItemID Item() const = 0;
    /** The row to play after this one, round the end; SDB_kNoItem when there is none. */
    [[nodiscard]] virtual PLItemID Next() const = 0;
    [[nodiscard]] virtual PLItemID Previous() const = 0;
    /** Next and what follows it, so many at the most, and not round the end. */
    [[nodiscard]] virtual std::vector<PLItemID> Ahead(std::size_t mostL) const = 0;
    /** Nothing stands behind it. */
    [[nodiscard]] virtual bool IsLast() const = 0;
    /** The show ends behind the last row, whatever the preferences say. */
    [[nodiscard]] virtual bool StopsAtEnd() const { return false; }
    /** Within a song the way back leads to its start first. */
    [[nodiscard]] virtual bool RewindsFirst() const { return true; }
    /** Why nothing can be gone back to, for the room; empty: something can. */
    [[nodiscard]] virtual std::string_view WhyNotBack() const { return {}; }

    /** This row plays, or is passed over. */
    virtual void GoTo(PLItemID item) = 0;
    /** Rows are about to leave their list; sorted by id. */
    virtual void RowsLeave(PlaylistID list, std::span<const PLItemID> items) = 0;
};
