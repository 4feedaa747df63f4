#include "Library/CTargetIndex.h"

#include <utility>

namespace {

constexpr std::size_t kFewest_Places = 16;

}   // namespace

void CTargetIndex::Grow() {
    std::vector<Place> before(i_places.empty() ? kFewest_Places : i_places.size() * 2);
    before.swap(i_places);
    i_usedL = 0;
    for (const Place& place : before)
        if (place.slot != 0) Add(place.number, place.slot);
}

void CTargetIndex::Add(std::int32_t number, std::int32_t slot) {
    if ((i_usedL + 1) * 3 > i_places.size() * 2) Grow();
    std::size_t n = Home(number);
    while (i_places[n].slot != 0) n = Next(n);
    i_places[n] = {number, slot};
    ++i_usedL;
}

void CTargetIndex::Remove(std::int32_t number, std::int32_t slot) {
    if (i_places.empty()) return;
    std::size_t hole = Home(number);
    while (i_places[hole].slot != 0 && (i_places[hole].number != number || i_places[hole].slot != slot))
        hole = Next(hole);
    if (i_places[hole].slot == 0) return;
    // What was pushed on past the hole moves back, so that no search ends too early.
    const std::size_t mask = i_places.size() - 1;
    for (std::size_t n = Next(hole); i_places[n].slot != 0; n = Next(n))
        if (((n - Home(i_places[n].number)) & mask) >= ((n - hole) & mask)) {
            i_places[hole] = i_places[n];
            hole = n;
        }
    i_places[hole] = {};
    --i_usedL;
}

void CTargetIndex::Clear() noexcept {
    i_places = {};
    i_usedL = 0;
}
