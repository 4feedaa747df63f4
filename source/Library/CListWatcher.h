#pragma once
#include <span>
#include <string_view>

#include "Library/LibraryIDs.h"
#include "Library/SDB_Selection.h"

enum class ListMessage : std::uint8_t { kAdded, kRemoved, kChanged, kMoved };

/** Who shows or mirrors the lists: the browser, the store. A block of rows comes as one message.
    Threads  main, with no lock held. A watcher may read; it must not change the list from within.
    Owner    whoever made it; it takes itself out of the database before it goes. */
class CListWatcher {
public:
    virtual ~CListWatcher() = default;
    virtual void ListAdded(PlaylistID /*list*/) {}
    /** Just before it goes. */
    virtual void ListRemoved(PlaylistID /*list*/) {}
    virtual void ListRenamed(PlaylistID /*list*/) {}
    /** Just before they go; sorted. Their ids are soon other rows'. */
    virtual void ItemsLeave(PlaylistID /*list*/, std::span<const PLItemID> /*items*/) {}
    /** Removed rows are gone already. */
    virtual void ItemsChanged(PlaylistID /*list*/, ListMessage /*message*/, std::span<const PLItemID> /*items*/) {}
    /** The shown order is another one; `startedB`: it is being sorted, the old order stands meanwhile. */
    virtual void SortChanged(PlaylistID /*list*/, const SortSpec& /*spec*/, bool /*startedB*/) {}
    /** What the list's songs last together is, or may be, another time now: ask it. */
    virtual void DurationChanged(PlaylistID /*list*/) {}
    virtual void SongsChanged(std::span<const SongID> /*songs*/, std::span<const MetaKey> /*keys*/) {}
};
