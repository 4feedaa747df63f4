#include "Zip/CHuffmanTable.h"

#include <algorithm>

namespace {

/** The low `bitsL` bits of `code`, the first last: codes are told from their high end, and read from the low one. */
unsigned Reversed(unsigned code, unsigned bitsL) noexcept {
    unsigned reversed = 0;
    for (; bitsL > 0; --bitsL, code >>= 1) reversed = reversed << 1 | (code & 1);
    return reversed;
}

}   // namespace

bool CHuffmanTable::Build(std::span<const std::uint8_t> lengths, std::span<const Entry> meaning) noexcept {
    std::array<unsigned, kMost_Bits + 1> counts{}, next{};
    for (const std::uint8_t length : lengths) ++counts[std::min<unsigned>(length, kMost_Bits)];
    counts[0] = 0;

    unsigned longest = 0, used = 0;
    int roomL = 1;   // codes of the length at hand that are still free
    for (unsigned n = 1; n <= kMost_Bits; ++n) {
        roomL = roomL * 2 - static_cast<int>(counts[n]);
        if (roomL < 0) return false;
        next[n] = (next[n - 1] + counts[n - 1]) * 2;
        if (counts[n] != 0) longest = n;
        used += counts[n];
    }
    if (roomL > 0 && used > 0 && !(used == 1 && longest == 1)) return false;

    const Entry bad{0, 1, kKind_BAD};
    constexpr std::size_t kRoot = std::size_t{1} << kRoot_Bits;
    std::fill_n(i_entries.begin(), kRoot, bad);
    std::size_t freeL = kRoot;

    // Second tables first need their sizes: the longest code behind each root.
    std::array<std::uint8_t, kRoot> deepest{};
    if (longest > kRoot_Bits) {
        std::array<unsigned, kMost_Bits + 1> code = next;
        for (const std::uint8_t length : lengths) {
            if (length == 0) continue;
            const unsigned reversed = Reversed(code[length]++, length);
            if (length > kRoot_Bits) {
                std::uint8_t& deep = deepest[reversed & (kRoot - 1)];
                deep = std::max(deep, static_cast<std::uint8_t>(length - kRoot_Bits));
            }
        }
        for (std::size_t root = 0; root < kRoot; ++root) {
            if (deepest[root] == 0) continue;
            const std::size_t sizeL = std::size_t{1} << deepest[root];
            if (sizeL > kEntries - freeL) return false;
            std::fill_n(i_entries.begin() + static_cast<std::ptrdiff_t>(freeL), sizeL, bad);
            i_entries[root] = {static_cast<std::uint16_t>(freeL), deepest[root], kKind_TABLE};
            freeL += sizeL;
        }
    }
    for (std::size_t symbol = 0; symbol < lengths.size(); ++symbol) {
        const unsigned length = lengths[symbol];
        if (length == 0) continue;
        const std::size_t reversed = Reversed(next[length]++, length);
        Entry entry = meaning[symbol];
        std::size_t at = 0, endL = kRoot, step = std::size_t{1} << length;
        if (length <= kRoot_Bits) {
            at = reversed;
            entry.bitsL = static_cast<std::uint8_t>(length);
        } else {
            const Entry table = i_entries[reversed & (kRoot - 1)];
            at = table.value + (reversed >> kRoot_Bits);
            endL = table.value + (std::size_t{1} << table.bitsL);
            step = std::size_t{1} << (length - kRoot_Bits);
            entry.bitsL = static_cast<std::uint8_t>(length - kRoot_Bits);
        }
        for (; at < endL; at += step) i_entries[at] = entry;
    }
    return true;
}
