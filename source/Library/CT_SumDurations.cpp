#include "Library/CT_SumDurations.h"

#include <algorithm>
#include <span>

#include "Library/CPlayList.h"
#include "Library/CSongDatabase.h"
#include "Threads/CHandle.h"

namespace {
constexpr std::size_t kBlock = 512;   // songs under one lock
constexpr MetaKey kSum_Key = "drtn"_key;
}   // namespace

CT_SumDurations::CT_SumDurations(std::shared_ptr<const CMutex_PLIVec> listRef,
                                 std::shared_ptr<const CMutex_SongMap> songsRef, PlaylistID list,
                                 CHandle<CSongDatabase> databaseRef)
    : CT_Preemptive("sum durations"),
      i_listRef(std::move(listRef)),
      i_songsRef(std::move(songsRef)),
      i_list(list),
      i_databaseRef(std::move(databaseRef)) {}

std::uint64_t CT_SumDurations::Run(const CMutex_PLIVec& list, const CMutex_SongMap& songs) {
    std::uint64_t sum300 = 0;
    const std::vector<PLRow> rows = list.RowsInBlocks();
    for (std::span<const PLRow> left(rows); !left.empty();) {
        const auto block = left.first(std::min(kBlock, left.size()));
        left = left.subspan(block.size());
        songs.WithMany([&](const auto& find) {
            for (const PLRow& row : block)
                if (row.target.type == SDB_kPLItem_SONG)
                    if (const CSong* const songP = find(SongID{row.target.idL}))
                        sum300 += static_cast<std::uint32_t>(std::max(songP->Meta().Stored(kSum_Key).Integer(), 0));
        });
    }
    return sum300;
}

OSErr CT_SumDurations::Operate(OSErr err) {
    if (!Failed(err)) i_sum300 = Run(*i_listRef, *i_songsRef);
    return err;
}

OSErr CT_SumDurations::Completion(OSErr err) {
    auto* const databaseP = i_databaseRef.Get();
    if (databaseP == nullptr) return err;
    if (CPlayList* const listP = databaseP->GetPlayList(i_list)) listP->SumCompletion(i_sum300, err);
    return err;
}
