#include "Audio/SampleForms.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace {
constexpr float kSample_Step = 3.051850947599719e-5F;   // 1 / 32767
constexpr float kSample_Full = 32767.0F;
}   // namespace

void IntegerToFloat(std::span<const std::int16_t> integers, std::span<float> floats) noexcept {
    for (std::size_t n = 0; n < integers.size(); ++n) floats[n] = static_cast<float>(integers[n]) * kSample_Step;
}

void FloatToInteger(std::span<const float> floats, std::span<std::int16_t> integers) noexcept {
    for (std::size_t n = 0; n < floats.size(); ++n) {
        const float value = floats[n] == floats[n] ? std::clamp(floats[n], -1.0F, 1.0F) : 0.0F;
        integers[n] = static_cast<std::int16_t>(std::lrint(value * kSample_Full));
    }
}
