#pragma once
#include <chrono>

/** So long a test waits for what must come, before it says that it does not. No machine is so busy: it is only there so that
    a fault ends the test. */
inline constexpr std::chrono::seconds kPatience{120};
