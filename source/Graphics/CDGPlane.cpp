#include "Graphics/CDGPlane.h"

#include <algorithm>
#include <array>
#include <cstring>

namespace {
constexpr std::size_t kRowBytes = kCDGPlane_Width / 2;
constexpr std::size_t kTileBytes = kCDGTile_Width / 2;

std::size_t Size(int value) noexcept { return static_cast<std::size_t>(value); }
std::uint8_t Twice(std::uint8_t color) noexcept { return static_cast<std::uint8_t>(color * 0x11); }

/** Six pixels as three packed bytes, the leftmost pair lowest: 0xF wherever a bit is set. */
constexpr std::array<std::uint32_t, 64> kTileMasks = [] {
    std::array<std::uint32_t, 64> made{};
    for (std::uint32_t bits = 0; bits < 64; ++bits)
        for (std::uint32_t x = 0; x < 6; ++x)
            if ((bits & (32U >> x)) != 0) made[bits] |= (x % 2 == 0 ? 0xF0U : 0x0FU) << 8 * (x / 2);
    return made;
}();

template <bool xorB>
void Draw(const CDGPlane& plane, const CDGTile& tile) noexcept {
    const std::uint32_t off = tile.color0 * 0x111111U, change = off ^ tile.color1 * 0x111111U;
    std::uint8_t* atP = plane.Row(tile.row * kCDGTile_Height) + tile.column * kTileBytes;
    for (std::size_t y = 0; y < kCDGTile_Height; ++y, atP += plane.rowBytes) {
        const std::uint32_t pixels = off ^ (change & kTileMasks[tile.rowsP[y] & kSubCode_Mask]);
        auto low = static_cast<std::uint16_t>(pixels);
        auto high = static_cast<std::uint8_t>(pixels >> 16);
        if constexpr (xorB) {
            std::uint16_t before;
            std::memcpy(&before, atP, 2);
            low = static_cast<std::uint16_t>(low ^ before);
            high = static_cast<std::uint8_t>(high ^ atP[2]);
        }
        std::memcpy(atP, &low, 2);   // the plane's bytes in the order of a little-endian word, as the masks are
        atP[2] = high;
    }
}
}   // namespace

std::uint8_t CDGPlane::Pixel(std::size_t x, std::size_t y) const noexcept {
    const std::uint8_t pair = Row(y)[x / 2];
    return x % 2 == 0 ? static_cast<std::uint8_t>(pair >> 4) : static_cast<std::uint8_t>(pair & 15);
}

void CDGPlane::Fill(const Rect& area, std::uint8_t color) const noexcept {
    for (int y = area.top; y < area.bottom; ++y)
        std::memset(Row(Size(y)) + area.left / 2, Twice(color), Size(area.right - area.left) / 2);
}

void CDGPlane::FillBorder(std::uint8_t color) const noexcept {
    const auto& [top, left, bottom, right] = kCDGVisible_Area;
    Fill({0, 0, top, 300}, color);
    Fill({bottom, 0, 216, 300}, color);
    Fill({top, 0, bottom, left}, color);
    Fill({top, right, bottom, 300}, color);
}

void CDGPlane::Copy(const Rect& area, const CDGPlane& from) const noexcept {
    for (int y = area.top; y < area.bottom; ++y)
        std::memcpy(Row(Size(y)) + area.left / 2, from.Row(Size(y)) + area.left / 2, Size(area.right - area.left) / 2);
}

void CDGPlane::MoveRight(int tiles) const noexcept {
    for (std::size_t y = 0; y < kCDGPlane_Height && tiles != 0; ++y) {
        std::uint8_t* rowP = Row(y);
        std::memmove(tiles > 0 ? rowP + kTileBytes : rowP, tiles > 0 ? rowP : rowP + kTileBytes,
                     kRowBytes - kTileBytes);
    }
}

void CDGPlane::MoveDown(int tiles) const noexcept {
    if (tiles == 0) return;
    const std::size_t movedL = kCDGPlane_Height - kCDGTile_Height;
    for (std::size_t n = 0; n < movedL; ++n) {
        const std::size_t from = tiles > 0 ? movedL - 1 - n : n + kCDGTile_Height;   // away from the way it goes
        const std::size_t to = tiles > 0 ? from + kCDGTile_Height : n;
        std::memcpy(Row(to), Row(from), kRowBytes);
    }
}

bool ReadTile(const SubCodePacket& packet, CDGTile& tile) noexcept {
    const std::uint8_t* dataP = packet.bytes.data() + 4;
    tile.row = dataP[2] & 31;
    tile.column = dataP[3] & 63;
    tile.color0 = dataP[0] & 15;
    tile.color1 = dataP[1] & 15;
    tile.channel = (dataP[0] >> 4 & 3U) * 4 + (dataP[1] >> 4 & 3U);
    tile.rowsP = dataP + 4;
    return tile.row < kCDGPlane_Rows && tile.column < kCDGPlane_Columns;
}

void DrawTile(const CDGPlane& plane, const CDGTile& tile) noexcept { Draw<false>(plane, tile); }
void DrawTileXOR(const CDGPlane& plane, const CDGTile& tile) noexcept { Draw<true>(plane, tile); }
