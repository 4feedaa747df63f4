#pragma once
#include <cstddef>
#include <cstdint>

#include "Meta/CMetaValue.h"

/** The values of one CMeta, packed: one allocation of ten bytes a value, in the order of the keys' numbers in the
    manager. A million songs of a dozen values live in these.
    Threads  none: its CMeta locks. */
class CMetaSlots {
public:
    static constexpr std::uint16_t kMostKeys = 2047;   // the number of a key has 11 bits

    CMetaSlots() = default;
    ~CMetaSlots();
    CMetaSlots(const CMetaSlots&) = delete;
    CMetaSlots& operator=(const CMetaSlots&) = delete;

    [[nodiscard]] std::size_t Count() const noexcept { return i_countS; }
    /** Room for so many without another allocation. */
    void Reserve(std::size_t countL);

    [[nodiscard]] CMetaValue Get(std::uint16_t keyIndex) const noexcept;
    [[nodiscard]] ValType TypeOf(std::uint16_t keyIndex) const noexcept;
    /** Puts a value, not an empty one, in the place of an old one, or in a new place. The mark of a place stays. */
    void Put(std::uint16_t keyIndex, CMetaValue value);
    /** Takes the value out; an empty one when there was none. */
    CMetaValue Take(std::uint16_t keyIndex);

    /** A place is marked when somebody may hold a CData of it. */
    [[nodiscard]] bool IsMarked(std::uint16_t keyIndex) const noexcept;
    void Mark(std::uint16_t keyIndex, bool markedB) noexcept;

    [[nodiscard]] std::uint16_t KeyAt(std::size_t place) const noexcept;
    [[nodiscard]] CMetaValue At(std::size_t place) const noexcept;

private:
    // i_blockP: i_roomS payloads of 8 bytes, then i_roomS tags of 2: key number 11 bits, kind 4 bits, mark 1 bit.
    [[nodiscard]] std::uint64_t* Payloads() const noexcept;
    [[nodiscard]] std::uint16_t* Tags() const noexcept;
    /** The first place whose key is not before this one. */
    [[nodiscard]] std::size_t Place(std::uint16_t keyIndex) const noexcept;
    [[nodiscard]] bool IsAt(std::size_t place, std::uint16_t keyIndex) const noexcept;

    std::byte* i_blockP = nullptr;
    std::uint16_t i_countS = 0, i_roomS = 0;
};
