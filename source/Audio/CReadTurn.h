#pragma once
#include <atomic>

#include "Threads/WaitMode.h"

/** Who reads a spool: the render thread, which only tries and never waits, or others, who go before it.
    Threads  TryBegin and End on the render thread; Others lives on any, several at once. */
class CReadTurn {
public:
    [[nodiscard]] bool TryBegin() noexcept {
        i_readingB.store(true);   // first: whoever comes now either sees it or is seen
        if (i_othersL.load() == 0) return true;
        i_readingB.store(false);
        return false;
    }
    void End() noexcept { i_readingB.store(false); }

    /** Keeps the render thread away for as long as it lives; waits for its block to be done. */
    class Others {
    public:
        explicit Others(CReadTurn& turn) : i_turn(turn) {
            i_turn.i_othersL.fetch_add(1);
            while (i_turn.i_readingB.load()) WaitOneTurn();
        }
        ~Others() { i_turn.i_othersL.fetch_sub(1); }
        Others(const Others&) = delete;
        Others& operator=(const Others&) = delete;

    private:
        CReadTurn& i_turn;
    };

private:
    std::atomic<bool> i_readingB{false};
    std::atomic<int> i_othersL{0};
};
