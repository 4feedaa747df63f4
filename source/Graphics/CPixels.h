#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "Graphics/Geometry.h"
#include "Platform/OSErr.h"

using ColorTable = std::array<RGBColor, 16>;

/** A pixel array: bounds, row bytes, memory, depth.
    Depths   4    two pixels a byte, the left one in the high nibble, with a colour table of 16
             8    one index a byte; only read
             32   0xAARRGGBB, as the machine stores a 32-bit word (Cairo's ARGB32 and Qt's RGB32 are the same)
             128  four floats a pixel: alpha, red, green, blue, each 0.0 to 1.0
    Bounds   may begin anywhere; a rectangle is always cut to them.
    Threads  one at a time. Owner of the memory: the derived class. */
class CPixels {
public:
    virtual ~CPixels() = default;

    [[nodiscard]] const Rect& Bounds() const noexcept { return i_bounds; }
    [[nodiscard]] std::size_t RowBytes() const noexcept { return i_rowBytes; }
    [[nodiscard]] short Depth() const noexcept { return i_depthS; }
    [[nodiscard]] std::byte* BaseAddress() noexcept { return i_baseP; }
    [[nodiscard]] const std::byte* BaseAddress() const noexcept { return i_baseP; }
    /** Row `y` in bounds' coordinates, which must hold it. */
    template <class T>
    [[nodiscard]] T* Row(int y) noexcept {
        return reinterpret_cast<T*>(i_baseP + static_cast<std::size_t>(y - i_bounds.top) * i_rowBytes);
    }
    template <class T>
    [[nodiscard]] const T* Row(int y) const noexcept {
        return reinterpret_cast<const T*>(i_baseP + static_cast<std::size_t>(y - i_bounds.top) * i_rowBytes);
    }

    /** Depth 4 only. */
    [[nodiscard]] const ColorTable& Colors() const noexcept { return i_colors; }
    void SetColors(const ColorTable& colors);
    /** The two pixels of depth 32 that a byte of depth 4 stands for, the left one first. */
    [[nodiscard]] const std::array<std::uint32_t, 2>& PairOf(std::uint8_t packed) const noexcept {
        return i_pairs[packed];
    }

    /** Depth 32 only; nothing for none. */
    void SetTransparentColor(std::optional<RGBColor> color);
    [[nodiscard]] const std::optional<RGBColor>& TransparentColor() const noexcept { return i_transparent; }

    /** The alpha byte of every pixel in `area`; at depth 4 nothing changes. */
    void SetAlpha(const Rect& area, std::uint8_t alpha);
    /** Depth 32: changes red for blue, and clears alpha when asked. */
    void SwapRedAndBlue(const Rect& area, bool zeroAlphaB);
    /** Depth 4: the index in every pixel; both edges must be even. */
    void FillIndex(const Rect& area, std::uint8_t index);
    /** Depth 32. */
    void FillPixel(const Rect& area, std::uint32_t pixel);
    [[nodiscard]] std::uint8_t IndexAt(int y, int x) const noexcept;

protected:
    CPixels() = default;
    CPixels(const CPixels&) = delete;
    CPixels& operator=(const CPixels&) = delete;
    void Describe(const Rect& bounds, std::size_t rowBytes, short depthS, std::byte* baseP);

private:
    void BuildPairs();

    Rect i_bounds;
    std::size_t i_rowBytes = 0;
    short i_depthS = 0;
    std::byte* i_baseP = nullptr;
    ColorTable i_colors{};
    std::array<std::array<std::uint32_t, 2>, 256> i_pairs{};
    std::optional<RGBColor> i_transparent;
};

/** What a copy does with pixels of the source's transparent colour. */
enum class CopyMode : short { kCopy = 0, kTransparent = 1 };

/** Copies `from` of `source` over `to` of `destination`, scaled when their sizes differ (nearest pixel); what lies outside
    either buffer is left out. Depth 4 to 32 goes through the colour table; 32 to 32 and 4 to 4 (even edges, no scaling) as
    they are. paramErr for other depths. */
OSErr CopyRectangle(const CPixels& source, CPixels& destination, const Rect& from, const Rect& to,
                    CopyMode mode = CopyMode::kCopy);
/** The same at depth 32, mixed over the destination by `alphaF`, 0.0 to 1.0. */
OSErr CopyWithAlpha(const CPixels& source, CPixels& destination, const Rect& from, const Rect& to, float alphaF);
