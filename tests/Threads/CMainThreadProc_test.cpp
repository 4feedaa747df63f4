#include "Threads/CMainThreadProc.h"

#include "Threads/CMutex_ThreadQue_MainThread.h"
#include "Threads/CS_MainThread_AbortProc.h"
#include "Threads/MT_CrashPlease.h"
#include "Threads/ThreadTest.h"
#include "Threads/WaitMode.h"

namespace {

class MainThreadProcTest : public ThreadTest {};

/** Tells where it ran and that it died. */
class MT_Told final : public CMainThreadProc {
public:
    MT_Told(std::atomic<int>& ranL, std::atomic<int>& livesL, StackHeld held, OSErr err = fnfErr)
        : CMainThreadProc("told", held), i_ranL(ranL), i_livesL(livesL), i_err(err) {
        ++i_livesL;
    }
    ~MT_Told() override { --i_livesL; }

protected:
    OSErr Operate() override {
        EXPECT_TRUE(IsMainThread());
        EXPECT_TRUE(CThreadManager::IsExecutingProc());
        ++i_ranL;
        return i_err;
    }

private:
    std::atomic<int>& i_ranL;
    std::atomic<int>& i_livesL;
    const OSErr i_err;
};

TEST_F(MainThreadProcTest, RunsInPlaceOnTheMainThreadAndIsNotPosted) {
    std::atomic<int> ranL{0}, livesL{0};
    EXPECT_EQ(MT_Told(ranL, livesL, StackHeld::kYes).Call(CallMode::kWait), fnfErr);
    EXPECT_EQ((new MT_Told(ranL, livesL, StackHeld::kNo))->Call(CallMode::kWait), fnfErr);
    EXPECT_EQ((new MT_Told(ranL, livesL, StackHeld::kNo))->Call(CallMode::kNoWait), fnfErr);
    EXPECT_EQ(ranL, 3);
    EXPECT_EQ(livesL, 0);
    EXPECT_FALSE(i_host.i_loop.PumpOne(kMessage_All));
    EXPECT_EQ((new MT_Told(ranL, livesL, StackHeld::kNo))->Call(CallMode::kPost), noErr);
    EXPECT_EQ(ranL, 3);
    EXPECT_TRUE(i_host.i_loop.PumpOne(kMessage_All));
    EXPECT_EQ(ranL, 4);
    EXPECT_EQ(livesL, 0);
    EXPECT_FALSE(CThreadManager::IsExecutingProc());
}

TEST_F(MainThreadProcTest, RunsInPlaceOnACooperativeThread) {
    std::atomic<bool> doneB{false};
    std::thread::id ranOn, thread;
    CThreadManager::Fork(
        ForkKind::kCooperative,
        [&](void*) {
            thread = std::this_thread::get_id();
            EXPECT_LT(*g_threadIndexL, 0);
            EXPECT_FALSE(IsPreemptiveThread());
            EXPECT_FALSE(IsLoopThread());
            const OSErr err = MT_Lambda([&] {
                                  ranOn = std::this_thread::get_id();
                                  return eofErr;
                              }).Call(CallMode::kWait);
            EXPECT_EQ(err, eofErr);
            doneB = true;
            return noErr;
        },
        {}, nullptr, "coop");
    ASSERT_TRUE(RunUntil([&] { return doneB.load(); }));
    EXPECT_EQ(ranOn, thread);
}

TEST_F(MainThreadProcTest, AWorkerWaitsForTheMainThread) {
    std::atomic<int> ranL{0}, livesL{0};
    OnWorker([&] {
        EXPECT_TRUE(IsPreemptiveThread());
        EXPECT_EQ(MT_Told(ranL, livesL, StackHeld::kYes, dskFulErr).Call(CallMode::kWait), dskFulErr);
        EXPECT_EQ((new MT_Told(ranL, livesL, StackHeld::kNo))->Call(CallMode::kWait), fnfErr);
        MT_Told again(ranL, livesL, StackHeld::kYes);
        for (int n = 0; n < 3; ++n) EXPECT_EQ(again.Call(CallMode::kWait), fnfErr);
        for (int n = 0; n < 10; ++n)
            EXPECT_EQ((new MT_Told(ranL, livesL, StackHeld::kNo))->Call(CallMode::kNoWait), noErr);
    });
    EXPECT_EQ(ranL, 15);
    EXPECT_EQ(livesL, 0);
}

TEST_F(MainThreadProcTest, CallsOfFourThreadsRunInTheirOrder) {
    std::string orders[4];
    std::atomic<int> doneL{0};
    for (int t = 0; t < 4; ++t)
        CThreadManager::Fork(
            ForkKind::kPreemptive,
            [&, t](void*) {
                for (int n = 0; n < 100; ++n) {
                    auto* const procP = new MT_Lambda(
                        [&, t, n] {
                            orders[t] += std::to_string(n) + " ";
                            return noErr;
                        },
                        StackHeld::kNo);
                    EXPECT_EQ(procP->Call(n % 3 == 0 ? CallMode::kWait : CallMode::kPost), noErr);
                }
                ++doneL;
                return noErr;
            },
            {}, nullptr, "poster");
    std::string expected;
    for (int n = 0; n < 100; ++n) expected += std::to_string(n) + " ";
    ASSERT_TRUE(RunUntil([&] { return doneL == 4; }));
    for (int n = 0; n < 500; ++n) i_host.i_loop.PumpOne(kMessage_All);
    for (const std::string& order : orders) EXPECT_EQ(order, expected);
}

TEST_F(MainThreadProcTest, CallsBeforeThereIsAWindowWaitForTheRunLoop) {
    i_host.i_windowB = false;
    i_host.i_readyB = false;
    std::string done;
    std::thread worker([&] {
        TagThread(50, true);
        for (const char letter : std::string("abc"))
            EXPECT_EQ((new MT_Lambda(
                           [&done, letter] {
                               done += letter;
                               return noErr;
                           },
                           StackHeld::kNo))
                          ->Call(CallMode::kNoWait),
                      noErr);
    });
    worker.join();
    EXPECT_FALSE(i_host.i_loop.PumpOne(kMessage_All));   // not in the queue of messages
    EXPECT_EQ(done, "");
    i_host.RunLoopPass();
    EXPECT_EQ(done, "abc");
}

TEST_F(MainThreadProcTest, ReadyWithoutAWindowIsAFaultButLosesNoCall) {
    i_host.i_windowB = false;
    std::atomic<int> ranL{0}, livesL{0};
    OnWorker([&] { EXPECT_EQ(MT_Told(ranL, livesL, StackHeld::kYes).Call(CallMode::kWait), fnfErr); });
    EXPECT_EQ(ranL, 1);
    EXPECT_TRUE(Logged("posting an event with no main window to catch it"));
}

TEST_F(MainThreadProcTest, WithoutAnApplicationItIsRefusedAndNobodyHangs) {
    std::atomic<int> ranL{0}, livesL{0};
    CThreadHost::Install(nullptr);
    std::thread([&] {
        TagThread(51, true);
        EXPECT_EQ(MT_Told(ranL, livesL, StackHeld::kYes).Call(CallMode::kWait), abortErr);
        EXPECT_EQ((new MT_Told(ranL, livesL, StackHeld::kNo))->Call(CallMode::kWait), abortErr);
        EXPECT_EQ((new MT_Told(ranL, livesL, StackHeld::kNo))->Call(CallMode::kNoWait), abortErr);
    }).join();
    CThreadHost::Install(&i_host);
    EXPECT_EQ(ranL, 0);
    EXPECT_EQ(livesL, 0);
}

TEST_F(MainThreadProcTest, ACallThatIsNeverReachedTellsItsCaller) {
    std::atomic<int> ranL{0}, livesL{0};
    OSErr err = noErr;
    std::thread waiter;
    {
        // A loop of its own, installed for the posting and destroyed with the call in it.
        struct ShortHost final : CThreadHost {
            CMainLoop& MainLoop() override { return i_loop; }
            bool HasMainWindow() const override { return true; }
            bool IsAppReady() const override { return true; }
            CMainLoop_Plain i_loop;
        };
        auto hostP = std::make_unique<ShortHost>();
        CThreadHost::Install(hostP.get());
        waiter = std::thread([&] {
            TagThread(52, true);
            err = MT_Told(ranL, livesL, StackHeld::kYes).Call(CallMode::kWait);
        });
        hostP->i_loop.Wait(20.0);   // until it is there
        while (livesL == 0) std::this_thread::yield();
        CThreadHost::Install(nullptr);
    }
    waiter.join();
    CThreadHost::Install(&i_host);
    EXPECT_EQ(err, abortErr);
    EXPECT_EQ(ranL, 0);
}

TEST_F(MainThreadProcTest, AnExceptionEndsAtTheCall) {
    OnWorker([&] {
        EXPECT_EQ(MT_Lambda([]() -> OSErr { throw std::runtime_error("boom"); }).Call(CallMode::kWait), abortErr);
    });
    EXPECT_TRUE(Logged("### Error lambda: boom"));
}

TEST_F(MainThreadProcTest, RoutedItComesByWayOfTheMainThreadQue) {
    std::thread::id ranOn;
    OnWorker([&] {
        MT_Lambda call([&] {
            ranOn = std::this_thread::get_id();
            return fnfErr;
        });
        call.RouteThroughQue();
        EXPECT_EQ(call.Call(CallMode::kWait), fnfErr);
    });
    EXPECT_EQ(ranOn, std::this_thread::get_id());
}

TEST_F(MainThreadProcTest, ForkedItRunsOnAThreadOfItsOwn) {
    std::atomic<bool> doneB{false};
    auto* const procP = new MT_Lambda(
        [&] {
            EXPECT_TRUE(IsPreemptiveThread());
            doneB = true;
            return noErr;
        },
        StackHeld::kNo);
    EXPECT_NE(procP->Fork(false), 0);
    ASSERT_TRUE(RunUntil([&] { return doneB.load(); }));
    EXPECT_TRUE(Logged("Entering Thread: Main Thread Fork Preemptive"));
}

TEST_F(MainThreadProcTest, OnTheStackItIsNeverLeftBehind) {
    int ranL = 0;
    EXPECT_EQ(MT_Lambda([&] { return ++ranL, noErr; }).Call(CallMode::kPost), noErr);
    EXPECT_EQ(ranL, 1);   // at once: a posted one would point to nowhere
    OnWorker([&] { EXPECT_EQ(MT_Lambda([&] { return ++ranL, eofErr; }).Call(CallMode::kNoWait), eofErr); });
    EXPECT_EQ(ranL, 2);
    EXPECT_TRUE(Logged("!i_stackB || mode == CallMode::kWait"));
}

TEST_F(MainThreadProcTest, CrashPleaseReportsTheWrongThreadOnTheMainOne) {
    EXPECT_TRUE(MT_CrashPlease::Check("on main", __FILE__, __LINE__));
    OnWorker([] { EXPECT_FALSE(MT_CrashPlease::Check("IsMainThread() && \"scoped setter\"", __FILE__, __LINE__)); });
    EXPECT_FALSE(Logged("on main"));
    EXPECT_TRUE(Logged("Assert Fail: IsMainThread() && \"scoped setter\""));
}

TEST_F(MainThreadProcTest, AnAbortProcTellsItsTaskThatItWasCancelled) {
    struct MT_End final : CS_MainThread_AbortProc {
        MT_End() : CS_MainThread_AbortProc("abort proc", StackHeld::kYes) {}
        OSErr Operate() override { return Result(); }
    } end;
    std::atomic<bool> polledB{false};
    std::thread canceller([&] {
        while (!polledB) std::this_thread::yield();
        end.Abort();
    });
    OnWorker([&] {
        while (!end.IsAborted()) polledB = true;
        end.SetResult(noErr);
        EXPECT_EQ(end.Call(CallMode::kWait), abortErr);
    });
    canceller.join();
}

TEST(CPostEventList, RunsInOrderAndARoundAtATime) {
    CPostEventList list;
    std::string done;
    const auto call = [&](char letter) { return [&done, letter] { done += letter; }; };
    list.AddCall([&] {
        done += 'a';
        list.AddCall(call('d'));
        if (done == "a") list.DrainCalls();   // a pass within: the rest of this round, and what has come
    });
    list.AddCall(call('b'));
    list.AddCall([&] {
        done += 'c';
        list.AddCall(call('e'));   // comes in the next round
    });
    EXPECT_TRUE(list.DrainCalls());
    EXPECT_EQ(done, "abcd");
    EXPECT_FALSE(list.IsEmpty());
    EXPECT_TRUE(list.DrainCalls());
    EXPECT_EQ(done, "abcde");
    EXPECT_FALSE(list.DrainCalls());
    EXPECT_TRUE(list.IsEmpty());
}

}   // namespace
