#include "Threads/CForkMap.h"

void CForkMap::JoinEnded() {
    std::vector<std::thread> ended;
    {
        const Scope guard(*this);
        ended.swap(i_ended);
    }
    for (std::thread& thread : ended) thread.join();   // at its last lines
}

std::shared_ptr<ForkRecord> CForkMap::Find(ForkID id) const {
    const Scope guard(*this);
    const auto it = i_forks.find(id);
    return it == i_forks.end() ? nullptr : it->second;
}
