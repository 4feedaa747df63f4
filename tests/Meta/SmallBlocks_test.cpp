#include "Meta/SmallBlocks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <random>
#include <span>
#include <thread>
#include <vector>

namespace {

/** A block that somebody holds, full of a number of its own: one that two hold shows. */
struct Held {
    std::uint8_t* blockP;
    std::size_t bytes;
    std::uint8_t mark;
    [[nodiscard]] std::span<std::uint8_t> All() const { return {blockP, bytes}; }
};

/** Blocks of every size come and go on several threads, and what one thread took another gives back. */
TEST(SmallBlocks, NobodysBlockIsGivenTwice) {
    constexpr int kThreads = 4, kRounds = 20'000;
    std::vector<std::vector<Held>> left(kThreads);
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t)
        threads.emplace_back([&held = left[static_cast<std::size_t>(t)], t] {
            std::mt19937 random(static_cast<unsigned>(t));
            for (int round = 0; round < kRounds; ++round) {
                if (held.size() < 500 || random() % 2 == 0) {
                    const std::size_t bytes = 1 + random() % 300;   // some are the heap's
                    const Held one{static_cast<std::uint8_t*>(SmallBlocks::Take(bytes)), bytes,
                                   static_cast<std::uint8_t>(random())};
                    ASSERT_EQ(reinterpret_cast<std::uintptr_t>(one.blockP) % 8, 0U);
                    std::ranges::fill(one.All(), one.mark);
                    held.push_back(one);
                    continue;
                }
                std::swap(held[random() % held.size()], held.back());
                const Held one = held.back();
                held.pop_back();
                ASSERT_EQ(std::ranges::count(one.All(), one.mark), static_cast<std::ptrdiff_t>(one.bytes));
                SmallBlocks::Give(one.blockP, one.bytes);
            }
        });
    for (std::thread& thread : threads) thread.join();
    for (const std::vector<Held>& held : left)
        for (const Held& one : held) {
            EXPECT_EQ(std::ranges::count(one.All(), one.mark), static_cast<std::ptrdiff_t>(one.bytes));
            SmallBlocks::Give(one.blockP, one.bytes);
        }
}

}   // namespace
