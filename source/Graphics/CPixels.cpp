#include "Graphics/CPixels.h"

#include <cstring>
#include <vector>

#include "Core/Assertions.h"
#include "Core/CLog.h"

std::size_t BytesOfRow(int width, short depth) noexcept {
    const std::size_t widthL = width > 0 ? static_cast<std::size_t>(width) : 0;
    switch (depth) {
        case 4:
            return (widthL + 1) / 2;
        case 8:
            return widthL;
        case 32:
            return widthL * sizeof(Pixel32);
        case 128:
            return widthL * sizeof(PixelF);
        default:
            return 0;
    }
}

OSErr CPixels::SetMemory(std::uint8_t* baseP, const Rect& bounds, short depth, std::size_t rowBytes) {
    const std::size_t neededL = BytesOfRow(bounds.Width(), depth);
    if (baseP != nullptr && (neededL == 0 || rowBytes < neededL)) return paramErr;
    i_baseP = baseP;
    i_bounds = bounds;
    i_depthS = depth;
    i_rowBytesL = rowBytes;
    if (depth != 32) i_transparent.reset();
    SetColors(i_colors);
    return noErr;
}

namespace {
std::size_t WidthOf(const CPixels& pixels) { return static_cast<std::size_t>(pixels.bounds().Width()); }
}   // namespace

std::span<Pixel32> CPixels::Row32(int y) noexcept { return {reinterpret_cast<Pixel32*>(Row(y)), WidthOf(*this)}; }
std::span<const Pixel32> CPixels::Row32(int y) const noexcept {
    return {reinterpret_cast<const Pixel32*>(Row(y)), WidthOf(*this)};
}
std::span<PixelF> CPixels::RowF(int y) noexcept { return {reinterpret_cast<PixelF*>(Row(y)), WidthOf(*this)}; }
std::span<const PixelF> CPixels::RowF(int y) const noexcept {
    return {reinterpret_cast<const PixelF*>(Row(y)), WidthOf(*this)};
}

void CPixels::SetColors(const ColorTable& colors) {
    i_colors = colors;
    std::ranges::transform(i_colors, i_palette.begin(), PackColor);
    i_pairsB = false;
}

void CPixels::SetColor(std::size_t index, const RGBColor& color) {
    if (!Assert(index < i_colors.size())) return;
    i_colors[index] = color;
    i_palette[index] = PackColor(color);
    i_pairsB = false;
}

OSErr CPixels::SetTransparent(const RGBColor& color) {
    if (!AssertWords(i_depthS == 32, "depth() == 32")) return paramErr;
    i_transparent = color;
    return noErr;
}

std::uint8_t CPixels::IndexAt(int x, int y) const noexcept {
    if (i_baseP == nullptr || !i_bounds.Contains(x, y)) return 0;
    const auto column = static_cast<std::size_t>(x - i_bounds.left);
    if (i_depthS == 8) return Row(y)[column];
    if (i_depthS != 4) return 0;
    const std::uint8_t both = Row(y)[column / 2];
    return static_cast<std::uint8_t>(column % 2 == 0 ? both >> 4 : both & 15);
}

Pixel32 CPixels::PixelAt(int x, int y) const noexcept {
    if (i_baseP == nullptr || !i_bounds.Contains(x, y)) return 0;
    if (i_depthS == 4) return i_palette[IndexAt(x, y)];
    return i_depthS == 32 ? Row32(y)[static_cast<std::size_t>(x - i_bounds.left)] : 0;
}

namespace {

/** Calls `each` with the part of every row that lies in `rect` and in the bounds. */
template <typename Each>
OSErr EachPart32(CPixels& pixels, const std::optional<Rect>& rect, Each each) {
    const CPixelsLock lock(pixels);
    if (Failed(lock.Err())) return lock.Err();
    const Rect part = rect ? Intersect(*rect, pixels.bounds()) : pixels.bounds();
    for (int y = part.top; y < part.bottom; ++y)
        each(pixels.Row32(y).subspan(static_cast<std::size_t>(part.left - pixels.bounds().left),
                                     static_cast<std::size_t>(part.Width())));
    return noErr;
}

}   // namespace

OSErr CPixels::SetAlpha(std::uint8_t alpha, const std::optional<Rect>& rect) {
    if (i_depthS == 4) return noErr;
    if (!AssertWords(i_depthS == 32, "depth() == 32")) return paramErr;
    const Pixel32 high = static_cast<Pixel32>(alpha) << 24;
    return EachPart32(*this, rect, [high](std::span<Pixel32> row) {
        for (Pixel32& pixel : row) pixel = (pixel & 0x00FFFFFFU) | high;
    });
}

OSErr CPixels::SwapRedBlue(bool zeroAlphaB, const std::optional<Rect>& rect) {
    if (!AssertWords(i_depthS == 32, "depth() == 32")) return paramErr;
    const Pixel32 kept = zeroAlphaB ? 0x0000FF00U : 0xFF00FF00U;
    return EachPart32(*this, rect, [kept](std::span<Pixel32> row) {
        for (Pixel32& pixel : row) pixel = (pixel & kept) | (pixel >> 16 & 0xFFU) | (pixel & 0xFFU) << 16;
    });
}

OSErr CPixels::Fill32(const Rect& rect, Pixel32 pixel) {
    if (!AssertWords(i_depthS == 32, "depth() == 32")) return paramErr;
    return EachPart32(*this, rect, [pixel](std::span<Pixel32> row) { std::ranges::fill(row, pixel); });
}

OSErr CPixels::FillNibbles(const Rect& rect, std::uint8_t index) {
    if (!AssertWords(i_depthS == 4, "depth() == 4")) return paramErr;
    const CPixelsLock lock(*this);
    if (Failed(lock.Err())) return lock.Err();
    const Rect part = Intersect(rect, i_bounds);
    const auto first = static_cast<std::size_t>(part.left - i_bounds.left) / 2;
    const auto last = static_cast<std::size_t>(part.right - i_bounds.left + 1) / 2;
    for (int y = part.top; y < part.bottom; ++y) std::memset(Row(y) + first, (index & 15) * 0x11, last - first);
    return noErr;
}

OSErr CPixels::ScrollNibbles(int dx, int dy, const std::optional<std::uint8_t>& fill) {
    if (!AssertWords(i_depthS == 4, "depth() == 4")) return paramErr;
    const int width = i_bounds.Width(), height = i_bounds.Height();
    if (dx % 2 != 0 || width % 2 != 0) return paramErr;
    if (width == 0 || height == 0) return noErr;
    const CPixelsLock lock(*this);
    if (Failed(lock.Err())) return lock.Err();

    if (fill && (dx <= -width || dx >= width || dy <= -height || dy >= height)) return FillNibbles(i_bounds, *fill);
    // As a distance to the right and down: with what leaves coming in again, the way round is the same.
    const auto right = static_cast<std::size_t>((dx % width + width) % width) / 2;
    const auto down = static_cast<std::size_t>((dy % height + height) % height);
    const auto bytesL = static_cast<std::size_t>(width) / 2;
    const auto rowsL = static_cast<std::size_t>(height);
    std::vector<std::uint8_t> moved(bytesL * rowsL);
    for (std::size_t y = 0; y < rowsL; ++y) {
        const std::uint8_t* fromP = i_baseP + y * i_rowBytesL;
        std::uint8_t* toP = moved.data() + (y + down) % rowsL * bytesL;
        std::memcpy(toP + right, fromP, bytesL - right);
        std::memcpy(toP, fromP + (bytesL - right), right);
    }
    for (std::size_t y = 0; y < rowsL; ++y) std::memcpy(i_baseP + y * i_rowBytesL, moved.data() + y * bytesL, bytesL);
    if (!fill) return noErr;
    const Rect& b = i_bounds;
    if (dx > 0) (void)FillNibbles({b.top, b.left, b.bottom, ToCoordinate(b.left + dx)}, *fill);
    if (dx < 0) (void)FillNibbles({b.top, ToCoordinate(b.right + dx), b.bottom, b.right}, *fill);
    if (dy > 0) (void)FillNibbles({b.top, b.left, ToCoordinate(b.top + dy), b.right}, *fill);
    if (dy < 0) (void)FillNibbles({ToCoordinate(b.bottom + dy), b.left, b.bottom, b.right}, *fill);
    return noErr;
}

OSErr CPixels::Lock() const {
    OSErr err = i_baseP == nullptr && i_locksL == 0 && i_depthS == 0 ? memFullErr : noErr;
    if (!Failed(err) && i_locksL == 0) err = DoLock();
    if (!Failed(err) && i_baseP == nullptr) err = memFullErr;
    if (Failed(err)) {
        Log("### Error Can't lock pixels");
        return err;
    }
    ++i_locksL;
    return noErr;
}

void CPixels::Unlock() const {
    if (!Assert(i_locksL > 0)) return;
    if (--i_locksL == 0) DoUnlock();
}

const CPixels::PairTable& CPixels::Pairs() const {
    if (!i_pairsB) {
        for (std::size_t both = 0; both < i_pairs.size(); ++both)
            i_pairs[both] = {i_palette[both >> 4], i_palette[both & 15]};
        i_pairsB = true;
    }
    return i_pairs;
}
