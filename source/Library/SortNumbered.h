#pragma once
#include <cstdint>
#include <span>
#include <vector>

/** A number to sort by, and whose it is. */
struct Numbered {
    std::uint64_t number = 0;
    std::uint32_t index = 0;
};

/** Upwards by the number; equal ones stay as they were. Many are sorted by digits of 11 bits, of which those that are
    alike in all numbers cost nothing: a million numbers of 36 bits take four passes instead of twenty compares each.
    `room` is grown when needed and may serve again. */
void SortNumbered(std::span<Numbered> rows, std::vector<Numbered>& room);
