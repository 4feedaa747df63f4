#pragma once
#include <span>
#include <vector>

#include "Library/LibraryIDs.h"

class CSongDatabase;

/** Songs that want their length ("drtn"): one task at a time looks at their files, and whoever comes meanwhile waits.
    Threads  main.
    Owner    CSongFileWork. */
class CSongLengths {
public:
    explicit CSongLengths(CSongDatabase& database) : i_database(database) {}
    /** Those of them that have no length get one, soon; nobody waits. */
    void Find(std::span<const SongID> songs);
    /** Every song of the library that has none. */
    void FindAll();
    /** There are songs that were not looked at yet. */
    [[nodiscard]] bool IsBusy() const noexcept { return i_runningB; }

private:
    void StartTask();

    CSongDatabase& i_database;
    std::vector<SongID> i_waiting;
    bool i_runningB = false;
};
