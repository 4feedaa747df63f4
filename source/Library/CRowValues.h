#pragma once
#include <memory>
#include <span>
#include <vector>

#include "Library/CMutex_ItemMap.h"
#include "Library/CMutex_PLIVec.h"
#include "Library/CSong.h"

using CMutex_SongMap = CMutex_ItemMap<SongID, CSong>;

/** The values of singers, for rows that point to one. Any thread. */
class CSingerValues {
public:
    virtual ~CSingerValues() = default;
    [[nodiscard]] virtual CMetaValue Value(SingerID singer, MetaKey key) const = 0;
};

/** What the rows of a list show: the row's own value, where it may have one, else that of its song or singer. It holds what it reads, so a
    worker may go on with it though the list, or the database, has gone: it then finds nothing any more.
    Threads  any. Of its locks one is held at a time, for a block of rows at most. */
class CRowValues {
public:
    CRowValues(std::shared_ptr<const CMutex_PLIVec> listRef, std::shared_ptr<const CMutex_SongMap> songsRef,
               std::shared_ptr<const CSingerValues> singersRef, PlaylistID list, bool tunesB)
        : i_listRef(std::move(listRef)),
          i_songsRef(std::move(songsRef)),
          i_singersRef(std::move(singersRef)),
          i_list(list),
          i_tunesB(tunesB) {}

    [[nodiscard]] CMetaValue Value(const PLRow& row, MetaKey key) const;
    [[nodiscard]] std::vector<CMetaValue> Column(std::span<const PLRow> rows, MetaKey key) const;
    /** By the keys of `spec`, then by the slot: never 0 for two rows. */
    [[nodiscard]] int Compare(const PLRow& a, const PLRow& b, const SortSpec& spec) const;
    /** `rows`, which come by slot, in the order of Compare. */
    [[nodiscard]] std::vector<PLRow> Sorted(std::span<const PLRow> rows, const SortSpec& spec) const;

private:
    std::shared_ptr<const CMutex_PLIVec> i_listRef;
    std::shared_ptr<const CMutex_SongMap> i_songsRef;
    std::shared_ptr<const CSingerValues> i_singersRef;
    PlaylistID i_list;
    bool i_tunesB;   // its rows have pitch and tempo of their own
};
