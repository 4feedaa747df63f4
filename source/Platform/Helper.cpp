#include "Platform/Helper.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#include <cerrno>
#include <csignal>
#include <mutex>

extern "C" {   // glibc 2.36 forgot it in its header
#include <sys/pidfd.h>
}

namespace {

/** posix_spawn's two records, ended with their scope. */
class SpawnSetup {
public:
    SpawnSetup() {
        posix_spawnattr_init(&attributes);
        posix_spawn_file_actions_init(&actions);
        sigset_t none, all;
        sigemptyset(&none);
        sigfillset(&all);
        posix_spawnattr_setsigmask(&attributes, &none);
        posix_spawnattr_setsigdefault(&attributes, &all);
        posix_spawnattr_setpgroup(&attributes, 0);
        posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETPGROUP);
        posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&actions, 3);
    }
    ~SpawnSetup() {
        posix_spawn_file_actions_destroy(&actions);
        posix_spawnattr_destroy(&attributes);
    }
    SpawnSetup(const SpawnSetup&) = delete;
    SpawnSetup& operator=(const SpawnSetup&) = delete;

    posix_spawnattr_t attributes{};
    posix_spawn_file_actions_t actions{};
};

int Spawn(const std::filesystem::path& program, const std::vector<std::string>& arguments, pid_t& child) {
    const SpawnSetup setup;
    std::string name = program.string();
    std::vector<std::string> texts = arguments;
    std::vector<char*> list{name.data()};
    for (std::string& text : texts) list.push_back(text.data());
    list.push_back(nullptr);
    return ::posix_spawnp(&child, name.c_str(), &setup.actions, &setup.attributes, list.data(), environ);
}

/** True when the child has ended in time; it is not reaped yet. */
bool Ended(int pidHandle, int milliseconds) {
    struct pollfd one = {pidHandle, POLLIN, 0};
    int ready = 0;
    do ready = ::poll(&one, 1, milliseconds);
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

int Reap(pid_t child) {
    int status = 0;
    while (::waitpid(child, &status, 0) < 0)
        if (errno != EINTR) return 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

}   // namespace

HelperResult RunHelper(const std::filesystem::path& program, const std::vector<std::string>& arguments,
                       double seconds) {
    HelperResult result;
    pid_t child = 0;
    result.errnoL = Spawn(program, arguments, child);
    if (result.errnoL != 0) return result;
    const int handle = ::pidfd_open(child, 0);
    if (handle < 0) {   // nothing to wait on with a limit: not left running unseen
        result.errnoL = errno;
        ::kill(-child, SIGKILL);
        Reap(child);
        return result;
    }
    constexpr double kLongest_Seconds = 1e6;   // milliseconds must fit an int
    const double bounded = seconds < 0 ? 0 : seconds < kLongest_Seconds ? seconds : kLongest_Seconds;
    if (!Ended(handle, static_cast<int>(bounded * 1000))) {
        result.timedOutB = true;
        ::kill(-child, SIGTERM);
        if (!Ended(handle, 1000)) ::kill(-child, SIGKILL);
    }
    ::close(handle);
    result.exitCode = Reap(child);
    return result;
}

int StartHelper(const std::filesystem::path& program, const std::vector<std::string>& arguments) {
    static std::mutex s_lock;
    static std::vector<pid_t> s_started;   // guarded by s_lock; those that ended are reaped at the next start
    pid_t child = 0;
    const int err = Spawn(program, arguments, child);
    const std::scoped_lock guard(s_lock);
    std::erase_if(s_started, [](pid_t earlier) { return ::waitpid(earlier, nullptr, WNOHANG) != 0; });
    if (err == 0) s_started.push_back(child);
    return err;
}
