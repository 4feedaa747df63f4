#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "Platform/CClock.h"
#include "Platform/CMainLoop.h"
#include "Platform/ScriptedClock.h"

/** One suite for every form of the main loop. `Form` makes the loop (Loop()), and lets the user do something
    (UserDoes(work): a user message whose handling runs `work`). */
template <class Form>
class MainLoopSuite : public testing::Test {
protected:
    ScriptedClock i_clock;   // installed before the loop is made
    Form i_form;
    CMainLoop& i_loop = i_form.Loop();
    std::string i_done;

    CMainLoop::Proc Note(char letter) {
        return [this, letter] { i_done += letter; };
    }
    void PumpAll(MessageKinds kinds = kMessage_All) {
        for (int n = 0; n < 50; ++n) i_loop.PumpOne(kinds);
    }
};

constexpr MessageKinds kCallsOnly = static_cast<MessageKinds>(MessageKind::kCall);
constexpr MessageKinds kTimersOnly = static_cast<MessageKinds>(MessageKind::kTimer);
constexpr MessageKinds kNoInput = kMessage_All & ~static_cast<MessageKinds>(MessageKind::kInput);

TYPED_TEST_SUITE_P(MainLoopSuite);

TYPED_TEST_P(MainLoopSuite, CallsRunInTheOrderOfPostingOneAPump) {
    for (const char letter : std::string("abcdef")) this->i_loop.Post(this->Note(letter));
    EXPECT_EQ(this->i_done, "");
    EXPECT_TRUE(this->i_loop.PumpOne(kCallsOnly));
    EXPECT_EQ(this->i_done, "a");
    this->i_loop.Post(this->Note('g'));
    this->PumpAll();
    EXPECT_EQ(this->i_done, "abcdefg");
    EXPECT_FALSE(this->i_loop.PumpOne(kCallsOnly));
}

TYPED_TEST_P(MainLoopSuite, ACallMayPumpAndPost) {
    this->i_loop.Post([this] {
        this->i_done += '(';
        this->i_loop.Post(this->Note('c'));
        while (this->i_loop.PumpOne(kCallsOnly)) {
        }
        this->i_done += ')';
    });
    this->i_loop.Post(this->Note('b'));
    this->i_loop.PumpOne(kCallsOnly);
    EXPECT_EQ(this->i_done, "(bc)");
}

TYPED_TEST_P(MainLoopSuite, CallsOfManyThreadsKeepEachThreadsOrder) {
    constexpr int kThreads = 4, kCalls = 500;
    std::vector<int> nextL(kThreads, 0);
    int wrongL = 0, ranL = 0;
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&, t] {
            for (int n = 0; n < kCalls; ++n)
                this->i_loop.Post([&, t, n] {
                    wrongL += nextL[static_cast<std::size_t>(t)]++ != n;
                    ++ranL;
                });
        });
    while (ranL < kThreads * kCalls)
        if (!this->i_loop.PumpOne(kMessage_All)) this->i_loop.Wait(1.0);
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(wrongL, 0);
}

TYPED_TEST_P(MainLoopSuite, ATimerFiresAtItsTimeAndAgain) {
    this->i_loop.SetTimer(0, 100, this->Note('t'));
    this->i_clock.Advance(0.0999);
    EXPECT_FALSE(this->i_loop.PumpOne(kTimersOnly));
    this->i_clock.Advance(0.0001001);
    this->PumpAll(kTimersOnly);
    EXPECT_EQ(this->i_done, "t");
    this->i_clock.Advance(0.1);
    this->PumpAll(kTimersOnly);
    EXPECT_EQ(this->i_done, "tt");
    this->i_clock.Advance(10.0);   // a hundred late ones are not made up
    this->PumpAll(kTimersOnly);
    EXPECT_EQ(this->i_done, "ttt");
}

TYPED_TEST_P(MainLoopSuite, TimersFireInTheOrderOfTheirTimes) {
    this->i_loop.SetTimer(0, 300, this->Note('c'));
    this->i_loop.SetTimer(0, 100, this->Note('a'));
    this->i_loop.SetTimer(0, 200, this->Note('b'));
    this->i_loop.SetTimer(0, 200, this->Note('B'));
    this->i_clock.Advance(0.35);
    for (int n = 0; n < 4; ++n) this->i_loop.PumpOne(kTimersOnly);
    EXPECT_EQ(this->i_done, "abBc");
}

TYPED_TEST_P(MainLoopSuite, WhatWasDueBeforeASetOrAKillIsNotDelivered) {
    const auto first = this->i_loop.SetTimer(0, 100, this->Note('a'));
    const auto second = this->i_loop.SetTimer(0, 100, this->Note('b'));
    EXPECT_NE(first, 0U);
    EXPECT_NE(first, second);
    this->i_clock.Advance(0.5);   // both are due
    EXPECT_EQ(this->i_loop.SetTimer(first, 100, this->Note('A')), first);
    this->i_loop.KillTimer(second);
    this->PumpAll(kTimersOnly);
    EXPECT_EQ(this->i_done, "");
    this->i_clock.Advance(0.1001);
    this->PumpAll(kTimersOnly);
    EXPECT_EQ(this->i_done, "A");
    this->i_loop.KillTimer(second);   // gone already
    const auto again = this->i_loop.SetTimer(second, 100, this->Note('C'));
    EXPECT_NE(again, 0U);
    EXPECT_NE(again, first);
}

TYPED_TEST_P(MainLoopSuite, ATimerMaySetAndKillItselfWhileItFires) {
    CMainLoop::TimerID killed = 0, set = 0;
    killed = this->i_loop.SetTimer(0, 10, [&] {
        this->i_loop.KillTimer(killed);
        this->i_done += 'k';
    });
    set = this->i_loop.SetTimer(0, 10, [&] {
        this->i_loop.SetTimer(set, 50, this->Note('s'));
        this->i_done += 'r';
    });
    this->i_clock.Advance(0.0101);
    this->PumpAll(kTimersOnly);
    EXPECT_EQ(this->i_done, "kr");
    this->i_clock.Advance(0.0501);
    this->PumpAll(kTimersOnly);
    EXPECT_EQ(this->i_done, "krs");
}

TYPED_TEST_P(MainLoopSuite, TimersAgreeWithASlowList) {
    struct Slow {
        CMainLoop::TimerID id;
        double dueT, intervalT;
        int nameL, orderL;
    };
    std::mt19937 random(2);
    std::vector<Slow> slow;
    std::vector<int> fired, expected;
    int nameL = 0, orderL = 0;
    for (int step = 0; step < 2000; ++step) {
        const auto what = random() % 10;
        const auto milliseconds = static_cast<std::uint32_t>(random() % 64 + 1);
        if (what < 2 || slow.empty()) {
            const int n = ++nameL;
            const auto id = this->i_loop.SetTimer(0, milliseconds, [&fired, n] { fired.push_back(n); });
            slow.push_back({id, this->i_clock.SteadyT() + milliseconds / 1000.0, milliseconds / 1000.0, n, ++orderL});
        } else if (what == 2) {
            const std::size_t at = random() % slow.size();
            this->i_loop.KillTimer(slow[at].id);
            slow.erase(slow.begin() + static_cast<long>(at));
        } else if (what == 3) {
            Slow& timer = slow[random() % slow.size()];
            const int n = timer.nameL = ++nameL;
            this->i_loop.SetTimer(timer.id, milliseconds, [&fired, n] { fired.push_back(n); });
            timer.dueT = this->i_clock.SteadyT() + milliseconds / 1000.0;
            timer.intervalT = milliseconds / 1000.0;
            timer.orderL = ++orderL;
        } else {
            this->i_clock.Advance(static_cast<double>(random() % 40) / 1000.0 + 0.000013);
            const double nowT = this->i_clock.SteadyT();
            for (;;) {   // the one that has been due the longest, by looking at all
                const auto it = std::min_element(slow.begin(), slow.end(), [](const Slow& a, const Slow& b) {
                    return std::pair(a.dueT, a.orderL) < std::pair(b.dueT, b.orderL);
                });
                if (it == slow.end() || it->dueT > nowT) break;
                expected.push_back(it->nameL);
                it->orderL = ++orderL;
                it->dueT += it->intervalT;
                if (it->dueT <= nowT) it->dueT = nowT + it->intervalT;
            }
            while (this->i_loop.PumpOne(kTimersOnly)) {
            }
        }
        ASSERT_EQ(fired.size(), expected.size()) << "step " << step;
    }
    EXPECT_EQ(fired, expected);
    EXPECT_GT(fired.size(), 1000U);
}

TYPED_TEST_P(MainLoopSuite, OnePumpTakesOneOfEachKindCallsFirst) {
    this->i_loop.SetTimer(0, 10, this->Note('t'));
    this->i_clock.Advance(0.0101);
    for (int n = 0; n < 2; ++n) this->i_loop.Post(this->Note('c'));
    EXPECT_TRUE(this->i_loop.PumpOne(kNoInput));
    EXPECT_EQ(this->i_done, "ct");
    EXPECT_TRUE(this->i_loop.PumpOne(kNoInput));
    EXPECT_EQ(this->i_done, "ctc");
}

TYPED_TEST_P(MainLoopSuite, WaitEndsByAPostAWakeATimerAndItsTime) {
    struct Case {
        const char* name;
        std::function<void()> wake;
    };
    const Case cases[] = {
        {"post", [this] { this->i_loop.Post(this->Note('p')); }},
        {"wake", [this] { this->i_loop.Wake(); }},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        const auto started = std::chrono::steady_clock::now();
        std::thread other(c.wake);
        // May return early by its own account; a lost wake-up would last the whole time.
        this->i_loop.Wait(120.0);
        other.join();
        EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(60));
    }
    EXPECT_EQ(this->i_done, "");   // nothing is dispatched by a wait
    this->PumpAll();
    EXPECT_EQ(this->i_done, "p");
    this->i_loop.SetTimer(0, 20, this->Note('t'));
    this->i_loop.Wait(20.0);   // the scripted clock stands: the loop comes back when the timer was to be due
    this->i_clock.Advance(0.021);
    this->i_loop.Wait(20.0);   // is due now
    this->PumpAll();
    EXPECT_EQ(this->i_done, "pt");
}

TYPED_TEST_P(MainLoopSuite, InputWaitsUntilItIsAskedForOrFlushed) {
    EXPECT_FALSE(this->i_loop.InputWaits());
    this->i_clock.Advance(100.0);
    this->i_form.UserDoes(this->Note('u'));
    this->i_loop.Post(this->Note('c'));
    this->PumpAll(kNoInput);
    EXPECT_TRUE(this->i_loop.InputWaits());
    EXPECT_EQ(this->i_done, "c");
    EXPECT_LT(this->i_loop.IdleSeconds(), 0.001);
    this->PumpAll();
    EXPECT_EQ(this->i_done, "cu");
    EXPECT_FALSE(this->i_loop.InputWaits());
    this->i_clock.Advance(7.5);
    EXPECT_NEAR(this->i_loop.IdleSeconds(), 7.5, 0.001);
    this->i_form.UserDoes(this->Note('u'));
    this->i_loop.FlushInput();
    this->PumpAll();
    EXPECT_EQ(this->i_done, "cu");
    EXPECT_FALSE(this->i_loop.InputWaits());
}

TYPED_TEST_P(MainLoopSuite, WhatNeverRanIsDestroyedWithTheLoop) {
    const auto heldP = std::make_shared<int>(1);
    {
        TypeParam form;
        form.Loop().Post([heldP] {});
        form.Loop().SetTimer(0, 10, [heldP] {});
        EXPECT_EQ(heldP.use_count(), 3);
    }
    EXPECT_EQ(heldP.use_count(), 1);
}

REGISTER_TYPED_TEST_SUITE_P(MainLoopSuite, CallsRunInTheOrderOfPostingOneAPump, ACallMayPumpAndPost,
                            CallsOfManyThreadsKeepEachThreadsOrder, ATimerFiresAtItsTimeAndAgain,
                            TimersFireInTheOrderOfTheirTimes, WhatWasDueBeforeASetOrAKillIsNotDelivered,
                            ATimerMaySetAndKillItselfWhileItFires, TimersAgreeWithASlowList,
                            OnePumpTakesOneOfEachKindCallsFirst, WaitEndsByAPostAWakeATimerAndItsTime,
                            InputWaitsUntilItIsAskedForOrFlushed, WhatNeverRanIsDestroyedWithTheLoop);
