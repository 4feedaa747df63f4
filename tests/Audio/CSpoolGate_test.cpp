#include "Audio/CSpoolGate.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

TEST(CSpoolGate, LetsThroughUpToANumberThatWasGivenOut) {
    CSpoolGate gate;
    EXPECT_TRUE(gate.IsOpen(0));
    EXPECT_EQ(gate.Next(), 1);
    EXPECT_EQ(gate.Next(), 2);
    EXPECT_FALSE(gate.IsOpen(1));
    gate.Reach(1);
    EXPECT_TRUE(gate.IsOpen(1));
    EXPECT_FALSE(gate.IsOpen(2));
    gate.Reach(9);   // nobody waits for what was not given out, so it cannot have come
    gate.Reach(1);
    EXPECT_TRUE(gate.IsOpen(2));
    EXPECT_EQ(gate.Next(), 3);
    EXPECT_FALSE(gate.IsOpen(3));
    gate.ForceOpen();
    EXPECT_EQ(gate.Next(), 4);
    EXPECT_TRUE(gate.IsOpen(4));
}

TEST(CSpoolGate, EveryWaitOfANumberEnds) {
    CSpoolGate gate;
    for (int round = 0; round < 50; ++round) {
        const long firstL = gate.Next(), secondL = gate.Next();
        std::atomic<long> earlyL{0}, passedL{0};
        std::atomic<bool> secondB{false};
        const auto wait = [&](long numberL) {
            gate.Wait(numberL, WaitMode::kForever);
            if (numberL == secondL && !secondB) ++earlyL;
            ++passedL;
        };
        std::thread waits[] = {std::thread(wait, firstL), std::thread(wait, firstL), std::thread(wait, secondL),
                               std::thread(wait, secondL)};
        gate.Reach(firstL);
        waits[0].join();
        waits[1].join();
        secondB = true;
        gate.Reach(secondL);
        waits[2].join();
        waits[3].join();
        EXPECT_EQ(earlyL, 0);
        EXPECT_EQ(passedL, 4);
    }
}
