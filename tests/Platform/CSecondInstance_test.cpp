#include "Platform/CSecondInstance.h"

#include <fcntl.h>
#include <linux/sockios.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>
#include <algorithm>
#include <array>
#include <barrier>
#include <cerrno>
#include <condition_variable>
#include <filesystem>
#include <fstream>
#include <future>
#include <mutex>
#include <thread>

#include "Platform/Patience.h"
#include "Platform/ScriptedClock.h"

namespace {

using Role = CSecondInstance::Role;
using Path = std::filesystem::path;

/** The texts that came, with a wait that ends when the wished number is there. */
class Inbox {
public:
    CSecondInstance::Received Taker() {
        return [this](std::string text) {
            const std::scoped_lock guard(i_lock);
            i_texts.push_back(std::move(text));
            i_came.notify_all();
        };
    }
    std::vector<std::string> WaitFor(std::size_t count) {
        std::unique_lock guard(i_lock);
        i_came.wait_for(guard, kPatience, [&] { return i_texts.size() >= count; });
        return i_texts;
    }

private:
    std::mutex i_lock;
    std::condition_variable i_came;
    std::vector<std::string> i_texts;
};

class SecondInstanceTest : public testing::Test {
protected:
    void SetUp() override {
        std::string pattern = "/tmp/second-XXXXXX";
        i_folder = ::mkdtemp(pattern.data());
    }
    void TearDown() override { std::filesystem::remove_all(i_folder); }
    /** A raw connection to the first instance, as a foreign program would make it. */
    static int Connect(const CSecondInstance& first) {
        struct sockaddr_un address {};
        address.sun_family = AF_UNIX;
        const std::string path = first.SocketFile();
        path.copy(address.sun_path, sizeof address.sun_path - 1);
        const int handle = ::socket(AF_UNIX, SOCK_STREAM, 0);
        EXPECT_EQ(::connect(handle, reinterpret_cast<const struct sockaddr*>(&address), sizeof address), 0);
        return handle;
    }
    Path i_folder;
};

TEST_F(SecondInstanceTest, TheSecondSendsItsTextAndTheNextIsFirstAgain) {
    Inbox inbox;
    {
        CSecondInstance first(i_folder / "run", "/root"), second(i_folder / "run", "/root"),
            other(i_folder / "run", "/2");
        ASSERT_EQ(first.Start("not sent"), Role::kFirst);
        first.Listen(inbox.Taker());
        EXPECT_EQ(second.Start("/songs/Ä song.zip"), Role::kSecond);
        EXPECT_EQ(second.Start(""), Role::kSecond);
        EXPECT_EQ(second.Start(std::string(CSecondInstance::kText_MaxBytes, 'x')), Role::kSecond);
        EXPECT_EQ(second.Start(std::string(CSecondInstance::kText_MaxBytes + 1, 'x')), Role::kFailed);
        EXPECT_EQ(second.LastErrno(), E2BIG);
        EXPECT_EQ(inbox.WaitFor(3), (std::vector<std::string>{"/songs/Ä song.zip", "",
                                                              std::string(CSecondInstance::kText_MaxBytes, 'x')}));
        EXPECT_EQ(other.Start("x"), Role::kFirst) << "another library is another host";
        struct stat info {};
        for (const Path& file : {first.SocketFile(), first.LockFile()}) {
            ASSERT_EQ(::stat(file.c_str(), &info), 0);
            EXPECT_EQ(info.st_mode & 0777U, 0600U) << file;
        }
        ASSERT_EQ(::stat((i_folder / "run").c_str(), &info), 0);
        EXPECT_EQ(info.st_mode & 0777U, 0700U);
    }
    CSecondInstance next(i_folder / "run", "/root");
    EXPECT_EQ(next.Start("x"), Role::kFirst);
}

TEST_F(SecondInstanceTest, OneRootUnderTwoNames) {
    std::filesystem::create_directories(i_folder / "library");
    std::filesystem::create_directory_symlink(i_folder / "library", i_folder / "link");
    const CSecondInstance one(i_folder, i_folder / "library"), two(i_folder, i_folder / "link" / "." / "");
    EXPECT_EQ(one.SocketFile(), two.SocketFile());
}

TEST_F(SecondInstanceTest, OfManyStartsAtOnceExactlyOneIsFirst) {
    for (int round = 0; round < 10; ++round) {
        constexpr int kStarts = 8;
        std::barrier gate(kStarts);
        std::array<Role, kStarts> roles{};
        Inbox inbox;
        std::vector<std::unique_ptr<CSecondInstance>> all;
        std::vector<std::thread> threads;
        for (int n = 0; n < kStarts; ++n) all.push_back(std::make_unique<CSecondInstance>(i_folder, "/root"));
        for (std::size_t n = 0; n < kStarts; ++n)
            threads.emplace_back([&, n] {
                gate.arrive_and_wait();
                roles[n] = all[n]->Start(std::to_string(n));
                if (roles[n] == Role::kFirst) all[n]->Listen(inbox.Taker());
            });
        for (std::thread& thread : threads) thread.join();
        EXPECT_EQ(std::ranges::count(roles, Role::kFirst), 1) << round;
        EXPECT_EQ(std::ranges::count(roles, Role::kSecond), kStarts - 1) << round;
        EXPECT_EQ(inbox.WaitFor(kStarts - 1).size(), static_cast<std::size_t>(kStarts - 1));
    }
}

TEST_F(SecondInstanceTest, OneThatLeavesKeepsItsPlaceUntilItHasGone) {
    auto firstP = std::make_unique<CSecondInstance>(i_folder, "/root");
    ASSERT_EQ(firstP->Start("x"), Role::kFirst);
    Inbox inbox;
    firstP->Listen(inbox.Taker());
    firstP->StopListening();
    const int handle = ::open(firstP->LockFile().c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_NE(::flock(handle, LOCK_EX | LOCK_NB), 0) << "it may still save";
    ::close(handle);
    CSecondInstance second(i_folder, "/root");
    auto role = std::async(std::launch::async, [&] { return second.Start("x"); });
    firstP.reset();
    EXPECT_EQ(role.get(), Role::kFirst);
}

TEST_F(SecondInstanceTest, WhatACrashLeftIsCleanedUp) {
    const pid_t child = ::fork();
    ASSERT_GE(child, 0);
    if (child == 0) {
        CSecondInstance crashing(i_folder, "/root");
        ::_exit(crashing.Start("x") == Role::kFirst ? 7 : 1);   // no destructor: socket and lock file stay
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    ASSERT_EQ(WEXITSTATUS(status), 7);
    CSecondInstance next(i_folder, "/root"), second(i_folder, "/root");
    ASSERT_TRUE(std::filesystem::exists(next.SocketFile()));
    EXPECT_EQ(next.Start("x"), Role::kFirst);
    Inbox inbox;
    next.Listen(inbox.Taker());
    EXPECT_EQ(second.Start("y"), Role::kSecond);
    EXPECT_EQ(inbox.WaitFor(1), std::vector<std::string>{"y"});
}

TEST_F(SecondInstanceTest, APathLongerThanAnAddress) {
    const Path deep = i_folder / std::string(100, 'a') / std::string(100, 'b');
    CSecondInstance first(deep, "/root"), second(deep, "/root");
    ASSERT_EQ(first.Start("x"), Role::kFirst);
    Inbox inbox;
    first.Listen(inbox.Taker());
    EXPECT_EQ(second.Start("y"), Role::kSecond);
    EXPECT_EQ(inbox.WaitFor(1), std::vector<std::string>{"y"});
}

TEST_F(SecondInstanceTest, BadMessagesAreDroppedAndTheListenerGoesOn) {
    CSecondInstance first(i_folder, "/root"), second(i_folder, "/root");
    ASSERT_EQ(first.Start("x"), Role::kFirst);
    Inbox inbox;
    first.Listen(inbox.Taker());
    std::vector<std::string> messages = {"", std::string(1, '\0'),
                                         std::string(3, '\0') +
                                             "\x05"
                                             "abc",
                                         "\xFF\xFF\xFF\xFF rest"};
    messages.push_back(std::string("\0\x01\0\x01", 4));   // one byte over the limit
    messages.back().append(65537, 'x');
    for (const std::string& message : messages) {
        const int handle = Connect(first);
        static_cast<void>(::send(handle, message.data(), message.size(), MSG_NOSIGNAL));
        ::close(handle);
    }
    const int slow = Connect(first);   // says nothing and stays: it costs its time limit, not the listener
    EXPECT_EQ(second.Start("after all that"), Role::kSecond);
    ::close(slow);
    EXPECT_EQ(inbox.WaitFor(1), std::vector<std::string>{"after all that"});
}

TEST_F(SecondInstanceTest, ASilentClientHoldsUpNoEnd) {
    const ScriptedClock clock;   // stands: no time limit ends the wait
    CSecondInstance first(i_folder, "/root");
    ASSERT_EQ(first.Start({}), Role::kFirst);
    first.Listen([](std::string) {});
    const int silent = Connect(first);
    ASSERT_EQ(::send(silent, "\0\0", 2, 0), 2);   // half a length
    for (int unreadL = 1; unreadL > 0;) ASSERT_EQ(::ioctl(silent, SIOCOUTQ, &unreadL), 0);
    first.StopListening();
    ::close(silent);
}

TEST_F(SecondInstanceTest, NoFolderIsAFailure) {
    { std::ofstream(i_folder / "file") << "x"; }
    CSecondInstance one(i_folder / "file", "/root"), two(i_folder / "file" / "deeper", "/root");
    EXPECT_EQ(one.Start("x"), Role::kFailed);
    EXPECT_EQ(one.LastErrno(), ENOTDIR);
    EXPECT_EQ(two.Start("x"), Role::kFailed);
}

}   // namespace
