#pragma once
#include "Threads/CT_Preemptive.h"

/** A task that may touch the main thread's objects while the design of the tasks keeps the main thread off them: no
    lock does. Main-thread calls run in place on it; while it lives, the main loop gives up the processor once a round. */
class CT_Cooperative : public CT_Task {
public:
    static ForkID Start(std::unique_ptr<CT_Cooperative> taskP) {
        return StartAs(ForkKind::kCooperative, std::move(taskP));
    }

protected:
    explicit CT_Cooperative(const char* nameZ = "CT_Cooperative") : CT_Task(nameZ) {}
};
