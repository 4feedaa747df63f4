#include "Threads/CCancelSignal.h"

#include <utility>

void CCancelSignal::Cancel() {
    std::vector<std::function<void()>> hooks;
    {
        const std::scoped_lock guard(i_lock);
        i_cancelledB.store(true);
        hooks.swap(i_hooks);
    }
    for (const auto& hook : hooks) hook();
}

void CCancelSignal::OnCancel(std::function<void()> hook) {
    {
        const std::scoped_lock guard(i_lock);
        if (!i_cancelledB.load()) {
            i_hooks.push_back(std::move(hook));
            return;
        }
    }
    hook();
}
