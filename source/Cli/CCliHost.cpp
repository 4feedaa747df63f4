#include "Cli/CCliHost.h"

#include "Audio/CSpoolPump.h"

CCliHost::CCliHost() {
    Install(this);
    CSpoolPump::AllowAll();
    i_threads = std::make_unique<CThreadManager>();
}

CCliHost::~CCliHost() {
    CSpoolPump::AbortAll();
    i_threads.reset();
    Install(nullptr);
}

OSErr CCliHost::OnTask(const std::function<OSErr()>& work) {
    bool doneB = false;   // stored by the completion, on this thread
    OSErr result = abortErr;
    const ForkID id = CThreadManager::Fork(
        ForkKind::kPreemptive, [&](void*) { return work(); },
        [&](void*, OSErr err) {
            result = err;
            doneB = true;
            return err;
        },
        nullptr, "command");
    while (id != 0 && !doneB) RunLoopPass();
    return result;
}
