#pragma once
#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <sstream>
#include <string>

#include "Core/CLog.h"
#include "Platform/CFileCalls.h"
#include "Platform/CMainLoop_Plain.h"
#include "Platform/Patience.h"
#include "Platform/ScriptedClock.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

/** An application for the thread layer: a plain loop, and flags that a test sets. */
class TestHost final : public CThreadHost {
public:
    TestHost() { Install(this); }
    ~TestHost() override { Install(nullptr); }
    CMainLoop& MainLoop() override { return i_loop; }
    bool HasMainWindow() const override { return i_windowB; }
    bool IsAppReady() const override { return i_readyB; }
    bool IsSongPlaying() const override { return i_songB; }
    bool MayPump() const override { return i_mayPumpB; }
    void IdleGraphics(const char* whoZ, bool forcedB) override {
        i_idled += std::string(whoZ) + (forcedB ? "! " : " ");
    }
    std::unique_ptr<CTaskView> OpenTask(std::string_view) override;

    CMainLoop_Plain i_loop;
    std::atomic<bool> i_windowB{true}, i_readyB{true}, i_songB{false}, i_mayPumpB{true};
    std::string i_idled;
    std::shared_ptr<CCancelSignal> i_cancelP = std::make_shared<CCancelSignal>();   // of all tasks
    CMutexT<std::string> i_tasks;                                                   // what the task list showed
};

inline std::unique_ptr<CTaskView> TestHost::OpenTask(std::string_view) {
    struct View final : CTaskView {
        explicit View(TestHost& host) : CTaskView(host.i_cancelP), i_host(host) {}
        ~View() override { Say("gone"); }
        void SetText(const std::string& text) override { Say(text); }
        void SetSteps(long doneL, long totalL) override {
            Say(std::to_string(doneL) + " of " + std::to_string(totalL));
        }
        void Say(const std::string& text) {
            i_host.i_tasks.With([&](std::string& all) { all += text + "\n"; });
        }
        TestHost& i_host;
    };
    return std::make_unique<View>(*this);
}

/** A host, a manager, a clock moved by hand, and the log in a file. */
class ThreadTest : public testing::Test {
protected:
    ThreadTest() {
        std::string pattern = (std::filesystem::temp_directory_path() / "threads-XXXXXX").string();
        i_folder = ::mkdtemp(pattern.data());
        CLog::Get().SetFile(i_folder / "log.txt");
        CLog::Get().SetSwitch(LogSwitch::kThreads, true);
        CLog::Get().SetLive(true);
        i_managerP = std::make_unique<CThreadManager>();
        i_threadsL = CThreadManager::ThreadCount();
    }
    ~ThreadTest() override {
        i_managerP.reset();
        CLog::Get().SetLive(false);
        CLog::Get().SetFile({});
        std::filesystem::remove_all(i_folder);
    }
    [[nodiscard]] std::string LogText() const {
        std::stringstream all;
        all << std::ifstream(i_folder / "log.txt").rdbuf();
        return all.str();
    }
    [[nodiscard]] bool Logged(const std::string& text) const { return LogText().find(text) != std::string::npos; }
    /** Runs the run loop until `doneB`; false when it does not come. */
    bool RunUntil(const std::function<bool()>& doneB) {
        for (const auto startT = std::chrono::steady_clock::now(); !doneB();) {
            if (std::chrono::steady_clock::now() - startT > kPatience) return false;
            i_host.RunLoopPass();
        }
        return true;
    }
    /** Moves the clock, and lets everything that is due come. */
    void Advance(double seconds) {
        i_clock.Advance(seconds);
        for (int n = 0; n < 20; ++n) i_host.i_loop.PumpOne(kMessage_All);
    }
    /** The machine's own calls again, once no worker is left that may still be in one of others. */
    void EndFaults() {
        CFileCalls::Install(nullptr);
        ASSERT_TRUE(RunUntil([this] { return CThreadManager::ThreadCount() <= i_threadsL; }));
    }
    /** A preemptive thread that does `work`; it is over when this returns. */
    void OnWorker(const std::function<void()>& work) {
        std::atomic<bool> doneB{false};
        const ForkID id = CThreadManager::Fork(
            ForkKind::kPreemptive,
            [&](void*) {
                work();
                return noErr;
            },
            [&](void*, OSErr) {
                doneB = true;
                return noErr;
            },
            nullptr, "worker");
        ASSERT_NE(id, 0);
        ASSERT_TRUE(RunUntil([&] { return doneB.load(); }));
    }

    std::filesystem::path i_folder;
    ScriptedClock i_clock;
    TestHost i_host;
    std::unique_ptr<CThreadManager> i_managerP;
    std::size_t i_threadsL = 0;   // those that live as long as the manager
};

/** A call that runs a lambda. */
class MT_Lambda final : public CMainThreadProc {
public:
    using Work = std::function<OSErr()>;
    explicit MT_Lambda(Work work, StackHeld held = StackHeld::kYes)
        : CMainThreadProc("lambda", held), i_work(std::move(work)) {}

protected:
    OSErr Operate() override { return i_work(); }

private:
    Work i_work;
};
