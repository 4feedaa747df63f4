#pragma once
#include <csignal>
#include <functional>
#include <thread>

/** Calls `ended` when the system wants the process to end (SIGTERM, SIGINT, SIGHUP), on a thread of its own: there, unlike
    in a handler, everything may be called. Block comes first in the process: a thread that was started before it would take
    the signals, and the process would end at once. */
class CSignalWatch {
public:
    /** Before any other thread starts; they inherit it. */
    static void Block();

    explicit CSignalWatch(std::function<void()> ended);
    ~CSignalWatch();
    CSignalWatch(const CSignalWatch&) = delete;
    CSignalWatch& operator=(const CSignalWatch&) = delete;

private:
    int i_stop[2] = {-1, -1};   // closing the writing end wakes the thread
    std::thread i_thread;
};
