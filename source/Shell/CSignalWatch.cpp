#include "Shell/CSignalWatch.h"

#include <poll.h>
#include <sys/signalfd.h>
#include <unistd.h>

CSignalWatch::CSignalWatch(std::function<void()> ended) {
    ::sigemptyset(&i_signals);
    for (const int signalL : {SIGTERM, SIGINT, SIGHUP}) ::sigaddset(&i_signals, signalL);
    ::pthread_sigmask(SIG_BLOCK, &i_signals, nullptr);
    if (::pipe(i_stop) != 0) return;
    i_thread = std::thread([this, ended = std::move(ended)] {
        const int descriptor = ::signalfd(-1, &i_signals, SFD_CLOEXEC);
        pollfd waits[2] = {{descriptor, POLLIN, 0}, {i_stop[0], POLLIN, 0}};
        while (descriptor >= 0 && ::poll(waits, 2, -1) >= 0 && waits[1].revents == 0) {
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
