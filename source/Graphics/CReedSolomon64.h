#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
/** The shortened Reed-Solomon words of a sub-code packet: 63 symbols over GF(64), first root alpha^0; the first symbol
    is the highest power. Pure functions over symbols of six bits.
    Threads  any.
    Source   Red Book (IEC 60908), sub-code channels R to W. */
class CReedSolomon64 {
public:
    static constexpr std::size_t kMaxParity = 4;
    static constexpr int kBeyondRepair = -1;

    /** Writes the last `parityL` symbols (2 or 4) of `word` from those before them. */
    static void Encode(std::span<std::uint8_t> word, std::size_t parityL) noexcept;
    /** Corrects up to parityL / 2 wrong symbols in place and answers how many. A word that so few changes inside it do
        not explain stays as it is: kBeyondRepair. */
    static int Decode(std::span<std::uint8_t> word, std::size_t parityL) noexcept;
};
