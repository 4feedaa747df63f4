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
    constexpr int kThreads = 10;
    auto thingP = std::make_unique<Thing>();
    const CHandle<Thing> handle = thingP->self.Handle();
    std::atomic<int> startedL{0}, askedL{0}, gotL{0}, endedL{0};
    std::atomic<bool> stopB{false};
    for (int n = 0; n < kThreads; ++n)
        ASSERT_NE(CThreadManager::Fork(
                      ForkKind::kPreemptive,
                      [&, mine = handle](void*) {
                          for (bool firstB = true; !stopB; firstB = false) {
                              const CHandle<Thing> copy = mine;
                              gotL += copy.Get() != nullptr ? 1 : 0;
                              ++askedL;
                              startedL += firstB ? 1 : 0;
                          }
                          return noErr;
                      },
                      [&](void*, OSErr) {
                          ++endedL;
                          return noErr;
                      },
                      nullptr, "asks"),
                  0);
    ASSERT_TRUE(RunUntil([&] { return startedL == kThreads; }));
    thingP.reset();
    EXPECT_EQ(handle.Get(), nullptr);
    stopB = true;
    ASSERT_TRUE(RunUntil([&] { return endedL == kThreads; }));
    EXPECT_EQ(gotL, 0);
    EXPECT_EQ(s_assertedL, askedL);
}

}   // namespace
