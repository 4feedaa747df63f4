#pragma once
#include <cstddef>
#include <cstdint>
#include <vector>

/** Which rows of a list point to a song or singer: pairs of its number and the row's slot, found by the number. A song
    that has several rows has several pairs. 8 bytes a place, and a third to two thirds of the places are free.
    Threads  its owner's lock.
    Owner    CMutex_PLIVec, by value. */
class CTargetIndex {
public:
    /** `slot` is over 0, and not yet there with this number. */
    void Add(std::int32_t number, std::int32_t slot);
    /** Nothing happens when it is not there. */
    void Remove(std::int32_t number, std::int32_t slot);
    void Clear() noexcept;
    /** `found(slot)` for each row of this number, in no order, until it answers false. */
    template <class Found>
    void ForEach(std::int32_t number, Found&& found) const {
        if (i_places.empty()) return;
        for (std::size_t n = Home(number); i_places[n].slot != 0; n = Next(n))
            if (i_places[n].number == number && !found(i_places[n].slot)) return;
    }

private:
    struct Place {
        std::int32_t number = 0;
        std::int32_t slot = 0;   // 0: free
    };
    /** Ids come one after the other, so they are spread first. */
    [[nodiscard]] std::size_t Home(std::int32_t number) const noexcept {
        const std::uint32_t spread = static_cast<std::uint32_t>(number) * 0x9E3779B1U;
        return (spread ^ spread >> 15) & (i_places.size() - 1);
    }
    [[nodiscard]] std::size_t Next(std::size_t n) const noexcept { return (n + 1) & (i_places.size() - 1); }
    void Grow();

    std::vector<Place> i_places;   // a power of two of them, or none; never full
    std::size_t i_usedL = 0;
};
