#include "Library/SortNumbered.h"

#include <algorithm>
#include <array>
#include <utility>

namespace {

constexpr unsigned kDigit_Bits = 11, kDigits = (64 + kDigit_Bits - 1) / kDigit_Bits;
constexpr std::size_t kDigit_Values = std::size_t{1} << kDigit_Bits;
constexpr std::size_t kFew = 2048;   // below, counting digits costs more than comparing

std::size_t Digit(std::uint64_t number, unsigned digit) {
    return static_cast<std::size_t>(number >> (digit * kDigit_Bits)) & (kDigit_Values - 1);
}

}   // namespace

void SortNumbered(std::span<Numbered> rows, std::vector<Numbered>& room) {
    if (rows.size() < kFew) {
        std::ranges::stable_sort(rows, {}, &Numbered::number);
        return;
    }
    if (room.size() < rows.size()) room.resize(rows.size());
    std::array<std::array<std::uint32_t, kDigit_Values>, kDigits> counts{};
    for (const Numbered& row : rows)
        for (unsigned digit = 0; digit < kDigits; ++digit) ++counts[digit][Digit(row.number, digit)];
    std::span<Numbered> from = rows, to = std::span(room).first(rows.size());
    for (unsigned digit = 0; digit < kDigits; ++digit) {
        auto& starts = counts[digit];
        if (starts[Digit(from.front().number, digit)] == rows.size()) continue;   // alike in all
        std::uint32_t before = 0;
        for (std::uint32_t& start : starts) before += std::exchange(start, before);
        for (const Numbered& row : from) to[starts[Digit(row.number, digit)]++] = row;
        std::swap(from, to);
    }
    if (from.data() != rows.data()) std::ranges::copy(from, rows.begin());
}
