#pragma once
#include <array>
#include <cstdint>
#include <vector>

#include "Graphics/CPixels.h"

/** The hq4x filter: pixels of depth 32 scaled by 4 in each direction, with smooth edges.
    Each pixel asks which of its 8 neighbours look different from it, and which of the 4 pairs of neighbours round a
    corner look different from each other. The answers pick, for each quarter of the 4 x 4 block, how the neighbours are
    mixed. Outside the picture the nearest row or column is repeated.
    Threads  one user at a time for an object; InitTables from any.
    Errors   paramErr for another depth, or a destination that is not 4 times as wide and high.
    Source   the published hq4x filter of M. Stepin: colour table, thresholds, patterns and weights. */
class CHq4x {
public:
    CHq4x();

    /** Builds the table of patterns, once a process: some microseconds. The first object does it where nobody has. */
    static void InitTables();

    /** Scales all of `source` into all of `dest`. */
    OSErr Scale(const CPixels& source, CPixels& dest);

    /** Y, U and V of the low 24 bits in the bits 23-16, 15-8 and 7-0, each truncated. White has the entry 0: the
        table of the filter was never filled to its last entry, and pictures are as that made them.
        The table of 2^24 entries is worked out where it is asked for: the same values without 64 MB and its time. */
    [[nodiscard]] static constexpr std::uint32_t Yuv(Pixel32 pixel) noexcept {
        const std::int32_t red = pixel >> 16 & 0xFF, green = pixel >> 8 & 0xFF, blue = pixel & 0xFF;
        if ((pixel & 0xFFFFFFU) == 0xFFFFFFU) return 0;
        const std::int32_t y = (299 * red + 587 * green + 114 * blue) / 1000;
        const std::int32_t u = (-169 * red - 331 * green + 500 * blue + 128000) / 1000;   // never below 500
        const std::int32_t v = (500 * red - 419 * green - 81 * blue + 128000) / 1000;
        return static_cast<std::uint32_t>(y << 16 | u << 8 | v);
    }
    /** Whether two pixels look different. Equal ones never do. */
    [[nodiscard]] static bool Different(Pixel32 a, Pixel32 b) noexcept;

private:
    struct Known {
        std::uint64_t both = 0;   // 0 is a pixel and itself, which is never asked
        std::uint32_t differentL = 0;
    };
    [[nodiscard]] unsigned Differs(Pixel32 a, Pixel32 b) noexcept;
    void MarkBusy(const Pixel32* upP, const Pixel32* midP, const Pixel32* downP, std::size_t widthL);
    void ScaleRow(const Pixel32* upP, const Pixel32* midP, const Pixel32* downP, std::size_t widthL, Pixel32* outP,
                  std::size_t rowPixels);
    void Block(const std::array<Pixel32, 9>& around, Pixel32* outP, std::size_t rowPixels);

    std::array<Known, 1024> i_known{};       // answers of Different by a hash of the two pixels
    std::vector<std::uint32_t> i_vertical;   // per column: bits that differ from the pixels above and below
    std::vector<std::uint32_t> i_busy;       // per column: 0 when all of the 3 x 3 pixels are equal
};
