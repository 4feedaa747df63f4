#pragma once
#include <atomic>

/** How far the application is: constructing, ready, quitting, no more saves, one way and in that order; and what goes on
    meanwhile.
    Threads  any asks; the main one sets. */
class CAppState {
public:
    /** True while windows and database come up. */
    [[nodiscard]] bool IsInitializing() const { return i_initializingB.load(std::memory_order_relaxed); }
    /** True from the last act of the start-up on; nothing idles before. */
    [[nodiscard]] bool IsReady() const { return i_readyB.load(std::memory_order_acquire); }
    /** True from the permission to quit on. */
    [[nodiscard]] bool IsShutdown() const { return i_shutdownB.load(std::memory_order_acquire); }
    /** True once no save may start any more. */
    [[nodiscard]] bool NoMoreSaves() const { return i_noMoreSavesB.load(std::memory_order_acquire); }
    /** True once the browser window stands, or never will (headless); false again once it is gone. */
    [[nodiscard]] bool HasMainWindow() const { return i_mainWindowB.load(std::memory_order_acquire); }

    /** True when it was initializing before. */
    bool SetInitializing(bool onB) { return i_initializingB.exchange(onB, std::memory_order_relaxed); }
    void SetReady() { i_readyB.store(true, std::memory_order_release); }
    /** False when that was known. */
    bool SetShutdown() { return !i_shutdownB.exchange(true, std::memory_order_acq_rel); }
    void SetNoMoreSaves() { i_noMoreSavesB.store(true, std::memory_order_release); }
    void SetMainWindow(bool thereB) { i_mainWindowB.store(thereB, std::memory_order_release); }

private:
    std::atomic<bool> i_initializingB{false}, i_readyB{false}, i_shutdownB{false}, i_noMoreSavesB{false},
        i_mainWindowB{false};
};
