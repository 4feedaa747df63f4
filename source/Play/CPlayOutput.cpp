#include "Play/CPlayOutput.h"

bool CPlayOutput::Take(const std::atomic<bool>& givenUpB) {
    AudioOutputChoice before;   // goes after the lock is left: a device may be slow to close
    std::unique_lock guard(i_lock);
    i_changed.wait(guard, [&] { return !i_takenB || givenUpB.load(); });
    if (givenUpB.load()) return false;
    i_takenB = true;
    if (i_next.outputP) before = std::exchange(i_now, std::exchange(i_next, {}));
    return true;
}

void CPlayOutput::Release() {
    const std::scoped_lock guard(i_lock);
    i_takenB = false;
    i_changed.notify_all();
}

void CPlayOutput::Nudge() {
    const std::scoped_lock guard(i_lock);
    i_changed.notify_all();
}

void CPlayOutput::Replace(AudioOutputChoice choice) {
    const std::scoped_lock guard(i_lock);
    std::swap(i_next, choice);   // what was there, never opened, goes after the lock is left
}

void CPlayOutput::LookAgain() {
    i_news.Forget();
    const std::scoped_lock guard(i_lock);
    if (i_takenB) i_now.outputP->LookAgain();
}
