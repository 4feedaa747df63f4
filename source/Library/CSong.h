#pragma once
#include "Library/CMeta.h"
#include "Library/LibraryIDs.h"

class CSongDatabase;

/** All values of a song. A change of one that is not hidden is queued with the database. */
class CSongMeta final : public CMeta {
public:
    CSongMeta(CSongDatabase* databaseP, SongID id);
    ~CSongMeta() override { Retire(); }

protected:
    void OnChanged(MetaKey key, const CMetaValue& value) override;
    void CheckSetter(MetaKey key) const override;

private:
    CSongDatabase* const i_databaseP;
    const SongID i_id;
};

/** One song of the library: its id and its metadata.
    Threads  reading its meta on any; all else main.
    Owner    the map of CSongDatabase. */
class CSong {
public:
    /** `id` over 0. A database outlives its songs; without one nobody hears of changes. */
    CSong(CSongDatabase* databaseP, SongID id) : i_id(id), i_meta(databaseP, id) {}
    CSong(const CSong&) = delete;
    CSong& operator=(const CSong&) = delete;

    [[nodiscard]] SongID GetSongID() const noexcept { return i_id; }
    [[nodiscard]] CSongMeta& Meta() noexcept { return i_meta; }
    [[nodiscard]] SuperString Name() { return i_meta.GetString("name"_key); }
    /** Its row in the library's list; SDB_kNoItem when it is not there. Main thread. */
    [[nodiscard]] PLItemID LibraryItem() const noexcept { return i_pliP; }
    void SetLibraryItem(PLItemID item) noexcept { i_pliP = item; }

private:
    const SongID i_id;
    PLItemID i_pliP = SDB_kNoItem;
    CSongMeta i_meta;
};
