#pragma once
#include <atomic>
#include <map>
#include <memory>
#include <vector>

#include "Library/LibraryIDs.h"
#include "Play/SongLevel.h"
#include "Threads/CHandle.h"

class CSongDatabase;

/** Measures how loud the songs are that play soon, and keeps it with them ("LUFS"): one at a time, on a worker that
    gives way to every other thread, and rests three times as long as it worked while something plays.
    Threads  main.
    Owner    CPlayControl.
    Errors   a song that cannot be measured stays as it is until the next run. */
class CSongLevels {
public:
    explicit CSongLevels(CSongDatabase& database);
    ~CSongLevels();
    CSongLevels(const CSongLevels&) = delete;
    CSongLevels& operator=(const CSongLevels&) = delete;

    /** These come next, in this order, in place of those that were wanted before. */
    void Want(std::vector<SongID> songs);
    /** Begins with the next one when it is time; called all the while. */
    void Idle(bool playingB);
    /** A worker measures. */
    [[nodiscard]] bool IsBusy() const noexcept { return i_busyB; }

private:
    friend class CT_MeasureLevel;
    /** The worker has ended; without a level when there is none to be had. */
    void Measured(SongID song, const std::optional<SongLevel>& level, double tookT);

    CSongDatabase& i_database;
    CHandled<CSongLevels> i_self{this};
    const std::shared_ptr<std::atomic<bool>> i_stopRef;
    std::vector<SongID> i_wanted;         // the next one last
    std::map<SongID, double> i_lookedT;   // in this run, by CClock::SteadyT
    bool i_busyB = false;
    double i_endedT = 0, i_tookT = 0;   // of the last one
};
