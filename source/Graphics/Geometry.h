#pragma once
#include <algorithm>
#include <cstdint>

/** A rectangle in pixels, 16-bit coordinates; right and bottom are just outside. Empty when it spans nothing. */
struct Rect {
    short top = 0, left = 0, bottom = 0, right = 0;

    [[nodiscard]] constexpr int Width() const noexcept { return right > left ? right - left : 0; }
    [[nodiscard]] constexpr int Height() const noexcept { return bottom > top ? bottom - top : 0; }
    [[nodiscard]] constexpr bool Empty() const noexcept { return right <= left || bottom <= top; }
    [[nodiscard]] constexpr bool Contains(int x, int y) const noexcept {
        return x >= left && x < right && y >= top && y < bottom;
    }
    [[nodiscard]] constexpr bool Contains(const Rect& other) const noexcept {
        return other.left >= left && other.right <= right && other.top >= top && other.bottom <= bottom;
    }
    friend constexpr bool operator==(const Rect&, const Rect&) = default;
};

/** A coordinate kept inside 16 bits: a sum that leaves them stops at the end of the range. */
[[nodiscard]] constexpr short ToCoordinate(int value) noexcept {
    return static_cast<short>(std::clamp(value, -32768, 32767));
}

/** The rectangle at `x`, `y` of that size. */
[[nodiscard]] constexpr Rect MakeRect(int x, int y, int width, int height) noexcept {
    return {ToCoordinate(y), ToCoordinate(x), ToCoordinate(y + height), ToCoordinate(x + width)};
}
/** What both cover; the rectangle of zeros when they do not meet. */
[[nodiscard]] constexpr Rect Intersect(const Rect& a, const Rect& b) noexcept {
    const Rect both{std::max(a.top, b.top), std::max(a.left, b.left), std::min(a.bottom, b.bottom),
                    std::min(a.right, b.right)};
    return both.Empty() ? Rect{} : both;
}
/** The smallest that holds both; an empty one adds nothing. */
[[nodiscard]] constexpr Rect Union(const Rect& a, const Rect& b) noexcept {
    if (a.Empty()) return b.Empty() ? Rect{} : b;
    if (b.Empty()) return a;
    return {std::min(a.top, b.top), std::min(a.left, b.left), std::max(a.bottom, b.bottom), std::max(a.right, b.right)};
}
[[nodiscard]] constexpr Rect Offset(const Rect& rect, int dx, int dy) noexcept {
    return {ToCoordinate(rect.top + dy), ToCoordinate(rect.left + dx), ToCoordinate(rect.bottom + dy),
            ToCoordinate(rect.right + dx)};
}

/** A colour of three 16-bit components. */
struct RGBColor {
    std::uint16_t red = 0, green = 0, blue = 0;
    friend constexpr bool operator==(const RGBColor&, const RGBColor&) = default;
};
