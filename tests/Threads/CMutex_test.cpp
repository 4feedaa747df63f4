#include "Threads/CMutex.h"

#include <cerrno>
#include <thread>

#include "Threads/ThreadTest.h"

namespace {

class MutexTest : public ThreadTest {};

TEST_F(MutexTest, EnteringTwiceOnOneThreadIsRefusedAndReported) {
    const CMutex mutex;
    ASSERT_EQ(mutex.Enter(), noErr);
    EXPECT_EQ(mutex.Holders(), 1);
    EXPECT_EQ(mutex.Enter(), static_cast<OSErr>(EDEADLK));
    EXPECT_EQ(mutex.Err(), static_cast<OSErr>(EDEADLK));
    EXPECT_TRUE(Logged("Very bad juju entering a critical region: "));
    EXPECT_TRUE(Logged("Assert Fail: entering a critical region"));   // by MT_CrashPlease
    EXPECT_EQ(mutex.Leave(), noErr);
    EXPECT_EQ(mutex.Holders(), 0);
}

TEST_F(MutexTest, OnlyTheHolderLeaves) {
    const CMutex mutex;
    EXPECT_EQ(mutex.Leave(), static_cast<OSErr>(EPERM));
    EXPECT_TRUE(Logged("Mostly bad juju exiting a critical region: "));
    ASSERT_EQ(mutex.Enter(), noErr);
    OSErr err = noErr;
    std::thread([&] { err = mutex.Leave(); }).join();
    EXPECT_EQ(err, static_cast<OSErr>(EPERM));
    EXPECT_EQ(mutex.Holders(), 1);
    EXPECT_EQ(mutex.Leave(), noErr);
}

TEST_F(MutexTest, TurnedOffItLocksNothing) {
    CMutex mutex;
    mutex.TurnOff(true);
    EXPECT_EQ(mutex.Enter(), noErr);
    EXPECT_EQ(mutex.Enter(), noErr);
    EXPECT_EQ(mutex.Holders(), 0);
}

TEST_F(MutexTest, NoChangeOfAValueIsLost) {
    CMutexT<long> value(0);
    CMutex_bool flag;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([&] {
            for (int n = 0; n < 5000; ++n) value.With([](long& v) { ++v; });
            flag.Set(true);
        });
    for (std::thread& thread : threads) thread.join();
    EXPECT_EQ(value.Get(), 20000);
    EXPECT_EQ(value.Exchange(7), 20000);
    EXPECT_EQ(value.Get(), 7);
    EXPECT_TRUE(flag.Get());
}

TEST_F(MutexTest, AnUnknownCodeIsCalledUnknown) {
    NumberedReport("step", static_cast<OSErr>(30001));
    EXPECT_TRUE(Logged("step: Unknown\n"));
    NumberedReport("step", dskFulErr);
    EXPECT_TRUE(Logged("step: Disk is full\n"));
}

}   // namespace
