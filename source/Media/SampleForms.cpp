#include "Media/SampleForms.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#ifdef __SSE2__
#include <emmintrin.h>
#endif

namespace {

constexpr float kSample_Step = 3.051850947599719e-5F;   // 1 / 32767
constexpr float kSample_Full = 32767.0F;

#ifdef __SSE2__
/** Four floats as steps; no number becomes 0, as every comparison with it is false. */
__m128i Steps(const float* floatsP) noexcept {
    const __m128 value = _mm_loadu_ps(floatsP);
    const __m128 number = _mm_and_ps(value, _mm_cmpord_ps(value, value));
    const __m128 limited = _mm_min_ps(_mm_max_ps(number, _mm_set1_ps(-1.0F)), _mm_set1_ps(1.0F));
    return _mm_cvtps_epi32(_mm_mul_ps(limited, _mm_set1_ps(kSample_Full)));   // to the nearest, as lrint
}
#endif

}   // namespace

void IntegerToFloat(std::span<const std::int16_t> integers, std::span<float> floats) noexcept {
    std::size_t n = 0;
#ifdef __SSE2__
    for (; n + 8 <= integers.size(); n += 8) {
        const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(&integers[n]));
        const __m128i sign = _mm_srai_epi16(eight, 15);
        const __m128 step = _mm_set1_ps(kSample_Step);
        _mm_storeu_ps(&floats[n], _mm_mul_ps(_mm_cvtepi32_ps(_mm_unpacklo_epi16(eight, sign)), step));
        _mm_storeu_ps(&floats[n + 4], _mm_mul_ps(_mm_cvtepi32_ps(_mm_unpackhi_epi16(eight, sign)), step));
    }
#endif
    for (; n < integers.size(); ++n) floats[n] = static_cast<float>(integers[n]) * kSample_Step;
}

void FloatToInteger(std::span<const float> floats, std::span<std::int16_t> integers) noexcept {
    std::size_t n = 0;
#ifdef __SSE2__
    for (; n + 8 <= floats.size(); n += 8) {
        const __m128i eight = _mm_packs_epi32(Steps(&floats[n]), Steps(&floats[n + 4]));
        _mm_storeu_si128(reinterpret_cast<__m128i*>(&integers[n]), eight);
    }
#endif
    for (; n < floats.size(); ++n) {
        const float value = floats[n] == floats[n] ? std::clamp(floats[n], -1.0F, 1.0F) : 0.0F;
        integers[n] = static_cast<std::int16_t>(std::lrint(value * kSample_Full));
    }
}
