#include "Threads/CThreadManager.h"

#include <condition_variable>
#include <list>
#include <mutex>

#include "Threads/CT_Cooperative.h"
#include "Threads/CT_DriftFree.h"
#include "Threads/ThreadTest.h"
#include "Threads/WaitMode.h"

namespace {

class ThreadManagerTest : public ThreadTest {
protected:
    /** A clock hand for the time in which the main thread is inside the quit: moves it in small steps of real time. */
    struct ClockMover {
        ClockMover(ScriptedClock& clock, double stepT)
            : i_thread([&clock, stepT, this] {
                  while (!i_stopB) {
                      clock.Advance(stepT);
                      CThreadHost::With([](CThreadHost& host) { host.MainLoop().Wake(); });   // as a real one would
                      std::this_thread::sleep_for(std::chrono::milliseconds(1));
                  }
              }) {}
        ~ClockMover() {
            i_stopB = true;
            i_thread.join();
        }
        std::atomic<bool> i_stopB{false};
        std::thread i_thread;
    };
};

/** The end of a thread that nobody joins, its last lines in the layer and all. */
class ThreadEnd {
public:
    /** The thread's last line of its own. */
    void Tell() {
        std::unique_lock guard(i_state.lock);
        i_state.overB = true;
        std::notify_all_at_thread_exit(i_state.over, std::move(guard));
    }
    void Wait() {
        std::unique_lock guard(i_state.lock);
        i_state.over.wait(guard, [this] { return i_state.overB; });
    }

private:
    struct State {
        std::mutex lock;
        std::condition_variable over;
        bool overB = false;
    };
    /** Never destroyed, not even as the program ends: the thread is still in it when it has woken who waits. */
    static State& Make() {
        static std::mutex s_lock;
        static auto& s_states = *new std::list<State>;
        const std::scoped_lock guard(s_lock);
        return s_states.emplace_back();
    }
    State& i_state = Make();
};

/** A task that tells of its end. */
template <class Base>
class CT_Told final : public Base {
public:
    struct Told {
        std::atomic<int> livesL{0};
        std::atomic<int> completedL{0};
        std::int32_t indexL = 0;
        bool preemptiveB = false;
        OSErr completion = timerKeepErr;
        std::thread::id completedOn, diedOn;
    };
    CT_Told(Told& told, OSErr err, OSErr doneErr) : Base("told task"), i_told(told), i_err(err), i_doneErr(doneErr) {
        ++i_told.livesL;
    }
    ~CT_Told() override {
        i_told.diedOn = std::this_thread::get_id();
        --i_told.livesL;
    }

protected:
    OSErr Operate(OSErr /*err*/) override {
        i_told.indexL = *g_threadIndexL;
        i_told.preemptiveB = IsPreemptiveThread();
        return i_err;
    }
    OSErr Completion(OSErr err) override {
        i_told.completion = err;
        i_told.completedOn = std::this_thread::get_id();
        ++i_told.completedL;
        return i_doneErr;
    }

private:
    Told& i_told;
    const OSErr i_err, i_doneErr;
};

TEST_F(ThreadManagerTest, ATaskRunsCompletesOnTheMainThreadAndDies) {
    CT_Told<CT_Preemptive>::Told told;
    const ForkID id = CT_Preemptive::Start(std::make_unique<CT_Told<CT_Preemptive>>(told, fnfErr, noErr));
    const auto forkP = CThreadManager::Find(id);
    ASSERT_NE(forkP, nullptr);
    ASSERT_TRUE(RunUntil([&] { return CThreadManager::Find(id) == nullptr; }));
    EXPECT_EQ(told.livesL, 0);
    EXPECT_EQ(told.completion, fnfErr);
    EXPECT_EQ(told.completedOn, std::this_thread::get_id());
    EXPECT_EQ(told.diedOn, std::this_thread::get_id());
    EXPECT_GT(told.indexL, 0);
    EXPECT_TRUE(told.preemptiveB);
    EXPECT_TRUE(forkP->completeB);
    EXPECT_FALSE(forkP->runningB);
    EXPECT_TRUE(RunUntil([&] { return Logged("Thread Exited Gracefully: told task"); }));
}

TEST_F(ThreadManagerTest, ACooperativeTaskPassesForTheMainThread) {
    CT_Told<CT_Cooperative>::Told told;
    const ForkID id = CT_Cooperative::Start(std::make_unique<CT_Told<CT_Cooperative>>(told, noErr, noErr));
    ASSERT_TRUE(RunUntil([&] { return told.livesL == 0 && CThreadManager::CooperativeCount() == 0; }));
    EXPECT_EQ(told.indexL, -id);
    EXPECT_FALSE(told.preemptiveB);
    EXPECT_TRUE(Logged("Calling CT_Cooperative::CB_S_Coop_Completion"));
}

TEST_F(ThreadManagerTest, ResultsAndExceptionsOfAThread) {
    struct Case {
        const char* nameZ;
        std::function<OSErr()> work;
        OSErr told;   // timerKeepErr: no completion
    };
    const Case cases[] = {
        {"plain", [] { return noErr; }, noErr},
        {"failure", [] { return dskFulErr; }, dskFulErr},
        {"finished", [] { return timerDisposeErr; }, noErr},
        {"this run does not complete", [] { return timerRearmErr; }, timerKeepErr},
        {"exception", []() -> OSErr { throw std::runtime_error("boom"); }, abortErr},
        {"no memory", []() -> OSErr { throw std::bad_alloc(); }, memFullErr},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.nameZ);
        OSErr told = timerKeepErr;
        int data = 0;
        const ForkID id = CThreadManager::Fork(
            ForkKind::kPreemptive,
            [&](void* dataP) {
                EXPECT_EQ(dataP, &data);
                return c.work();
            },
            [&](void*, OSErr err) { return told = err, noErr; }, &data, c.nameZ);
        ASSERT_TRUE(RunUntil([&] { return CThreadManager::Find(id) == nullptr; }));
        EXPECT_EQ(told, c.told);
    }
    EXPECT_EQ(CThreadManager::Fork(ForkKind::kPreemptive, {}, {}, nullptr, nullptr) != 0, true);
    EXPECT_TRUE(Logged("\"Forking unknown thread!\" == NULL"));
}

TEST_F(ThreadManagerTest, NothingStartsOnceAllAreKilled) {
    std::atomic<ForkID> late{-1};
    std::atomic<bool> goB{false};
    CThreadManager::Fork(
        ForkKind::kPreemptive,
        [&](void*) {
            while (!CThreadManager::IsKilling()) std::this_thread::yield();
            late = CThreadManager::Fork(
                ForkKind::kPreemptive, [](void*) { return noErr; }, {}, nullptr, "late");
            return noErr;
        },
        {}, nullptr, "forker");
    goB = true;
    i_managerP.reset();
    EXPECT_EQ(late, 0);
    EXPECT_EQ(CThreadManager::Fork(
                  ForkKind::kPreemptive, [](void*) { return noErr; }, {}, nullptr, "later"),
              0);
    EXPECT_TRUE(CThreadManager::LeftThreads().empty() || !Logged("was forced to kill thread: forker"));
}

TEST_F(ThreadManagerTest, QuitServesTheThreadsThatNeedTheMainThread) {
    std::atomic<int> doneL{0};
    for (int t = 0; t < 8; ++t)
        CThreadManager::Fork(
            ForkKind::kPreemptive,
            [&](void*) {
                for (int n = 0; n < 20; ++n) EXPECT_EQ(MT_Lambda([] { return noErr; }).Call(CallMode::kWait), noErr);
                return noErr;
            },
            [&](void*, OSErr err) { return ++doneL, err; }, nullptr, "busy at quit");
    i_managerP.reset();
    EXPECT_EQ(doneL, 8);
    EXPECT_FALSE(Logged("was forced to kill thread: "));
}

TEST_F(ThreadManagerTest, AThreadThatDoesNotEndIsLeftAloneAfterFourSeconds) {
    struct Shared {
        std::atomic<bool> goB{false};
        ThreadEnd end;
    };
    const auto sharedP = std::make_shared<Shared>();   // what it uses is kept alive by itself
    std::atomic<bool> completedB{false};
    CThreadManager::Fork(
        ForkKind::kPreemptive,
        [sharedP](void*) {
            sharedP->goB.wait(false);
            // The application has gone: nothing of the layer may hang or crash now.
            EXPECT_EQ(MT_Lambda([] { return noErr; }).Call(CallMode::kWait), abortErr);
            EXPECT_EQ(CThreadManager::Fork(
                          ForkKind::kPreemptive, [](void*) { return noErr; }, {}, nullptr, "x"),
                      0);
            sharedP->end.Tell();
            return noErr;
        },
        {}, nullptr, "stubborn");
    const double startT = i_clock.SteadyT();
    const std::size_t beforeL = CThreadManager::LeftThreads().size();
    {
        const ClockMover mover(i_clock, 0.25);
        i_managerP.reset();
    }
    EXPECT_GE(i_clock.SteadyT() - startT, 4.0);
    ASSERT_EQ(CThreadManager::LeftThreads().size(), beforeL + 1);
    EXPECT_EQ(CThreadManager::LeftThreads().back(), "stubborn");
    EXPECT_TRUE(Logged("was forced to kill thread: stubborn"));
    CThreadHost::Install(nullptr);
    sharedP->goB = true;
    sharedP->goB.notify_all();
    sharedP->end.Wait();
    CThreadHost::Install(&i_host);
    EXPECT_FALSE(completedB);
}

TEST_F(ThreadManagerTest, ANoKillThreadHoldsUpTheQuit) {
    std::atomic<bool> endB{false};
    ThreadEnd end;
    const double startT = i_clock.SteadyT();
    const ForkID id = CThreadManager::Fork(
        ForkKind::kPreemptive,
        [&](void*) {
            endB.wait(false);
            end.Tell();
            return noErr;
        },
        {}, nullptr, "saver");
    CThreadManager::SetNoKill(id);
    std::thread ender([&] {
        while (i_clock.SteadyT() - startT < 5000000.0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
        endB = true;
        endB.notify_all();
    });
    {
        const ClockMover mover(i_clock, 100000.0);   // a bit more than a day each millisecond
        i_managerP.reset();
        // Ended in time or, should this machine stall, at the limit of 60 days: never after 4 s.
        EXPECT_GE(i_clock.SteadyT() - startT, 5000000.0);
    }
    ender.join();
    end.Wait();
    EXPECT_TRUE(Logged("Thread blocking: No Kill: saver"));
}

TEST_F(ThreadManagerTest, KillsFromEverywhereAgreeOnOneEnd) {
    for (int round = 0; round < 30; ++round) {
        // Shared: a kill that forgets its thread does not wait for it, so the thread may outlive this round.
        struct State {
            std::atomic<bool> stopB{false};
            std::atomic<int> overL{0};
        };
        const auto stateP = std::make_shared<State>();
        const ForkID victim = CThreadManager::Fork(
            ForkKind::kPreemptive,
            [stateP](void*) {
                while (!stateP->stopB) std::this_thread::yield();
                return noErr;
            },
            {}, nullptr, "victim");
        for (int t = 0; t < 3; ++t)
            CThreadManager::Fork(
                ForkKind::kPreemptive,
                [stateP, victim, t, round](void*) {
                    if (t == round % 3) stateP->stopB = true;
                    CThreadManager::Kill(victim, round % 5 == 0, false);
                    ++stateP->overL;
                    return noErr;
                },
                {}, nullptr, "killer");
        ASSERT_TRUE(RunUntil([&] { return stateP->overL == 3 && CThreadManager::Find(victim) == nullptr; }));
        CThreadManager::Kill(victim, false, false);   // must have died already
    }
    EXPECT_FALSE(Logged("was forced to kill thread: victim"));
}

TEST_F(ThreadManagerTest, WaitKeepsTheMainThreadAliveForItsTime) {
    std::string done;
    i_host.i_loop.Post([&] {
        done += 'c';
        i_clock.Advance(0.4);
    });
    const auto timer = i_host.i_loop.SetTimer(0, 300, [&] {
        done += 't';
        i_clock.Advance(0.7);   // over: the wait ends after this message
    });
    i_host.i_loop.PostInput([&] { done += 'u'; });
    const double startT = i_clock.SteadyT();
    Wait(1.0, WaitMode::kTimersPaint);
    EXPECT_EQ(done, "ct");
    EXPECT_GE(i_clock.SteadyT() - startT, 1.0);
    i_host.i_loop.KillTimer(timer);
    Wait(0, WaitMode::kMain_EventLoop);
    EXPECT_EQ(done, "ctu");
}

/** Ticks of a drift-free thread under a clock that a test moves. */
class CT_TestTicks final : public CT_DriftFree {
public:
    CT_TestTicks(std::atomic<int>& ticksL, std::atomic<CT_DriftFree*>& selfP)
        : CT_DriftFree("ticks", 10000), i_ticksL(ticksL) {
        selfP = this;
    }

protected:
    bool Tick() override {
        ++i_ticksL;
        return !i_restB;
    }

public:
    static inline std::atomic<bool> i_restB{false};

private:
    std::atomic<int>& i_ticksL;
};

TEST_F(ThreadManagerTest, ADriftFreeThreadMakesUpLostTicksAndAddsUpNoError) {
    std::atomic<int> ticksL{0};
    std::atomic<CT_DriftFree*> selfP{nullptr};
    const ForkID id = CT_DriftFree::Start(std::make_unique<CT_TestTicks>(ticksL, selfP));
    // Jumps of 0.1 s to 1.7 s against a period of 10 ms: every lost one is made up, and none too many.
    double sinceT = 0;
    ASSERT_TRUE(RunUntil([&] { return ticksL >= 1; }));
    for (const double jumpT : {0.1, 0.013, 1.7, 0.001, 0.4}) {
        i_clock.Advance(jumpT);
        sinceT += jumpT;
        const int dueL = static_cast<int>(sinceT / 0.01 + 1e-6) + 1;   // one at the start
        ASSERT_TRUE(RunUntil([&] { return ticksL >= dueL; }));
    }
    CT_TestTicks::i_restB = true;
    i_clock.Advance(0.01);
    const int restL = static_cast<int>((sinceT + 0.01) / 0.01 + 1e-6) + 1;
    ASSERT_TRUE(RunUntil([&] { return ticksL >= restL; }));
    i_clock.Advance(50);   // nothing of that is made up
    CT_TestTicks::i_restB = false;
    selfP.load()->Wake();
    ASSERT_TRUE(RunUntil([&] { return ticksL >= restL + 1; }));
    i_clock.Advance(0.01);
    ASSERT_TRUE(RunUntil([&] { return ticksL >= restL + 2; }));
    EXPECT_EQ(ticksL, restL + 2);
    selfP.load()->SetPeriod(1000000);   // from the tick after the next on
    i_clock.Advance(0.01);
    selfP.load()->Stop();   // does not wait for the sleep of a second
    ASSERT_TRUE(RunUntil([&] { return CThreadManager::Find(id) == nullptr; }));
}

}   // namespace
