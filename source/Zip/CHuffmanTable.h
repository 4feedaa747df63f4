#pragma once
#include <array>
#include <cstdint>
#include <span>

/** The look-up form of one canonical code of the deflate formats: a root table by the next 10 bits, and a second table
    for what is longer. Entries carry what the symbol stands for, so that the decoder does not look twice.
    Source   RFC 1951, 3.2.2 and 3.2.7. */
class CHuffmanTable {
public:
    static constexpr unsigned kRoot_Bits = 10, kMost_Bits = 15;

    /** `kind` is the symbol's meaning: see CInflate64. `bitsL` 0 marks bits that begin no code. */
    struct Entry {
        std::uint16_t value = 0;   // literal, base of a length or distance, or the start of a second table
        std::uint8_t bitsL = 0;    // to take off, this table's part of the code
        std::uint8_t kind = 0;     // extra bits, or one of the marks below
    };
    static constexpr std::uint8_t kKind_LITERAL = 0x80, kKind_END = 0x40, kKind_BAD = 0x20, kKind_TABLE = 0xC0;

    /** Makes the table of the code with these lengths, 0 for symbols that are not in it. `meaning` gives value and kind
        of each symbol. False when more codes are told than there is room for, or, but for a single code of one bit and
        for no code at all, when fewer. */
    bool Build(std::span<const std::uint8_t> lengths, std::span<const Entry> meaning) noexcept;

    /** The entry of the code at the low end of `bits`, with the whole code's length in `bitsL`. Bits above those that
        are known count as 0: the caller compares `bitsL` with what he has. */
    [[nodiscard]] Entry Find(std::uint64_t bits) const noexcept {
        const Entry first = i_entries[bits & ((1U << kRoot_Bits) - 1)];
        if (first.kind != kKind_TABLE) [[likely]]
            return first;
        Entry entry = i_entries[first.value + ((bits >> kRoot_Bits) & ((1U << first.bitsL) - 1))];
        entry.bitsL = static_cast<std::uint8_t>(entry.bitsL + kRoot_Bits);
        return entry;
    }

private:
    // At most 286 codes of up to 15 bits: no set of lengths that Build accepts needs more than this (a second table is
    // at most twice its codes, plus the root).
    static constexpr std::size_t kEntries = 2048;
    std::array<Entry, kEntries> i_entries{};
};
