#include "Graphics/CPixels.h"

#include <cstring>

#include "Core/Assertions.h"

void CPixels::Describe(const Rect& bounds, std::size_t rowBytes, short depthS, std::byte* baseP) {
    i_bounds = bounds;
    i_rowBytes = rowBytes;
    i_depthS = depthS;
    i_baseP = baseP;
    if (depthS == 4) BuildPairs();
}

void CPixels::BuildPairs() {
    for (unsigned packed = 0; packed < 256; ++packed)
        i_pairs[packed] = {i_colors[packed >> 4].Pixel(), i_colors[packed & 15U].Pixel()};
}

void CPixels::SetColors(const ColorTable& colors) {
    if (!AssertWords(i_depthS == 4, "depth() == 4")) return;
    i_colors = colors;
    BuildPairs();
}

void CPixels::SetTransparentColor(std::optional<RGBColor> color) {
    if (AssertWords(i_depthS == 32, "depth() == 32")) i_transparent = color;
}

void CPixels::SetAlpha(const Rect& area, std::uint8_t alpha) {
    const Rect cut = Intersection(area, i_bounds);
    for (int y = cut.top; y < cut.bottom; ++y)
        for (int x = cut.left - i_bounds.left; x < cut.right - i_bounds.left; ++x) {
            if (i_depthS == 32) {
                std::uint32_t& pixel = Row<std::uint32_t>(y)[x];
                pixel = (pixel & 0x00FFFFFFU) | static_cast<std::uint32_t>(alpha) << 24;
            } else if (i_depthS == 128) {
                Row<float>(y)[x * 4] = static_cast<float>(alpha) / 255.0F;
            }
        }
}

void CPixels::SwapRedAndBlue(const Rect& area, bool zeroAlphaB) {
    if (!AssertWords(i_depthS == 32, "depth() == 32")) return;
    const std::uint32_t kept = zeroAlphaB ? 0x0000FF00U : 0xFF00FF00U;
    const Rect cut = Intersection(area, i_bounds);
    for (int y = cut.top; y < cut.bottom; ++y)
        for (int x = cut.left - i_bounds.left; x < cut.right - i_bounds.left; ++x) {
            std::uint32_t& pixel = Row<std::uint32_t>(y)[x];
            pixel = (pixel & kept) | (pixel & 0xFFU) << 16 | (pixel >> 16 & 0xFFU);
        }
}

void CPixels::FillIndex(const Rect& area, std::uint8_t index) {
    if (!AssertWords(i_depthS == 4, "depth() == 4")) return;
    const Rect cut = Intersection(area, i_bounds);
    if (cut.IsEmpty()) return;
    const int both = (index & 15) * 17;
    const auto left = static_cast<std::size_t>(cut.left - i_bounds.left) / 2;
    const auto right = static_cast<std::size_t>(cut.right - i_bounds.left + 1) / 2;
    for (int y = cut.top; y < cut.bottom; ++y) std::memset(Row<std::uint8_t>(y) + left, both, right - left);
}

void CPixels::FillPixel(const Rect& area, std::uint32_t pixel) {
    if (!AssertWords(i_depthS == 32, "depth() == 32")) return;
    const Rect cut = Intersection(area, i_bounds);
    for (int y = cut.top; y < cut.bottom; ++y)
        std::fill_n(Row<std::uint32_t>(y) + (cut.left - i_bounds.left), cut.Width(), pixel);
}

std::uint8_t CPixels::IndexAt(int y, int x) const noexcept {
    const int across = x - i_bounds.left;
    const std::uint8_t packed = Row<std::uint8_t>(y)[across / 2];
    return across % 2 == 0 ? packed >> 4 : packed & 15U;
}

namespace {

/** The source coordinate of destination coordinate `at` when `length` pixels are stretched over `over`. */
int Scaled(int at, int length, int over) noexcept {
    return static_cast<int>(static_cast<std::int64_t>(at) * length / over);
}

std::uint32_t PixelAt(const CPixels& pixels, int y, int x) noexcept {
    if (pixels.Depth() == 4) return pixels.Colors()[pixels.IndexAt(y, x)].Pixel();
    return pixels.Row<std::uint32_t>(y)[x - pixels.Bounds().left];
}

/** Calls `draw(destination pixel, source pixel)` for each pixel that lies in both buffers. */
template <class Draw>
void ForEachPair(const CPixels& source, CPixels& destination, const Rect& from, const Rect& to, Draw&& draw) {
    if (from.IsEmpty() || to.IsEmpty()) return;
    const Rect cut = Intersection(to, destination.Bounds());
    for (int y = cut.top; y < cut.bottom; ++y) {
        const int sourceY = from.top + Scaled(y - to.top, from.Height(), to.Height());
        if (sourceY < source.Bounds().top || sourceY >= source.Bounds().bottom) continue;
        auto* const rowP = destination.Row<std::uint32_t>(y) - destination.Bounds().left;
        for (int x = cut.left; x < cut.right; ++x) {
            const int sourceX = from.left + Scaled(x - to.left, from.Width(), to.Width());
            if (sourceX < source.Bounds().left || sourceX >= source.Bounds().right) continue;
            draw(rowP[x], PixelAt(source, sourceY, sourceX));
        }
    }
}

bool CanCopy(const CPixels& source, const CPixels& destination) {
    return AssertWords(destination.Depth() == 32, "destP->depth() == 32") &&
           AssertWords(source.Depth() == 4 || source.Depth() == 32, "depth() == 32");
}

/** Whole bytes of depth 4 to pairs of depth 32, no scaling: the road of every CD+G frame. */
void CopyPairs(const CPixels& source, CPixels& destination, const Rect& from, const Rect& to) {
    const auto bytes = static_cast<std::size_t>(from.Width()) / 2;
    for (int n = 0; n < from.Height(); ++n) {
        const auto* packedP = source.Row<std::uint8_t>(from.top + n) + (from.left - source.Bounds().left) / 2;
        auto* pixelsP = destination.Row<std::uint32_t>(to.top + n) + (to.left - destination.Bounds().left);
        for (std::size_t b = 0; b < bytes; ++b) std::memcpy(pixelsP + 2 * b, source.PairOf(packedP[b]).data(), 8);
    }
}

}   // namespace

OSErr CopyRectangle(const CPixels& source, CPixels& destination, const Rect& from, const Rect& to, CopyMode mode) {
    if (source.Depth() == 4 && destination.Depth() == 4) {
        const bool plainB = from.Width() == to.Width() && from.Height() == to.Height() &&
                            Intersection(from, source.Bounds()) == from && Intersection(to, destination.Bounds()) == to;
        const bool evenB = (from.left - source.Bounds().left) % 2 == 0 && from.Width() % 2 == 0 &&
                           (to.left - destination.Bounds().left) % 2 == 0;
        if (!plainB || !evenB) return paramErr;
        for (int n = 0; n < from.Height(); ++n)
            std::memmove(destination.Row<std::uint8_t>(to.top + n) + (to.left - destination.Bounds().left) / 2,
                         source.Row<std::uint8_t>(from.top + n) + (from.left - source.Bounds().left) / 2,
                         static_cast<std::size_t>(from.Width()) / 2);
        return noErr;
    }
    if (!CanCopy(source, destination)) return paramErr;
    const bool evenB = from.Width() == to.Width() && from.Height() == to.Height() &&
                       (from.left - source.Bounds().left) % 2 == 0 && from.Width() % 2 == 0;
    if (source.Depth() == 4 && evenB && Intersection(from, source.Bounds()) == from &&
        Intersection(to, destination.Bounds()) == to) {
        CopyPairs(source, destination, from, to);
        return noErr;
    }
    const bool leaveOutB = mode == CopyMode::kTransparent && source.TransparentColor().has_value();
    const std::uint32_t through = leaveOutB ? source.TransparentColor()->Pixel() & 0x00FFFFFFU : 0;
    ForEachPair(source, destination, from, to, [&](std::uint32_t& pixel, std::uint32_t drawn) {
        if (!leaveOutB || (drawn & 0x00FFFFFFU) != through) pixel = drawn;
    });
    return noErr;
}

OSErr CopyWithAlpha(const CPixels& source, CPixels& destination, const Rect& from, const Rect& to, float alphaF) {
    if (!CanCopy(source, destination)) return paramErr;
    const auto share = static_cast<std::uint32_t>(std::clamp(alphaF, 0.0F, 1.0F) * 256.0F + 0.5F);
    ForEachPair(source, destination, from, to, [share](std::uint32_t& pixel, std::uint32_t drawn) {
        std::uint32_t mixed = 0;
        for (unsigned shift = 0; shift < 32; shift += 8) {
            const std::uint32_t below = pixel >> shift & 0xFFU, above = drawn >> shift & 0xFFU;
            mixed |= ((below * (256 - share) + above * share + 128) >> 8) << shift;
        }
        pixel = mixed;
    });
    return noErr;
}
