#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "Graphics/Geometry.h"
#include "Platform/OSErr.h"

/** One pixel of depth 32: 0xAARRGGBB in the machine's byte order, the layout that Cairo (ARGB32) and Qt share with us. */
using Pixel32 = std::uint32_t;
/** One pixel of depth 128; each component 0.0 to 1.0. */
struct PixelF {
    float alpha = 0, red = 0, green = 0, blue = 0;
};

/** The high bytes of the components, opaque. */
[[nodiscard]] constexpr Pixel32 PackColor(const RGBColor& color) noexcept {
    return 0xFF000000U | static_cast<Pixel32>(color.red >> 8) << 16 | static_cast<Pixel32>(color.green >> 8) << 8 |
           static_cast<Pixel32>(color.blue >> 8);
}
/** Bytes a row of `width` pixels takes, without padding; 0 when the depth is none of 4, 8, 32, 128. */
[[nodiscard]] std::size_t BytesOfRow(int width, short depth) noexcept;

/** A rectangle of pixels in memory that somebody else owns; COffscreen owns its own.
    Depths   4 (two pixels a byte, the left one in the high nibble, colours from a table of 16), 8 (read only, one index
             a byte), 32 (Pixel32), 128 (PixelF). Any other depth is a fault of the caller.
    Units    coordinates are those of the bounds, whose top left pixel need not be 0, 0.
    Threads  none of its own: one user at a time; a reader thread needs its owner's lock.
    Errors   statuses; a wrong depth is asserted and answers paramErr. Nothing outside the bounds is ever touched. */
class CPixels {
public:
    using ColorTable = std::array<RGBColor, 16>;

    virtual ~CPixels() = default;
    CPixels(const CPixels&) = delete;
    CPixels& operator=(const CPixels&) = delete;

    [[nodiscard]] const Rect& bounds() const noexcept { return i_bounds; }
    [[nodiscard]] short depth() const noexcept { return i_depthS; }
    [[nodiscard]] std::size_t rowBytes() const noexcept { return i_rowBytesL; }
    /** First byte of the top row; null before there is memory. Direct access stands inside a CPixelsLock. */
    [[nodiscard]] std::uint8_t* base() noexcept { return i_baseP; }
    [[nodiscard]] const std::uint8_t* base() const noexcept { return i_baseP; }
    /** First byte of the row `y` of the bounds; the caller has checked `y`. */
    [[nodiscard]] std::uint8_t* Row(int y) noexcept { return i_baseP + RowOffset(y); }
    [[nodiscard]] const std::uint8_t* Row(int y) const noexcept { return i_baseP + RowOffset(y); }
    /** The row `y` as pixels; only at depth 32. */
    [[nodiscard]] std::span<Pixel32> Row32(int y) noexcept;
    [[nodiscard]] std::span<const Pixel32> Row32(int y) const noexcept;
    /** The row `y` as pixels; only at depth 128. */
    [[nodiscard]] std::span<PixelF> RowF(int y) noexcept;
    [[nodiscard]] std::span<const PixelF> RowF(int y) const noexcept;

    /** The colour table of depth 4. Packed and pair forms follow each change. */
    [[nodiscard]] const ColorTable& Colors() const noexcept { return i_colors; }
    void SetColors(const ColorTable& colors);
    void SetColor(std::size_t index, const RGBColor& color);
    /** The 16 colours as opaque pixels. */
    [[nodiscard]] const std::array<Pixel32, 16>& Palette() const noexcept { return i_palette; }

    /** The colour that kTransparent copies leave out; only at depth 32, else paramErr. */
    OSErr SetTransparent(const RGBColor& color);
    void ClearTransparent() noexcept { i_transparent.reset(); }
    [[nodiscard]] const std::optional<RGBColor>& Transparent() const noexcept { return i_transparent; }

    /** The index at depth 4 or 8; 0 outside the bounds. */
    [[nodiscard]] std::uint8_t IndexAt(int x, int y) const noexcept;
    /** The colour at depth 4 (by the table) or 32; 0 outside the bounds. */
    [[nodiscard]] Pixel32 PixelAt(int x, int y) const noexcept;

    /** Sets the alpha byte over `rect`, or all of it. Depth 4 has none: noErr and no change. */
    OSErr SetAlpha(std::uint8_t alpha, const std::optional<Rect>& rect = {});
    /** Swaps red and blue over `rect`, or all of it; depth 32. */
    OSErr SwapRedBlue(bool zeroAlphaB, const std::optional<Rect>& rect = {});
    /** Fills `rect` at depth 32. */
    OSErr Fill32(const Rect& rect, Pixel32 pixel);
    /** Fills `rect` at depth 4 by whole bytes: an odd left or right edge (counted from the bounds) takes in its
        neighbour, so callers use even ones. */
    OSErr FillNibbles(const Rect& rect, std::uint8_t index);
    /** Moves the whole plane of depth 4 right by `dx` and down by `dy`; what leaves one side comes in at the other, or
        `fill` comes in when it is given. `dx` is even, and so is the width: whole bytes move. */
    OSErr ScrollNibbles(int dx, int dy, const std::optional<std::uint8_t>& fill);

    /** Brackets of direct access; CPixelsLock calls them. They nest. memFullErr when there is no memory to lock. */
    OSErr Lock() const;
    void Unlock() const;
    [[nodiscard]] bool IsLocked() const noexcept { return i_locksL > 0; }

    /** Two pixels of depth 32 for each byte of depth 4. Built when first asked for after a change of colours. */
    using PairTable = std::array<std::array<Pixel32, 2>, 256>;
    [[nodiscard]] const PairTable& Pairs() const;

protected:
    CPixels() = default;
    /** The memory, which must hold `rowBytes` for each row of `bounds` and be aligned for the depth; null for none. */
    OSErr SetMemory(std::uint8_t* baseP, const Rect& bounds, short depth, std::size_t rowBytes);
    /** For pixels that must be fetched first: called at the first Lock and the last Unlock. */
    virtual OSErr DoLock() const { return noErr; }
    virtual void DoUnlock() const {}

private:
    [[nodiscard]] std::size_t RowOffset(int y) const noexcept {
        return static_cast<std::size_t>(y - i_bounds.top) * i_rowBytesL;
    }

    Rect i_bounds;
    std::size_t i_rowBytesL = 0;
    std::uint8_t* i_baseP = nullptr;   // not owned
    short i_depthS = 0;
    mutable int i_locksL = 0;
    std::optional<RGBColor> i_transparent;
    ColorTable i_colors{};
    std::array<Pixel32, 16> i_palette{};
    mutable bool i_pairsB = false;   // i_pairs belongs to i_palette
    mutable PairTable i_pairs{};
};

/** Holds pixels locked for its life. Ask Err before touching them. */
class CPixelsLock {
public:
    explicit CPixelsLock(const CPixels& pixels) : i_pixels(pixels), i_err(pixels.Lock()) {}
    ~CPixelsLock() {
        if (!Failed(i_err)) i_pixels.Unlock();
    }
    CPixelsLock(const CPixelsLock&) = delete;
    CPixelsLock& operator=(const CPixelsLock&) = delete;
    [[nodiscard]] OSErr Err() const noexcept { return i_err; }

private:
    const CPixels& i_pixels;
    OSErr i_err;
};
