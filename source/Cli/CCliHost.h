#pragma once
#include <functional>

#include "Platform/CMainLoop_Plain.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"

/** What threads and main-thread calls need, for commands that use them: a plain loop on the calling thread, no windows,
    no task list.
    Owner    the command, for its own length; one at a time. Its end waits for the threads that are left. */
class CCliHost final : public CThreadHost {
public:
    CCliHost();
    ~CCliHost() override;

    /** `work` on a preemptive thread, while this one runs the loop; its result. abortErr when no thread can be had. */
    OSErr OnTask(const std::function<OSErr()>& work);

    CMainLoop& MainLoop() override { return i_loop; }
    bool HasMainWindow() const override { return true; }
    bool IsAppReady() const override { return true; }

private:
    CMainLoop_Plain i_loop;
    std::unique_ptr<CThreadManager> i_threads;
};
