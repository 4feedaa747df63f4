#pragma once
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <utility>

#include "Platform/CMainLoop.h"
#include "Threads/CCancelSignal.h"
#include "Threads/CPostEventList.h"

class CMainThreadProc;

/** What a thread installs against crashes, for as long as the object lives. */
class ScopedCrashReporter {
public:
    virtual ~ScopedCrashReporter() = default;
};

/** A line of the task list. Any thread; must not wait for the main thread. */
class CTaskView {
public:
    /** `cancelP` is what the list cancels when the user asks for the end. */
    explicit CTaskView(std::shared_ptr<CCancelSignal> cancelP) : i_cancelP(std::move(cancelP)) {}
    virtual ~CTaskView() = default;
    virtual void SetText(const std::string& text) = 0;
    virtual void SetSteps(long doneL, long totalL) = 0;
    /** The user asked for its end. */
    [[nodiscard]] bool IsCancelled() const noexcept { return i_cancelP->IsCancelled(); }
    void OnCancel(std::function<void()> hook) { i_cancelP->OnCancel(std::move(hook)); }

private:
    const std::shared_ptr<CCancelSignal> i_cancelP;
};

/** What the thread layer needs of the application; `CApp` is one, a test brings its own.
    Threads  each operation says which. Those for any thread must not wait for the main thread: they run under a lock
             that Install takes.
    Owner    whoever installs it; it must stay until it is taken out again. */
class CThreadHost {
public:
    virtual ~CThreadHost() = default;

    /** The message queue; the same one as long as this host is installed. Any thread. */
    [[nodiscard]] virtual CMainLoop& MainLoop() = 0;
    /** True when calls can be posted to the main loop: the main window stands (or there will never be one). Any thread. */
    [[nodiscard]] virtual bool HasMainWindow() const = 0;
    /** The last act of the start-up is over. Any thread. */
    [[nodiscard]] virtual bool IsAppReady() const = 0;
    /** One pass of the run loop. Main thread. */
    virtual void RunLoopPass();
    /** The main thread may pump its loop while it waits: at start, at quit, on the command line. In a show it does
        not, since what it pumped could be the deed of another key; a task tells its end there. Main thread. */
    [[nodiscard]] virtual bool MayPump() const { return true; }
    /** Main thread. */
    [[nodiscard]] virtual bool IsSongPlaying() const { return false; }
    /** Keeps the video window alive from within a wait. Main thread. */
    virtual void IdleGraphics(const char* /*whoZ*/, bool /*forcedB*/) {}
    /** A line for a queue in the task list; null when there is no such list. Any thread. */
    virtual std::unique_ptr<CTaskView> OpenTask(std::string_view /*name*/) { return nullptr; }
    /** Called at the start of each thread, on it. */
    virtual std::unique_ptr<ScopedCrashReporter> InstallCrashReporter(std::string_view /*threadName*/) {
        return nullptr;
    }
    /** Calls posted before there was a window. */
    [[nodiscard]] CPostEventList& PostEvents() { return i_postEvents; }

    /** Makes the calling thread the main one. Null: calls posted from now on are refused with abortErr. */
    static void Install(CThreadHost* hostP);
    /** The one installed; null without. For the main thread, which is the one that takes it out. */
    [[nodiscard]] static CThreadHost* Get() noexcept;
    /** `work(host)` while the host cannot be taken out; false without a host. Any thread; short, no waits. */
    template <class Work>
    static bool With(Work&& work);

private:
    struct Use;   // the shared side of the lock
    CPostEventList i_postEvents;
};

struct CThreadHost::Use {
    Use();
    ~Use();
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;
    CThreadHost* i_hostP;
};

template <class Work>
bool CThreadHost::With(Work&& work) {
    const Use use;
    if (use.i_hostP == nullptr) return false;
    std::forward<Work>(work)(*use.i_hostP);
    return true;
}
