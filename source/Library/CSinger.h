#pragma once
#include <array>
#include <atomic>

#include "Library/CMutex_ItemMap.h"
#include "Library/CRowValues.h"
#include "Library/LibraryIDs.h"
#include "Library/SingerRecord.h"
#include "Library/SourceType.h"
#include "Meta/CMeta.h"

class CSongDatabase;

/** The three lists that every singer has, in the order in which he keeps their ids. */
enum class SingerList : std::uint8_t { kTonight, kFavorites, kHistory };
inline constexpr std::array kSingerLists = {SingerList::kTonight, SingerList::kFavorites, SingerList::kHistory};
[[nodiscard]] constexpr SourceType SourceTypeOf(SingerList list) noexcept {
    return static_cast<SourceType>(static_cast<std::int16_t>(kSourceDB_SINGER_PL_TONIGHT) +
                                   static_cast<std::int16_t>(list));
}

/** All values of a singer. Each change is counted, and marks the library dirty by the database's change queue. */
class CSingerMeta final : public CMeta {
public:
    CSingerMeta(CSongDatabase* databaseP, std::atomic<std::uint32_t>& revisionL)
        : CMeta(MetaLevel::kSinger), i_databaseP(databaseP), i_revisionL(revisionL) {}
    ~CSingerMeta() override { Retire(); }

protected:
    void OnChanged(MetaKey key, const CMetaValue& value) override;

private:
    CSongDatabase* const i_databaseP;
    std::atomic<std::uint32_t>& i_revisionL;
};

/** A person who sings at a venue: id, values, and the ids of his three lists.
    Threads  reading his meta on any; all else main.
    Owner    the map of CSongDatabase. */
class CSinger {
public:
    CSinger(CSongDatabase* databaseP, SingerID id, PlaylistID venue);
    CSinger(const CSinger&) = delete;
    CSinger& operator=(const CSinger&) = delete;

    [[nodiscard]] SingerID GetSingerID() const noexcept { return i_id; }
    [[nodiscard]] PlaylistID Venue() const noexcept { return i_venue; }
    [[nodiscard]] CSingerMeta& Meta() noexcept { return i_meta; }
    [[nodiscard]] SuperString Name();
    [[nodiscard]] PlaylistID List(SingerList which) const noexcept { return i_lists[static_cast<std::size_t>(which)]; }
    void SetList(SingerList which, PlaylistID list);
    [[nodiscard]] bool Owns(PlaylistID list) const;

    /** What his file says of each song, by the text of its id. */
    [[nodiscard]] const CCFDictionary& SongInfo() const noexcept { return i_record.songInfo; }
    void SetSongInfo(CCFDictionary info);

    /** As his file has him. A value that this program has no key for is kept, and comes out again by Record. */
    void Load(const SingerRecord& record);
    [[nodiscard]] SingerRecord Record() const;
    /** Grows with each change that his file must hold. Any thread. */
    [[nodiscard]] std::uint32_t Revision() const noexcept { return i_revisionL.load(std::memory_order_relaxed); }

private:
    void Touch();

    const SingerID i_id;
    const PlaylistID i_venue;
    CSongDatabase* const i_databaseP;
    std::atomic<std::uint32_t> i_revisionL{0};
    CSingerMeta i_meta;
    std::array<PlaylistID, kSingerLists.size()> i_lists;
    SingerRecord i_record;   // what no other field holds
};

using CMutex_SingerMap = CMutex_ItemMap<SingerID, CSinger>;

/** The values of a database's singers for the rows that point to them; finds none once the database has gone. */
class CSingerMapValues final : public CSingerValues {
public:
    explicit CSingerMapValues(std::shared_ptr<CMutex_SingerMap> singersRef) : i_singersRef(std::move(singersRef)) {}
    [[nodiscard]] CMetaValue Value(SingerID singer, MetaKey key) const override;

private:
    std::shared_ptr<CMutex_SingerMap> i_singersRef;
};
