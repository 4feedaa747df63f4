#include "Threads/CPostEventList.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "Threads/WaitMode.h"

void CPostEventList::AddCall(Call call) {
    const std::scoped_lock guard(i_lock);
    i_calls.push_back(std::move(call));
}

bool CPostEventList::DrainCalls() {
    {
        const std::scoped_lock guard(i_lock);
        std::ranges::move(i_calls, std::back_inserter(i_pending));
        i_calls.clear();
    }
    for (bool ranB = false;; ranB = true) {
        Call call;
        {
            const std::scoped_lock guard(i_lock);
            if (i_pending.empty()) return ranB;
            call = std::move(i_pending.front());
            i_pending.pop_front();
        }
        if (call) call();   // which may drain the rest
        YieldToCooperative();
    }
}

bool CPostEventList::IsEmpty() const {
    const std::scoped_lock guard(i_lock);
    return i_calls.empty() && i_pending.empty();
}
