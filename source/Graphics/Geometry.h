#pragma once
#include <algorithm>
#include <cstdint>

/** A rectangle of pixels: top, left, bottom, right; bottom and right lie outside. */
struct Rect {
    short top = 0, left = 0, bottom = 0, right = 0;

    [[nodiscard]] constexpr int Width() const noexcept { return right - left; }
    [[nodiscard]] constexpr int Height() const noexcept { return bottom - top; }
    [[nodiscard]] constexpr bool IsEmpty() const noexcept { return right <= left || bottom <= top; }
    [[nodiscard]] constexpr Rect Moved(int down, int toRight) const noexcept {
        return {Short(top + down), Short(left + toRight), Short(bottom + down), Short(right + toRight)};
    }
    friend constexpr bool operator==(const Rect&, const Rect&) noexcept = default;

private:
    static constexpr short Short(int value) noexcept { return static_cast<short>(std::clamp(value, -32768, 32767)); }
};

/** What lies in both; empty (all zero) when nothing does. */
[[nodiscard]] constexpr Rect Intersection(const Rect& a, const Rect& b) noexcept {
    const Rect both{std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom),
                    std::min(a.right, b.right)};
    return both.IsEmpty() ? Rect{} : both;
}

/** The smallest rectangle around both; an empty one adds nothing. */
[[nodiscard]] constexpr Rect Union(const Rect& a, const Rect& b) noexcept {
    if (a.IsEmpty()) return b;
    if (b.IsEmpty()) return a;
    return {std::min(a.top, b.top), std::min(a.left, b.left), std::max(a.bottom, b.bottom), std::max(a.right, b.right)};
}

/** A colour of three 16-bit components. */
struct RGBColor {
    std::uint16_t red = 0, green = 0, blue = 0;
    friend constexpr bool operator==(const RGBColor&, const RGBColor&) noexcept = default;
    /** As a pixel of depth 32, opaque. */
    [[nodiscard]] constexpr std::uint32_t Pixel() const noexcept {
        return 0xFF000000U | static_cast<std::uint32_t>(red >> 8) << 16 | static_cast<std::uint32_t>(green >> 8) << 8 |
               static_cast<std::uint32_t>(blue >> 8);
    }
};
