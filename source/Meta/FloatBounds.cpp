#include "Meta/FloatBounds.h"

#include <limits>

FloatBounds BoundsOf(MetaKey key) noexcept {
    constexpr struct {
        MetaKey key;
        FloatBounds bounds;
    } kBounds[] = {
        {"TMPO"_key, {0.25, 2.55}},
        {"volm"_key, {0, 100}},
        {"Slip"_key, {-3600, 3600}},
    };
    for (const auto& row : kBounds)
        if (row.key == key) return row.bounds;
    constexpr double kMost = std::numeric_limits<float>::max();
    return {-kMost, kMost};
}
