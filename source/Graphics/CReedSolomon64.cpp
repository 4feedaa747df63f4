#include "Graphics/CReedSolomon64.h"

#include <array>

#include "Graphics/GF64.h"

namespace {
constexpr std::size_t kMost = CReedSolomon64::kMaxParity;
using Poly = std::array<std::uint8_t, kMost + 1>;   // coefficient n stands at x^n

/** Logarithms of the generators' coefficients from x^0 up; the leading one is 1. */
constexpr std::array<std::uint8_t, 2> kGenerator_Q{1, 6};
constexpr std::array<std::uint8_t, 4> kGenerator_P{6, 21, 39, 18};

/** The value of a polynomial at alpha^power, power 0 to 62. */
std::uint8_t ValueAt(const Poly& poly, unsigned power) noexcept {
    std::uint8_t sum = 0;
    for (std::size_t n = poly.size(); n-- > 0;)
        sum = static_cast<std::uint8_t>(GF64::Times(sum, GF64::Exp(power)) ^ poly[n]);
    return sum;
}

bool Syndromes(std::span<const std::uint8_t> word, std::size_t parityL, Poly& syndromes) noexcept {
    bool cleanB = true;
    for (std::size_t root = 0; root < parityL; ++root) {
        std::uint8_t sum = 0;
        for (const std::uint8_t symbol : word)
            sum = static_cast<std::uint8_t>(GF64::Times(sum, GF64::Exp(static_cast<unsigned>(root))) ^ symbol);
        syndromes[root] = sum;
        cleanB = cleanB && sum == 0;
    }
    return cleanB;
}

/** Berlekamp and Massey: the shortest error locator that makes the syndromes; answers its length. */
std::size_t Locator(const Poly& syndromes, std::size_t parityL, Poly& locator) noexcept {
    Poly before{1};
    locator = Poly{1};
    std::size_t lengthL = 0, shift = 1;
    std::uint8_t beforeGap = 1;
    for (std::size_t k = 0; k < parityL; ++k, ++shift) {
        std::uint8_t gap = syndromes[k];
        for (std::size_t n = 1; n <= lengthL && n <= k; ++n)
            gap = static_cast<std::uint8_t>(gap ^ GF64::Times(locator[n], syndromes[k - n]));
        if (gap == 0) continue;
        const Poly kept = locator;
        const std::uint8_t factor = GF64::Over(gap, beforeGap);
        for (std::size_t n = 0; n + shift < locator.size(); ++n)
            locator[n + shift] = static_cast<std::uint8_t>(locator[n + shift] ^ GF64::Times(factor, before[n]));
        if (2 * lengthL <= k) {
            lengthL = k + 1 - lengthL;
            before = kept;
            beforeGap = gap;
            shift = 0;
        }
    }
    return lengthL;
}
}   // namespace

void CReedSolomon64::Encode(std::span<std::uint8_t> word, std::size_t parityL) noexcept {
    const std::span<const std::uint8_t> generator =
        parityL == 2 ? std::span<const std::uint8_t>(kGenerator_Q) : std::span<const std::uint8_t>(kGenerator_P);
    std::array<std::uint8_t, kMost> shiftRegister{};   // [0] stands at x^0
    for (const std::uint8_t symbol : word.first(word.size() - parityL)) {
        const auto feedback = static_cast<std::uint8_t>(symbol ^ shiftRegister[parityL - 1]);
        for (std::size_t n = parityL; n-- > 0;) {
            const std::uint8_t below = n == 0 ? std::uint8_t{0} : shiftRegister[n - 1];
            shiftRegister[n] = static_cast<std::uint8_t>(below ^ GF64::Times(feedback, GF64::Exp(generator[n])));
        }
    }
    for (std::size_t n = 0; n < parityL; ++n) word[word.size() - 1 - n] = shiftRegister[n];
}

int CReedSolomon64::Decode(std::span<std::uint8_t> word, std::size_t parityL) noexcept {
    Poly syndromes{}, locator{};
    if (Syndromes(word, parityL, syndromes)) return 0;
    const std::size_t errorsL = Locator(syndromes, parityL, locator);
    if (errorsL > parityL / 2 || locator[errorsL] == 0) return kBeyondRepair;

    // Chien: a root at alpha^-power tells a wrong symbol at x^power; only those inside the shortened word count.
    std::array<unsigned, kMost> powers{};
    std::size_t foundL = 0;
    for (unsigned power = 0; power < word.size() && foundL < errorsL; ++power)
        if (ValueAt(locator, (GF64::kOrder - power) % GF64::kOrder) == 0) powers[foundL++] = power;
    if (foundL != errorsL) return kBeyondRepair;

    // Forney, with alpha^0 as the first root: X times evaluator over the locator's derivative, both at 1 / X.
    Poly evaluator{}, derivative{};
    for (std::size_t n = 0; n < parityL; ++n)
        for (std::size_t m = 0; m <= n && m <= errorsL; ++m)
            evaluator[n] = static_cast<std::uint8_t>(evaluator[n] ^ GF64::Times(locator[m], syndromes[n - m]));
    for (std::size_t n = 1; n <= errorsL; n += 2) derivative[n - 1] = locator[n];   // even terms vanish: 1 + 1 is 0
    for (std::size_t n = 0; n < foundL; ++n) {
        const unsigned inverse = (GF64::kOrder - powers[n]) % GF64::kOrder;
        const std::uint8_t below = ValueAt(derivative, inverse);
        if (below == 0) return kBeyondRepair;   // a double root; cannot be once all roots were found
        const std::uint8_t size = GF64::Times(GF64::Exp(powers[n]), GF64::Over(ValueAt(evaluator, inverse), below));
        std::uint8_t& symbol = word[word.size() - 1 - powers[n]];
        symbol = static_cast<std::uint8_t>(symbol ^ size);
    }
    return static_cast<int>(errorsL);
}
