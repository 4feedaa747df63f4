#pragma once
#include <cstdint>

/** How a camera held a picture: where the picture's own axes point when it is shown upright. Each is a column and a row
    step of -1, 0 or 1; by their nature one of the two is 0. */
struct MovieOrientation {
    int rightX = 1, rightY = 0;   // one pixel to the right in the file moves so on the screen
    int downX = 0, downY = 1;     // one pixel down in the file

    [[nodiscard]] constexpr bool IsPlain() const noexcept { return rightX == 1 && downY == 1; }
    [[nodiscard]] constexpr bool IsTurned() const noexcept { return rightX == 0; }   // width and height change places
    friend constexpr bool operator==(const MovieOrientation&, const MovieOrientation&) = default;
};

struct PictureSize {
    int width = 0, height = 0;
    friend constexpr bool operator==(const PictureSize&, const PictureSize&) = default;
};

/** Quarter turns and mirrors of a display matrix (nine numbers, ISO/IEC 14496-12, matrix of a track header), anything
    else to the nearest quarter; null is upright. */
[[nodiscard]] MovieOrientation OrientationOf(const std::int32_t* matrixP);
/** A picture of `width` by `height` pixels of the shape `pixelShape` (width to height), upright and in square pixels:
    the side that is too short grows. At least 1, at most what a rectangle holds. */
[[nodiscard]] PictureSize ShownSize(int width, int height, double pixelShape, const MovieOrientation& orientation);
