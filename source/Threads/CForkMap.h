#pragma once
#include <atomic>
#include <map>
#include <memory>
#include <vector>

#include "Threads/CMutex.h"
#include "Threads/ForkRecord.h"

/** All living forks by identifier. The lock is the map's own and is taken alone.
    Owner    shared by the manager and each record: a thread that outlives the manager still finds its map. */
class CForkMap final : public CMutex {
public:
    // All under the lock of this object.
    ForkID i_lastID = 0;   // the first fork is 1
    std::map<ForkID, std::shared_ptr<ForkRecord>> i_forks;
    bool i_killingB = false;                               // no fork may start any more
    std::vector<std::thread> i_ended;                      // ended by themselves: to be joined
    std::vector<std::shared_ptr<ForkRecord>> i_released;   // killed without waiting: looked after at the end

    /** Threads that ended by themselves are joined; never waits long. */
    void JoinEnded();
    [[nodiscard]] std::shared_ptr<ForkRecord> Find(ForkID id) const;
};
