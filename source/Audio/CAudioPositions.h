#pragma once
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

/** Which frame of the song each frame of the output is, for the blocks that the output may still hold.
    Threads  Add on one thread, which never waits; At on any, beside it. */
class CAudioPositions {
public:
    /** The next `framesL` frames of the output: the first `soundL` of them run from frame `fromL` of the song to `toL`,
        the rest stands there. */
    void Add(std::size_t framesL, std::uint64_t fromL, std::uint64_t toL, std::size_t soundL) noexcept;
    /** The frame of the song that frame `outputL` of the output is. */
    [[nodiscard]] double At(std::uint64_t outputL) const noexcept;
    /** Frames of the output added so far. */
    [[nodiscard]] std::uint64_t End() const noexcept { return i_endL.load(std::memory_order_acquire); }

private:
    static constexpr std::size_t kBlocks = 128;   // far more than an output holds
    struct Block {
        std::atomic<std::uint64_t> startL{0}, fromL{0}, toL{0}, soundL{0};
    };
    std::array<Block, kBlocks> i_blocks;
    std::atomic<std::uint64_t> i_countL{0};   // blocks added
    std::atomic<std::uint64_t> i_endL{0};
};
