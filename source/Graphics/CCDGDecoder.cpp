#include "Graphics/CCDGDecoder.h"

#include <algorithm>

namespace {
bool FillsPlane(const SubCodePacket& packet) noexcept {
    return packet.IsCDG() && packet.Instruction() == CDGInstruction::kMemoryPreset && (packet.Data(1) & 15) == 0;
}
std::uint16_t Widen(unsigned nibble) noexcept { return static_cast<std::uint16_t>((nibble & 15U) * 0x1111U); }
}   // namespace

RGBColor ReadCDGColor(std::uint8_t b0, std::uint8_t b1) noexcept {
    return {Widen(b0 >> 2U), Widen((b0 & 3U) << 2U | (b1 >> 4U & 3U)), Widen(b1)};
}

CCDGDecoder::CCDGDecoder(CDGPlane index, CDGPlane scratch, std::uint16_t channelMask) noexcept
    : i_index(index), i_scratch(scratch), i_channelMask(channelMask) {
    Reset();
}

void CCDGDecoder::Reset() noexcept {
    i_colors.fill(RGBColor{});
    ++i_colorsSeed;
    i_border = 0;
    i_horizontal = i_vertical = 0;
    i_index.Fill(kCDGPlane_Area, 0);
    i_dirty = kCDGPlane_Area;
    i_borderStaleB = true;
}

void CCDGDecoder::Execute(std::span<const SubCodePacket> packets) noexcept {
    std::size_t first = packets.size();
    while (first > 0 && !FillsPlane(packets[first - 1])) --first;
    if (first > 1) {   // packets[first - 1] fills the plane: of those before it only colours and border live on
        SkipTo(packets.first(first - 1));
        packets = packets.subspan(first - 1);
    }
    for (const SubCodePacket& packet : packets)
        if (packet.IsCDG()) ExecuteOne(packet);
}

void CCDGDecoder::SkipTo(std::span<const SubCodePacket> before) noexcept {
    bool borderB = false, lowB = false, highB = false;
    for (std::size_t n = before.size(); n-- > 0 && !(borderB && lowB && highB);) {
        const SubCodePacket& packet = before[n];
        if (!packet.IsCDG()) continue;
        switch (packet.Instruction()) {
            case CDGInstruction::kBorderPreset:
                if (!borderB) i_border = packet.Data(0) & 15;
                borderB = i_borderStaleB = true;
                break;
            case CDGInstruction::kLoadLow:
                if (!lowB) Load(packet, 0);
                lowB = true;
                break;
            case CDGInstruction::kLoadHigh:
                if (!highB) Load(packet, 8);
                highB = true;
                break;
            default:
                break;
        }
    }
    i_borderStaleB = true;   // border and colours may have come in the other order
}

void CCDGDecoder::ExecuteOne(const SubCodePacket& packet) noexcept {
    switch (packet.Instruction()) {
        case CDGInstruction::kTile:
            Tile(packet, false);
            break;
        case CDGInstruction::kTileXOR:
            Tile(packet, true);
            break;
        case CDGInstruction::kMemoryPreset:
            MemoryPreset(packet);
            break;
        case CDGInstruction::kBorderPreset:
            BorderPreset(packet);
            break;
        case CDGInstruction::kScrollPreset:
            Scroll(packet, false);
            break;
        case CDGInstruction::kScrollCopy:
            Scroll(packet, true);
            break;
        case CDGInstruction::kLoadLow:
            Load(packet, 0);
            break;
        case CDGInstruction::kLoadHigh:
            Load(packet, 8);
            break;
        case CDGInstruction::kTransparent:
        default:
            break;
    }
}

void CCDGDecoder::MemoryPreset(const SubCodePacket& packet) noexcept {
    if (!FillsPlane(packet)) return;   // a repeat, sent in case the first got lost
    i_index.Fill(kCDGPlane_Area, packet.Data(0) & 15);
    i_horizontal = i_vertical = 0;
    i_dirty = kCDGPlane_Area;
}

void CCDGDecoder::BorderPreset(const SubCodePacket& packet) noexcept {
    const std::uint8_t color = packet.Data(0) & 15;
    if (color == i_border) return;
    i_border = color;
    i_index.FillBorder(color);
    i_borderStaleB = true;
    i_dirty = kCDGPlane_Area;
}

void CCDGDecoder::Tile(const SubCodePacket& packet, bool xorB) noexcept {
    CDGTile tile;
    if (!ReadTile(packet, tile) || (i_channelMask >> tile.channel & 1) == 0) return;
    if (xorB)
        DrawTileXOR(i_index, tile);
    else
        DrawTile(i_index, tile);
    i_dirty = Union(i_dirty, tile.Area());
}

void CCDGDecoder::Scroll(const SubCodePacket& packet, bool wrapB) noexcept {
    const std::uint8_t color = packet.Data(0) & 15;
    const unsigned across = packet.Data(1), down = packet.Data(2);
    i_horizontal = static_cast<int>(across & 7U);
    i_vertical = static_cast<int>(down & 15U);

    // For each way: the strip that leaves, and the one that stands free afterwards.
    struct Move {
        Rect leaves, free;
    };
    static constexpr Move kRight{{0, 294, 216, 300}, {0, 0, 216, 6}}, kLeft{{0, 0, 216, 6}, {0, 294, 216, 300}};
    static constexpr Move kDown{{204, 0, 216, 300}, {0, 0, 12, 300}}, kUp{{0, 0, 12, 300}, {204, 0, 216, 300}};
    const auto pass = [&](unsigned command, const Move& first, const Move& second, auto move) {
        if (command != 1 && command != 2) return;
        const Move& ways = command == 1 ? first : second;
        if (wrapB) {   // into the scratch plane where it reappears, and back once the rest has moved
            for (int y = 0; y < ways.free.bottom - ways.free.top; ++y)
                std::copy_n(i_index.Row(static_cast<std::size_t>(ways.leaves.top + y)) + ways.leaves.left / 2,
                            (ways.free.right - ways.free.left) / 2,
                            i_scratch.Row(static_cast<std::size_t>(ways.free.top + y)) + ways.free.left / 2);
        }
        move(command == 1 ? 1 : -1);
        if (wrapB)
            i_index.Copy(ways.free, i_scratch);
        else
            i_index.Fill(ways.free, color);
    };
    pass(across >> 4U & 3U, kRight, kLeft, [this](int tiles) { i_index.MoveRight(tiles); });
    pass(down >> 4U & 3U, kDown, kUp, [this](int tiles) { i_index.MoveDown(tiles); });
    i_dirty = kCDGPlane_Area;
}

void CCDGDecoder::Load(const SubCodePacket& packet, std::size_t first) noexcept {
    for (std::size_t n = 0; n < 8; ++n) i_colors[first + n] = ReadCDGColor(packet.Data(2 * n), packet.Data(2 * n + 1));
    ++i_colorsSeed;
    if (i_border >= first && i_border < first + 8) i_borderStaleB = true;
    i_dirty = kCDGPlane_Area;
}

void CCDGDecoder::PaintBorder(const CDGTrueColor& picture) const noexcept {
    const std::uint32_t pixel = PackColor(i_colors[i_border]);
    const auto& [top, left, bottom, right] = kCDGVisible_Area;
    for (int y = 0; y < kCDGPlane_Area.bottom; ++y) {
        std::uint32_t* rowP = picture.Row(static_cast<std::size_t>(y));
        if (y < top || y >= bottom) {
            std::fill_n(rowP, kCDGPlane_Width, pixel);
            continue;
        }
        std::fill(rowP, rowP + left, pixel);
        std::fill(rowP + right, rowP + kCDGPlane_Area.right, pixel);
    }
}

Rect CCDGDecoder::Update(const CDGTrueColor& picture, bool skipCopyB) noexcept {
    if (i_borderStaleB) PaintBorder(picture);
    i_borderStaleB = false;
    // A whole plane stays whole: what the window shows beside the plane changes with it.
    const Rect moved = i_dirty == kCDGPlane_Area ? i_dirty : Offset(i_dirty, -i_horizontal, -i_vertical);
    const Rect shown = Intersect(kCDGVisible_Area, moved);
    if (i_dirty.Empty() || shown.Empty()) return {};
    if (skipCopyB) return shown;

    std::array<std::uint32_t, kCDGPlane_Colors> pixels;
    std::ranges::transform(i_colors, pixels.begin(), PackColor);
    const std::uint32_t outside = pixels[i_border];
    for (int y = shown.top; y < shown.bottom; ++y) {
        std::uint32_t* toP = picture.Row(static_cast<std::size_t>(y)) + shown.left;
        const int fromY = y + i_vertical;
        const bool insideB = fromY < kCDGPlane_Area.bottom;
        const int endX = insideB ? std::min<int>(shown.right + i_horizontal, kCDGPlane_Area.right) : 0;
        const std::uint8_t* rowP = insideB ? i_index.Row(static_cast<std::size_t>(fromY)) : nullptr;
        int x = shown.left + i_horizontal;
        if (x < endX && x % 2 != 0) *toP++ = pixels[rowP[x++ / 2] & 15U];
        for (; x + 1 < endX; x += 2) {
            *toP++ = pixels[rowP[x / 2] >> 4U];
            *toP++ = pixels[rowP[x / 2] & 15U];
        }
        if (x < endX) *toP++ = pixels[rowP[x++ / 2] >> 4U];
        std::fill(toP, picture.Row(static_cast<std::size_t>(y)) + shown.right, outside);
    }
    return shown;
}
