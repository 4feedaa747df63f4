#include "Audio/CAudioPositions.h"

#include <algorithm>

void CAudioPositions::Add(std::size_t framesL, std::uint64_t fromL, std::uint64_t toL, std::size_t soundL) noexcept {
    const std::uint64_t countL = i_countL.load(std::memory_order_relaxed);
    const std::uint64_t endL = i_endL.load(std::memory_order_relaxed);
    Block& block = i_blocks[countL % kBlocks];
    block.startL.store(endL);
    block.fromL.store(fromL);
    block.toL.store(toL);
    block.soundL.store(soundL);
    i_endL.store(endL + framesL);
    i_countL.store(countL + 1);
}

double CAudioPositions::At(std::uint64_t outputL) const noexcept {
    for (;;) {
        const std::uint64_t countL = i_countL.load();
        if (countL == 0) return 0;
        // From the newest back to the one in which the frame lies; older ones than are kept count as the oldest.
        const std::uint64_t mostL = std::min<std::uint64_t>(countL, kBlocks / 2);
        double place = 0;
        for (std::uint64_t n = 1; n <= mostL; ++n) {
            const Block& block = i_blocks[(countL - n) % kBlocks];
            const std::uint64_t startL = block.startL.load(), soundL = block.soundL.load();
            const auto fromF = static_cast<double>(block.fromL.load()), toF = static_cast<double>(block.toL.load());
            const std::uint64_t intoL = outputL > startL ? std::min(outputL - startL, soundL) : 0;
            place =
                soundL == 0 ? toF : fromF + (toF - fromF) * static_cast<double>(intoL) / static_cast<double>(soundL);
            if (startL <= outputL) break;
        }
        // The half that was looked at is written over only after as many new blocks.
        if (i_countL.load() - countL < kBlocks / 2) return place;
    }
}
