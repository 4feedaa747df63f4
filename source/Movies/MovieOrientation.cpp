#include "Movies/MovieOrientation.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

int Sign(std::int64_t value) { return value < 0 ? -1 : 1; }
std::int64_t Size(std::int32_t value) { return std::abs(std::int64_t{value}); }

}   // namespace

MovieOrientation OrientationOf(const std::int32_t* matrixP) {
    if (matrixP == nullptr) return {};
    const std::int32_t a = matrixP[0], b = matrixP[1], c = matrixP[3],
                       d = matrixP[4];   // x' = a x + c y, y' = b x + d y
    if (a == 0 && b == 0 && c == 0 && d == 0) return {};
    if (Size(a) + Size(d) >= Size(b) + Size(c)) return {Sign(a), 0, 0, Sign(d)};
    return {0, Sign(b), Sign(c), 0};
}

PictureSize ShownSize(int width, int height, double pixelShape, const MovieOrientation& orientation) {
    double wide = std::max(width, 1), high = std::max(height, 1);
    if (pixelShape > 1) wide *= pixelShape;
    if (pixelShape > 0 && pixelShape < 1) high /= pixelShape;
    const auto bounded = [](double side) { return static_cast<int>(std::lround(std::clamp(side, 1.0, 32767.0))); };
    PictureSize size{bounded(wide), bounded(high)};
    if (orientation.IsTurned()) std::swap(size.width, size.height);
    return size;
}
