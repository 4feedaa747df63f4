#include "Platform/ThreadPriority.h"

#include <sys/resource.h>

void LowerThreadPriority() {
    constexpr int kLowest = 19;
    ::setpriority(PRIO_PROCESS, 0, kLowest);   // here 0 is the thread; a system that refuses has it as it was
}
