#include "Threads/CT_Timer.h"

#include <cmath>

#include "Threads/ThreadTest.h"
#include "Threads/WaitMode.h"

namespace {

/** A timer whose body is a lambda; counts the living. */
class CT_TestTimer final : public CT_Timer {
public:
    using Work = std::function<OSErr(CT_TestTimer& timer)>;
    CT_TestTimer(double seconds, Work work, bool idleB = false, const char* nameZ = "test timer")
        : CT_Timer(nameZ, seconds, idleB), i_work(std::move(work)) {
        ++s_livesL;
    }
    ~CT_TestTimer() override { --s_livesL; }
    OSErr Timer() override {
        ++i_firedL;
        return i_work(*this);
    }
    OSErr Complete(OSErr err) override {
        s_completed = err;
        return err;
    }
    int i_firedL = 0;
    static inline int s_livesL = 0;
    static inline OSErr s_completed = noErr;

private:
    Work i_work;
};

class TimerTest : public ThreadTest {
protected:
    TimerTest() { CT_TestTimer::s_livesL = 0; }
    ~TimerTest() override {
        i_managerP.reset();
        EXPECT_EQ(CT_TestTimer::s_livesL, 0);   // the manager takes what is left
    }
};

TEST_F(TimerTest, WhatEachResultDoes) {
    struct Case {
        const char* nameZ;
        OSErr answer;
        int firedL;   // in three intervals
        bool livesB;
        OSErr completedB;   // what the completion was told; timerKeepErr for none
        bool reportB;
    };
    const Case cases[] = {
        {"fires again", noErr, 3, true, timerKeepErr, false},
        {"stays as it is", timerKeepErr, 3, true, timerKeepErr, false},
        {"finished", timerDisposeErr, 1, false, noErr, false},
        {"failed", eofErr, 1, false, eofErr, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.nameZ);
        CT_TestTimer::s_completed = timerKeepErr;
        int firedL = 0;
        auto* const timerP = new CT_TestTimer(0.1, [&](CT_TestTimer&) { return ++firedL, c.answer; });
        const ForkID id = timerP->GetForkID();
        for (int n = 0; n < 3; ++n) Advance(0.1001);
        EXPECT_EQ(firedL, c.firedL);
        EXPECT_EQ(CThreadManager::Find(id) != nullptr, c.livesB);
        EXPECT_EQ(CT_TestTimer::s_livesL, c.livesB ? 1 : 0);
        EXPECT_EQ(CT_TestTimer::s_completed, c.completedB);
        EXPECT_EQ(Logged("Fork Timer Error: End of File"), c.reportB);
        CThreadManager::Kill(id, false, false);
        EXPECT_EQ(CT_TestTimer::s_livesL, 0);
    }
}

TEST_F(TimerTest, OffItSleepsUntilAnIntervalIsSet) {
    auto* const timerP = new CT_TestTimer(0.1, [](CT_TestTimer& timer) {
        timer.SetFireInterval(-1.0);
        return timerKeepErr;
    });
    Advance(0.11);
    Advance(1e6);
    EXPECT_EQ(timerP->i_firedL, 1);
    timerP->SetFireInterval(2.0);
    Advance(1.99);
    EXPECT_EQ(timerP->i_firedL, 1);
    Advance(0.011);
    EXPECT_EQ(timerP->i_firedL, 2);
}

TEST_F(TimerTest, AnIdleTimerWaitsForAQuietUser) {
    auto* const timerP = new CT_TestTimer(
        2.0, [](CT_TestTimer&) { return noErr; }, true);
    for (int n = 0; n < 10; ++n) {   // types once a second
        i_host.i_loop.PostInput({});
        Advance(1.0);
    }
    EXPECT_EQ(timerP->i_firedL, 0);
    // The grid of the timer is every 2 s; the user was last there 1 s ago: the expiry after the next is the first.
    Advance(0.9);
    EXPECT_EQ(timerP->i_firedL, 0);
    Advance(2.0);
    EXPECT_EQ(timerP->i_firedL, 1);
}

TEST_F(TimerTest, ItsIndexIsTheMainThreadsWhileItRuns) {
    *g_threadIndexL = 0;
    std::int32_t seenL = 0;
    auto* const timerP = new CT_TestTimer(0.1, [&](CT_TestTimer&) {
        seenL = *g_threadIndexL;
        return noErr;
    });
    Advance(0.11);
    EXPECT_EQ(seenL, -timerP->GetForkID());
    EXPECT_EQ(*g_threadIndexL, 0);
}

TEST_F(TimerTest, AUserThatWaitsHoldsBackTheTimerThatRuns) {
    int innerL = 0;
    CT_TestTimer* timerP = nullptr;
    timerP = new CT_TestTimer(0.1, [&](CT_TestTimer& timer) {
        if (timer.i_firedL > 1) return noErr;
        i_host.i_loop.PostInput({});
        PumpLimited();
        EXPECT_EQ(timer.GetFireInterval(), -1.0);
        timer.SetFireInterval(0.5);   // wished for meanwhile: set after the run
        EXPECT_EQ(timer.GetFireInterval(), -1.0);
        innerL = timer.i_firedL;
        return noErr;
    });
    Advance(0.11);
    EXPECT_EQ(innerL, 1);
    EXPECT_EQ(timerP->GetFireInterval(), 0.5);
    Advance(0.49);
    EXPECT_EQ(timerP->i_firedL, 1);
    Advance(0.02);
    EXPECT_EQ(timerP->i_firedL, 2);
}

TEST_F(TimerTest, ItDoesNotFireInsideItselfButOthersDo) {
    int otherL = 0, depthL = 0, deepestL = 0;
    new CT_TestTimer(0.1, [&](CT_TestTimer&) { return ++otherL, noErr; });
    auto* const timerP = new CT_TestTimer(0.1, [&](CT_TestTimer&) {
        deepestL = std::max(deepestL, ++depthL);
        i_clock.Advance(0.5);   // it is due again, and so is the other
        for (int n = 0; n < 5; ++n) PumpLimited();
        --depthL;
        return noErr;
    });
    i_clock.Advance(0.11);
    otherL = 0;
    while (i_host.i_loop.PumpOne(kMessage_All) && timerP->i_firedL == 0) {
    }
    EXPECT_EQ(deepestL, 1);
    EXPECT_GE(otherL, 1);
}

TEST_F(TimerTest, EveryWayToDieWhileItRuns) {
    struct Case {
        const char* nameZ;
        std::function<OSErr(CT_TestTimer&)> die;
    };
    const Case cases[] = {
        {"deleted by itself",
         [](CT_TestTimer& timer) {
             delete &timer;
             return noErr;
         }},
        {"killed by itself",
         [](CT_TestTimer& timer) {
             CThreadManager::Kill(timer.GetForkID(), false, false);
             return noErr;
         }},
        {"killed in a pump below itself",
         [this](CT_TestTimer& timer) {
             i_host.i_loop.Post([id = timer.GetForkID()] { CThreadManager::Kill(id, false, false); });
             PumpLimited();
             timer.SetFireInterval(0.01);   // too late to matter
             return noErr;
         }},
        {"killed and finished",
         [](CT_TestTimer& timer) {
             CThreadManager::Kill(timer.GetForkID(), false, false);
             return timerDisposeErr;
         }},
        {"disposed",
         [](CT_TestTimer& timer) {
             timer.Dispose();   // its end is the next time it comes up
             return noErr;
         }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.nameZ);
        int firedL = 0;
        auto* const timerP = new CT_TestTimer(0.1, [&](CT_TestTimer& timer) {
            ++firedL;
            return c.die(timer);
        });
        const ForkID id = timerP->GetForkID();
        for (int n = 0; n < 5; ++n) Advance(0.1001);
        EXPECT_EQ(firedL, 1);
        EXPECT_EQ(CT_TestTimer::s_livesL, 0);
        EXPECT_EQ(CThreadManager::Find(id), nullptr);
        CT_Timer::SetInterval(id, 1.0);   // finds nobody
        EXPECT_EQ(CT_Timer::Current(), nullptr);
    }
    EXPECT_FALSE(Logged("did not find timer to erase"));
}

TEST_F(TimerTest, KilledByAWorkerItGoesOnTheMainThread) {
    auto* const timerP = new CT_TestTimer(0.1, [](CT_TestTimer&) { return noErr; });
    OnWorker([id = timerP->GetForkID()] { CThreadManager::Kill(id, false, false); });
    EXPECT_EQ(CT_TestTimer::s_livesL, 0);
}

TEST_F(TimerTest, MadeByAWorkerItIsArmedByItsFirstInterval) {
    std::atomic<int> firedL{0};
    OnWorker([&] {
        auto* const timerP = new CT_TestTimer(0.1, [&](CT_TestTimer&) { return ++firedL, timerDisposeErr; });
        timerP->Restart();
    });
    RunUntil([&] {
        i_clock.Advance(0.11);
        return firedL > 0;
    });
    EXPECT_EQ(firedL, 1);
    EXPECT_EQ(CT_TestTimer::s_livesL, 0);
}

/** Six threads set two timers, one of which dies and is made anew, while both fire. */
TEST_F(TimerTest, SetFromEveryThreadWhileTheyFire) {
    std::atomic<bool> stopB{false};
    std::atomic<int> firedL{0}, overL{0};
    std::atomic<ForkID> mortal{0}, steady{0};
    const auto make = [&](OSErr answer) {
        return (new CT_TestTimer(0.001, [&firedL, answer](CT_TestTimer&) { return ++firedL, answer; }))->GetForkID();
    };
    steady = make(noErr);
    mortal = make(timerDisposeErr);
    for (int t = 0; t < 6; ++t)
        CThreadManager::Fork(
            t == 5 ? ForkKind::kCooperative : ForkKind::kPreemptive,
            [&, t](void*) {
                for (int n = 0; !stopB; ++n) {
                    CT_Timer::SetInterval(n % 2 ? steady : mortal, n % 7 == 0 ? -1.0 : 0.0001 * (t + 1));
                    std::this_thread::yield();
                }
                ++overL;
                return noErr;
            },
            {}, nullptr, "setter");
    const bool enoughB = RunUntil([&] {
        i_clock.Advance(0.01);
        CT_Timer::SetInterval(steady, 0.001);
        if (!CThreadManager::Find(mortal)) mortal = make(timerDisposeErr);
        return firedL > 500;
    });
    stopB = true;
    EXPECT_TRUE(enoughB);
    EXPECT_TRUE(RunUntil([&] { return overL == 6; }));
}

TEST(TimerMilliseconds, TruncatesAndKnowsOff) {
    const struct {
        double seconds;
        std::uint32_t milliseconds;
    } cases[] = {{2.0, 2000},
                 {1.0 / 15, 66},
                 {0.0019, 1},
                 {0.0, 0},
                 {-1.0, 0x7FFFFFFF},
                 {-1e300, 0x7FFFFFFF},
                 {1e300, 0x7FFFFFFF},
                 {std::nan(""), 0x7FFFFFFF},
                 {900.0, 900000},
                 {2147483.646, 2147483646},
                 {2147483.647, 0x7FFFFFFF}};
    for (const auto& c : cases) EXPECT_EQ(TimerMilliseconds(c.seconds), c.milliseconds) << c.seconds;
}

}   // namespace
