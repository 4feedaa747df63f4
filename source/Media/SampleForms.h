#pragma once
#include <cstdint>
#include <span>

/** 16-bit samples as floats: each times 1 / 32767. `floats` is at least as long. Any thread. */
void IntegerToFloat(std::span<const std::int16_t> integers, std::span<float> floats) noexcept;
/** Floats, limited to -1 to 1, times 32767, to the nearest step: what IntegerToFloat made comes back, but -32768 as
    -32767. A value that is no number is silence. `integers` is at least as long. Any thread. */
void FloatToInteger(std::span<const float> floats, std::span<std::int16_t> integers) noexcept;
