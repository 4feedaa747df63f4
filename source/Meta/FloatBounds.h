#pragma once
#include "Meta/MetaKey.h"

/** What a number with a fraction may be. */
struct FloatBounds {
    double least, most;

    [[nodiscard]] bool Holds(double value) const noexcept { return value >= least && value <= most; }
};

/** Of a key of that kind: tempo as the file keeps it, volume, slip in seconds. One that is not known may be anything that
    single precision, in which others read it, can hold. */
[[nodiscard]] FloatBounds BoundsOf(MetaKey key) noexcept;
