#include "Threads/CHandle.h"

#include <thread>

#include "Threads/ThreadTest.h"

namespace {

struct Thing {
    int number = 7;
    CHandled<Thing> self{this};
};

std::atomic<int> s_assertedL{0};

class HandleTest : public ThreadTest {
protected:
    HandleTest() {
        s_assertedL = 0;
        SetAssertHandler([](const char*, const char*, long, bool) {
            ++s_assertedL;
            return true;
        });
    }
    ~HandleTest() override { SetAssertHandler(nullptr); }
};

TEST_F(HandleTest, LeadsToItsObjectAndNowhereOnceThatHasGone) {
    const CHandle<Thing> nowhere;
    EXPECT_EQ(nowhere.Get(), nullptr);
    auto thingP = std::make_unique<Thing>();
    const CHandle<Thing> handle = thingP->self.Handle();
    ASSERT_NE(handle.Get(), nullptr);
    EXPECT_EQ(handle.Get()->number, 7);
    thingP.reset();
    EXPECT_EQ(handle.Get(), nullptr);
    EXPECT_EQ(s_assertedL, 0);
}

/** Other threads keep, copy and drop it; asked there it says nothing, and that is a fault. */
TEST_F(HandleTest, AskedFromTenThreadsWhileTheObjectGoes) {
    constexpr int kThreads = 10, kTurns = 1000;
    for (int round = 0; round < 20; ++round) {
        s_assertedL = 0;
        auto thingP = std::make_unique<Thing>();
        std::atomic<int> readyL{0}, gotL{0};
        std::vector<std::thread> threads;
        for (int n = 0; n < kThreads; ++n)
            threads.emplace_back([&, handle = thingP->self.Handle()] {
                ++readyL;
                for (int turn = 0; turn < kTurns; ++turn) {
                    const CHandle<Thing> copy = handle;
                    gotL += copy.Get() != nullptr ? 1 : 0;
                }
            });
        while (readyL < kThreads) std::this_thread::yield();
        const CHandle<Thing> handle = thingP->self.Handle();
        thingP.reset();
        EXPECT_EQ(handle.Get(), nullptr);
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(gotL, 0);
        EXPECT_EQ(s_assertedL, kThreads * kTurns);
    }
}

}   // namespace
