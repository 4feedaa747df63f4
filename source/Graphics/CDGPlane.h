#pragma once
#include <cstddef>
#include <cstdint>
#include <span>

#include "Graphics/CDGConstants.h"
#include "Graphics/Geometry.h"

inline constexpr Rect kCDGPlane_Area{0, 0, 216, 300};
inline constexpr Rect kCDGVisible_Area{12, 6, 204, 294};   // inside the border

/** A 300 x 216 plane of indices in someone's buffer: two pixels a byte, the left one in the high nibble. All left edges
    and widths here are even, so whole bytes are written.
    Owner    of nothing. */
struct CDGPlane {
    std::uint8_t* baseP = nullptr;
    std::size_t rowBytes = 0;   // 150 or more

    [[nodiscard]] std::uint8_t* Row(std::size_t y) const noexcept { return baseP + y * rowBytes; }
    [[nodiscard]] std::uint8_t Pixel(std::size_t x, std::size_t y) const noexcept;
    void Fill(const Rect& area, std::uint8_t color) const noexcept;
    /** The four strips around the visible area. */
    void FillBorder(std::uint8_t color) const noexcept;
    void Copy(const Rect& area, const CDGPlane& from) const noexcept;
    /** Moves the whole plane by a tile: -1, 0 or 1 of them; the strip that it leaves keeps its pixels. */
    void MoveRight(int tiles) const noexcept;
    void MoveDown(int tiles) const noexcept;
};

/** What a tile packet asks for; `row` below 18 and `column` below 50. */
struct CDGTile {
    std::uint8_t color0 = 0, color1 = 0, row = 0, column = 0;
    unsigned channel = 0;
    const std::uint8_t* rowsP = nullptr;   // 12 bytes, six pixels each in their low bits

    [[nodiscard]] Rect Area() const noexcept { return MakeRect(column * 6, row * 12, 6, 12); }
};
/** False for a tile outside the plane. `tile` points into `packet`. */
[[nodiscard]] bool ReadTile(const SubCodePacket& packet, CDGTile& tile) noexcept;
void DrawTile(const CDGPlane& plane, const CDGTile& tile) noexcept;
void DrawTileXOR(const CDGPlane& plane, const CDGTile& tile) noexcept;
