#pragma once
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <utility>

#include "Platform/CMainLoop.h"

/** The timers of one main loop, ordered by their next time. Both forms of the loop keep theirs here, so that both keep
    the same order and the same promise: a timer that was killed or set anew is never fired by its old time.
    Units    seconds of CClock::SteadyT, milliseconds for intervals; an interval of 0 counts as 1.
    Threads  the one of the loop.
    Owner    the loop. */
class CTimerTable {
public:
    /** A new timer, or `existing` with a new interval and proc; an `existing` that is not there gets a new identifier. */
    CMainLoop::TimerID Set(CMainLoop::TimerID existing, std::uint32_t milliseconds, CMainLoop::Proc proc);
    void Kill(CMainLoop::TimerID timer);
    /** Fires the timer that has been due the longest; false when none is due. The proc may set and kill any timer. */
    bool FireOne();
    /** Seconds until the next one is due, 0 when one is; nothing without timers. */
    [[nodiscard]] std::optional<double> NextT() const;

private:
    struct Timer {
        double dueT;
        double intervalT;
        std::uint64_t orderL;   // tells apart two that are due at the same moment: first set, first fired
        std::shared_ptr<CMainLoop::Proc> procP;   // shared: a timer that is killed while it fires keeps its proc
    };
    using Key = std::pair<std::pair<double, std::uint64_t>, CMainLoop::TimerID>;
    static Key KeyOf(const Timer& timer, CMainLoop::TimerID id) { return {{timer.dueT, timer.orderL}, id}; }

    std::map<CMainLoop::TimerID, Timer> i_timers;
    std::set<Key> i_order;   // one entry for each of i_timers
    CMainLoop::TimerID i_lastID = 0;
    std::uint64_t i_orderL = 0;
};
