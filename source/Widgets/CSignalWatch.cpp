#include "Widgets/CSignalWatch.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>
#include <cerrno>

namespace {

sigset_t EndSignals() {
    sigset_t set{};
    ::sigemptyset(&set);
    for (const int signalL : {SIGTERM, SIGINT, SIGHUP}) ::sigaddset(&set, signalL);
    return set;
}

/** The system's own action again. */
void Unblock() {
    const sigset_t set = EndSignals();
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

}   // namespace

void CSignalWatch::Block() {
    const sigset_t set = EndSignals();
    ::pthread_atfork(nullptr, nullptr, &Unblock);   // a helper program must not inherit a deaf ear
    ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

CSignalWatch::CSignalWatch(std::function<void()> ended) {
    if (::pipe2(i_stop, O_CLOEXEC) != 0) {
        Unblock();
        return;
    }
    i_thread = std::thread([this, ended = std::move(ended)] {
        const sigset_t set = EndSignals();
        const int descriptor = ::signalfd(-1, &set, SFD_CLOEXEC);
        pollfd waits[2] = {{descriptor, POLLIN, 0}, {i_stop[0], POLLIN, 0}};
        while (descriptor >= 0 && (::poll(waits, 2, -1) >= 0 || errno == EINTR) && waits[1].revents == 0) {
            signalfd_siginfo info{};
            if ((waits[0].revents & POLLIN) != 0 && ::read(descriptor, &info, sizeof info) == sizeof info) ended();
        }
        if (descriptor >= 0) ::close(descriptor);
    });
}

CSignalWatch::~CSignalWatch() {
    if (i_stop[1] >= 0) ::close(i_stop[1]);
    if (i_thread.joinable()) i_thread.join();
    if (i_stop[0] >= 0) ::close(i_stop[0]);
}
