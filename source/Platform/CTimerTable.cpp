#include "Platform/CTimerTable.h"

#include <algorithm>

#include "Platform/CClock.h"

CMainLoop::TimerID CTimerTable::Set(CMainLoop::TimerID existing, std::uint32_t milliseconds, CMainLoop::Proc proc) {
    CMainLoop::TimerID id = existing;
    if (const auto it = i_timers.find(existing); it != i_timers.end()) {
        i_order.erase(KeyOf(it->second, id));
        i_timers.erase(it);
    } else {
        do ++i_lastID;
        while (i_lastID == 0 || i_timers.contains(i_lastID));   // after 4 billion timers the numbers come round again
        id = i_lastID;
    }
    const double intervalT = std::max(milliseconds, 1U) / 1000.0;
    const Timer timer{CClock::Get().SteadyT() + intervalT, intervalT, ++i_orderL,
                      std::make_shared<CMainLoop::Proc>(std::move(proc))};
    i_order.insert(KeyOf(timer, id));
    i_timers.emplace(id, timer);
    return id;
}

void CTimerTable::Kill(CMainLoop::TimerID timer) {
    const auto it = i_timers.find(timer);
    if (it == i_timers.end()) return;
    i_order.erase(KeyOf(it->second, timer));
    i_timers.erase(it);
}

bool CTimerTable::FireOne() {
    if (i_order.empty()) return false;
    const double nowT = CClock::Get().SteadyT();
    const auto [when, id] = *i_order.begin();
    if (when.first > nowT) return false;
    Timer& timer = i_timers.at(id);
    i_order.erase(i_order.begin());
    timer.dueT += timer.intervalT;                                 // stays on its grid...
    if (timer.dueT <= nowT) timer.dueT = nowT + timer.intervalT;   // ...but late firings are not made up
    timer.orderL = ++i_orderL;
    i_order.insert(KeyOf(timer, id));
    const std::shared_ptr<CMainLoop::Proc> procP = timer.procP;
    if (*procP) (*procP)();   // last: it may kill or set this very timer
    return true;
}

std::optional<double> CTimerTable::NextT() const {
    if (i_order.empty()) return std::nullopt;
    return std::max(0.0, i_order.begin()->first.first - CClock::Get().SteadyT());
}
