#pragma once
#include <csignal>
#include <functional>
#include <thread>

/** Calls `ended` when the system wants the process to end (SIGTERM, SIGINT, SIGHUP), on a thread of its own: there, unlike
    in a handler, everything may be called. Make it before any other thread starts: they must not take the signals. */
class CSignalWatch {
public:
    explicit CSignalWatch(std::function<void()> ended);
    ~CSignalWatch();
    CSignalWatch(const CSignalWatch&) = delete;
    CSignalWatch& operator=(const CSignalWatch&) = delete;

private:
    sigset_t i_signals{};
    int i_stop[2] = {-1, -1};   // closing the writing end wakes the thread
    std::thread i_thread;
};
