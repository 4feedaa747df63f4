#pragma once
#include <array>
#include <cstdint>
/** Arithmetic of GF(64) with the primitive polynomial x^6 + x + 1; alpha is 2. Addition is XOR.
    Source   Red Book (IEC 60908), sub-code channels R to W. */
namespace GF64 {

inline constexpr unsigned kOrder = 63;   // alpha^63 is 1

struct Tables {
    std::array<std::uint8_t, 2 * kOrder> exp{};   // twice around: the sum of two logarithms needs no modulo
    std::array<std::uint8_t, 64> log{};           // log[0] means nothing
};
inline constexpr Tables kTables = [] {
    Tables made;
    unsigned value = 1;
    for (unsigned n = 0; n < kOrder; ++n) {
        made.exp[n] = made.exp[n + kOrder] = static_cast<std::uint8_t>(value);
        made.log[value] = static_cast<std::uint8_t>(n);
        value <<= 1;
        if (value > 63) value ^= 0x43;
    }
    return made;
}();

/** alpha to the power of `power`, 0 to 125. */
[[nodiscard]] constexpr std::uint8_t Exp(unsigned power) noexcept { return kTables.exp[power]; }
/** `value` 1 to 63. */
[[nodiscard]] constexpr unsigned Log(std::uint8_t value) noexcept { return kTables.log[value]; }
[[nodiscard]] constexpr std::uint8_t Times(std::uint8_t a, std::uint8_t b) noexcept {
    return a == 0 || b == 0 ? std::uint8_t{0} : Exp(Log(a) + Log(b));
}
/** `b` is not 0. */
[[nodiscard]] constexpr std::uint8_t Over(std::uint8_t a, std::uint8_t b) noexcept {
    return a == 0 ? std::uint8_t{0} : Exp(Log(a) + kOrder - Log(b));
}

}   // namespace GF64
