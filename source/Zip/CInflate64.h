#pragma once
#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "Zip/CHuffmanTable.h"

/** Decompresses deflate64, which zlib does not know: deflate with a window of 64 KB, distance codes 30 and 31, and
    length code 285 with 16 extra bits. Takes the data in pieces of any size and goes on where it stopped. A copy is a
    saved state. Memory   all in the object, 80 KB and a little; nothing is allocated.
    Threads  one at a time. Errors kBad for data that are no deflate64; it stays. No input makes it write outside `out`.
    Source   RFC 1951; .ZIP File Format Specification (APPNOTE.TXT), 4.4.5, method 9. */
class CInflate64 {
public:
    enum class Status : unsigned char {
        kNeedInput,    // all of `in` is taken
        kNeedOutput,   // `out` is full; there may be more
        kEnd,          // the last block has ended
        kBad,
    };
    struct Step {
        Status status = Status::kNeedInput;
        std::size_t takenL = 0;   // bytes of `in`; up to 7 of them may still wait in the object
        std::size_t givenL = 0;   // bytes at the front of `out`, good with any status
    };
    [[nodiscard]] Step Run(std::span<const std::byte> in, std::span<std::byte> out) noexcept;
    /** Bytes of input that have really been used, of all that were taken. */
    [[nodiscard]] std::uint64_t UsedBytes() const noexcept { return i_takenL - i_bitsL / 8; }

private:
    static constexpr std::size_t kWindow = 64 * 1024, kLiterals_Most = 286, kDistances_Most = 32;
    enum class State : unsigned char {
        kBlock,
        kStoredSize,
        kStored,
        kTableSizes,
        kCodeLengths,
        kLengths,
        kSymbol,
        kDistance,
        kMatch,
        kEnd,
        kBad
    };

    void Decode() noexcept;
    bool Advance() noexcept;
    bool Fast() noexcept;
    bool Block() noexcept;
    bool StoredSize() noexcept;
    bool Stored() noexcept;
    bool TableSizes() noexcept;
    bool CodeLengths() noexcept;
    bool Lengths() noexcept;
    bool Symbol() noexcept;
    bool Distance() noexcept;
    bool Match() noexcept;
    bool BuildTables() noexcept;
    bool Fail() noexcept;
    bool Need(unsigned bitsL) noexcept;
    unsigned Take(unsigned bitsL) noexcept;
    bool FindAll(const CHuffmanTable& table, CHuffmanTable::Entry& entry) noexcept;
    void Put(std::uint8_t byte) noexcept;
    void CopyMatch(std::size_t countL) noexcept;
    [[nodiscard]] bool IsFar(std::size_t distanceL) const noexcept { return distanceL > i_knownL + i_freshL; }

    State i_state = State::kBlock;
    bool i_lastB = false;
    unsigned i_bitsL = 0;                           // of i_bits that are known; those above are 0 outside Fast
    std::uint64_t i_bits = 0;                       // the next bit is the lowest
    std::uint64_t i_takenL = 0;                     // bytes since the start
    std::size_t i_leftL = 0;                        // of a stored block or a match
    std::size_t i_distanceL = 0;                    // of the match
    std::size_t i_atL = 0;                          // where the next byte goes in the window
    std::size_t i_knownL = 0;                       // bytes of the window that earlier rounds filled, at most all
    unsigned i_literalsL = 0, i_distancesL = 0;     // sizes of the codes that are being read
    unsigned i_codesL = 0, i_lengthsL = 0;          // how many of their lengths are known
    std::array<std::uint8_t, 19> i_codeLengths{};   // of the code of the lengths
    std::array<std::uint8_t, kLiterals_Most + kDistances_Most> i_lengths{};
    CHuffmanTable i_literals, i_distances;   // i_literals is also the code of the lengths
    std::array<std::uint8_t, kWindow> i_window{};

    // Of the round at hand alone.
    const std::uint8_t* i_inP = nullptr;
    const std::uint8_t* i_inEndP = nullptr;
    std::size_t i_freshL = 0, i_mostL = 0;   // bytes put into the window, and how many may be
};
