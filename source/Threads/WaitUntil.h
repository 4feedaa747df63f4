#pragma once
#include <functional>

/** Pumps the main thread (PumpLimited) until `doneB`, for `mostT` seconds at the most. The deed that makes it true is
    run by the main thread meanwhile (a completion, a posted call, a timer) or wakes its loop: nobody looks by the
    clock. Main thread. */
void WaitUntil(const std::function<bool()>& doneB, double mostT = 1.0e8);
