#pragma once
#include <cstdint>
#include <memory>

#include "Library/CRowValues.h"
#include "Threads/CHandle.h"
#include "Threads/CT_Preemptive.h"

class CSongDatabase;

/** Sums up what the songs of a list last together, on a thread of its own, and tells the list if it is still there. A
    song that has two rows counts twice; a singer not at all. Nothing of the list is held meanwhile. */
class CT_SumDurations final : public CT_Preemptive {
public:
    CT_SumDurations(std::shared_ptr<const CMutex_PLIVec> listRef, std::shared_ptr<const CMutex_SongMap> songsRef,
                    PlaylistID list, CHandle<CSongDatabase> databaseRef);
    /** The sum in 300ths, for those who have time to wait. Any thread. */
    [[nodiscard]] static std::uint64_t Run(const CMutex_PLIVec& list, const CMutex_SongMap& songs);

protected:
    OSErr Operate(OSErr err) override;
    OSErr Completion(OSErr err) override;

private:
    std::shared_ptr<const CMutex_PLIVec> i_listRef;
    std::shared_ptr<const CMutex_SongMap> i_songsRef;
    PlaylistID i_list;
    CHandle<CSongDatabase> i_databaseRef;
    std::uint64_t i_sum300 = 0;
};
