#include "Threads/CT_Preemptive.h"

#include "Core/CLog.h"
#include "Threads/CThreadManager.h"

ForkID CT_Task::StartAs(ForkKind kind, std::unique_ptr<CT_Task> taskP) {
    if (taskP == nullptr) return 0;
    const std::string name = taskP->Name();
    // The two routines share the task; the completion takes it out and ends it on the main thread. Should there be none
    // any more, it goes with the fork.
    const auto boxP = std::make_shared<std::unique_ptr<CT_Task>>(std::move(taskP));
    return CThreadManager::Fork(
        kind, [boxP](void*) { return (*boxP)->Operate(noErr); },
        [boxP, kind](void*, OSErr err) {
            if (kind == ForkKind::kCooperative) Log("Calling CT_Cooperative::CB_S_Coop_Completion");
            const std::unique_ptr<CT_Task> doneP = std::move(*boxP);
            return FirstOf(err, doneP->Completion(err));
        },
        nullptr, name.c_str());
}
