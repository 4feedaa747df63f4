#include "Threads/CSemaphore.h"

#include <unistd.h>

#include <fstream>

#include "Threads/ThreadTest.h"

namespace {

class SemaphoreTest : public ThreadTest {};

TEST_F(SemaphoreTest, ASignalBeforeTheWaitIsTakenOnce) {
    OnWorker([] {
        CSemaphore semaphore("test");
        semaphore.Signal();
        semaphore.Signal();   // binary: still one
        EXPECT_EQ(semaphore.Wait(WaitMode::kForever), noErr);
        EXPECT_EQ(semaphore.WaitPreemptive(1), semaphoreTimedOutErr);
        semaphore.Signal();
        semaphore.Reset();
        EXPECT_EQ(semaphore.WaitPreemptive(1), semaphoreTimedOutErr);
    });
}

TEST_F(SemaphoreTest, ATimeLimitsTheTurnNotTheWait) {
    CSemaphore semaphore("test");
    std::atomic<bool> overB{false};
    std::thread other([&] {
        TagThread(99, true);
        EXPECT_EQ(semaphore.Wait(1U), noErr);
        overB = true;
    });
    CSemaphore never("turns");
    for (int turn = 0; turn < 20; ++turn) EXPECT_EQ(never.WaitPreemptive(1), semaphoreTimedOutErr);
    EXPECT_FALSE(overB);
    semaphore.Signal();
    other.join();
}

TEST_F(SemaphoreTest, DisposedUnderItsWaitersTheyAllReturnTheStoredStatus) {
    for (int round = 0; round < 50; ++round) {
        auto semaphoreP = std::make_unique<CSemaphore>("test");
        semaphoreP->SetErr(abortErr);
        std::atomic<int> inL{0};
        std::vector<std::thread> waiters;
        for (int t = 0; t < 3; ++t)
            waiters.emplace_back([&, semaphore = semaphoreP.get()] {
                TagThread(100, true);
                ++inL;
                EXPECT_EQ(semaphore->Wait(WaitMode::kForever), abortErr);
            });
        while (inL < 3) std::this_thread::yield();
        semaphoreP->Signal(true);
        semaphoreP->Signal();   // disposed: does nothing
        for (std::thread& waiter : waiters) waiter.join();
        EXPECT_EQ(semaphoreP->Wait(WaitMode::kForever), abortErr);   // at once
        semaphoreP.reset();
    }
}

/** The system has put that thread of ours to sleep. */
bool IsAsleep(int id) {
    std::ifstream status("/proc/self/task/" + std::to_string(id) + "/stat");
    std::string line;
    return id != 0 && std::getline(status, line) && line.find(") S ") != line.npos;
}

TEST_F(SemaphoreTest, DestroyedWhileOthersSleepOnIt) {
    auto semaphoreP = std::make_unique<CSemaphore>("test");
    std::atomic<bool> overB{false};
    std::atomic<int> waiterID{0};
    std::thread waiter([&, semaphore = semaphoreP.get()] {
        TagThread(101, true);
        waiterID = ::gettid();
        EXPECT_EQ(semaphore->Wait(WaitMode::kForever), noErr);
        overB = true;
    });
    while (!IsAsleep(waiterID)) std::this_thread::yield();
    semaphoreP.reset();
    waiter.join();
    EXPECT_TRUE(overB);
}

TEST_F(SemaphoreTest, AWaitOfTheMainThreadHandlesCallsAndTimers) {
    CSemaphore semaphore("test");
    std::string done;
    i_host.i_loop.Post([&] { done += 'c'; });
    i_host.i_loop.PostInput([&] { done += 'u'; });
    i_host.i_loop.SetTimer(0, 10, [&] {
        done += 't';
        semaphore.Signal();
    });
    i_host.PostEvents().AddCall([&] { done += 'p'; });
    i_clock.Advance(0.0101);
    EXPECT_EQ(semaphore.Wait(WaitMode::kForever), noErr);
    EXPECT_EQ(done, "ctp");   // the user waits
    semaphore.Signal();
    EXPECT_EQ(semaphore.Wait(WaitMode::kMain_EventLoop), noErr);
    i_host.i_loop.Post([&] { i_host.i_loop.Post([&] { semaphore.Signal(); }); });
    EXPECT_EQ(semaphore.Wait(WaitMode::kMain_EventLoop), noErr);
    EXPECT_EQ(done, "ctpu");
}

TEST_F(SemaphoreTest, ASongKeepsItsPictureDuringAWait) {
    i_host.i_songB = true;
    CSemaphore semaphore("test");
    i_host.i_loop.Post([&] { semaphore.Signal(); });
    EXPECT_EQ(semaphore.Wait(WaitMode::kForever), noErr);
    EXPECT_EQ(i_host.i_idled, "semaphore wait! ");
}

TEST_F(SemaphoreTest, AMessageMayDestroyTheSemaphoreThatTheMainThreadWaitsOn) {
    auto semaphoreP = std::make_unique<CSemaphore>("test");
    i_host.i_loop.Post([&] { semaphoreP.reset(); });
    EXPECT_EQ(semaphoreP->Wait(WaitMode::kForever), noErr);
    EXPECT_EQ(semaphoreP, nullptr);
}

TEST_F(SemaphoreTest, TheMainThreadIsWokenByASignalFromAWorker) {
    CSemaphore there("there"), back("back");
    std::thread other([&] {
        TagThread(102, true);
        for (int n = 0; n < 2000; ++n) {
            EXPECT_EQ(there.Wait(WaitMode::kForever), noErr);
            back.Signal();
        }
    });
    for (int n = 0; n < 2000;
         ++n) {   // 2000 turns of 10 ms would be 20 s: a lost wake-up shows in the time of the test
        there.Signal();
        EXPECT_EQ(back.Wait(WaitMode::kForever), noErr);
    }
    other.join();
}

}   // namespace
