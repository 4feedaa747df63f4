#include "Threads/CPostEventList.h"

#include "Threads/WaitMode.h"

void CPostEventList::Add(PostEventKind kind, long dataL) {
    const std::scoped_lock guard(i_lock);
    i_events.push_back({kind, dataL, {}});
}

void CPostEventList::AddCall(Call call) {
    const std::scoped_lock guard(i_lock);
    i_events.push_back({kPostEvent_Call, 0, std::move(call)});
}

void CPostEventList::MoveCallsToPending() {
    // From the oldest, behind those of an earlier round that a nested pass has not come to yet.
    std::erase_if(i_events, [&](Event& event) {
        if (event.kind != kPostEvent_Call) return false;
        i_pending.push_back(std::move(event.call));
        return true;
    });
}

bool CPostEventList::RunPending() {
    bool ranB = false;
    for (;;) {
        Call call;
        {
            const std::scoped_lock guard(i_lock);
            if (i_pending.empty()) return ranB;
            call = std::move(i_pending.front());
            i_pending.pop_front();
        }
        if (call) call();
        ranB = true;
        YieldToCooperative();
    }
}

bool CPostEventList::DrainCalls() {
    {
        const std::scoped_lock guard(i_lock);
        MoveCallsToPending();
    }
    return RunPending();
}

void CPostEventList::Run(const Handler& handler) {
    std::vector<Event> taken;
    {
        const std::scoped_lock guard(i_lock);
        MoveCallsToPending();
        taken.swap(i_events);
    }
    for (auto it = taken.rbegin(); it != taken.rend(); ++it)
        if (handler) handler(it->kind, it->dataL);
    RunPending();
}

bool CPostEventList::IsEmpty() const {
    const std::scoped_lock guard(i_lock);
    return i_events.empty() && i_pending.empty();
}
