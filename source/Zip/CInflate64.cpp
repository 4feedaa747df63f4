#include "Zip/CInflate64.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace {

using Entry = CHuffmanTable::Entry;

constexpr unsigned kSymbol_End = 256;

/** Symbols of the literal and length code. Lengths 3 to 257 as in deflate; the last code counts from 3 with 16 bits. */
constexpr std::array<Entry, 288> kMeaning_Literals = [] {
    std::array<Entry, 288> meaning{};
    for (unsigned n = 0; n < 256; ++n) meaning[n] = {static_cast<std::uint16_t>(n), 0, CHuffmanTable::kKind_LITERAL};
    meaning[kSymbol_End] = {0, 0, CHuffmanTable::kKind_END};
    unsigned base = 3;
    for (unsigned n = 257; n < 285; ++n) {
        const unsigned extra = n < 265 ? 0 : (n - 261) / 4;
        meaning[n] = {static_cast<std::uint16_t>(base), 0, static_cast<std::uint8_t>(extra)};
        base += 1U << extra;
    }
    meaning[285] = {3, 0, 16};
    for (unsigned n = 286; n < 288; ++n) meaning[n] = {0, 0, CHuffmanTable::kKind_BAD};
    return meaning;
}();

constexpr std::array<Entry, 32> kMeaning_Distances = [] {
    std::array<Entry, 32> meaning{};
    unsigned base = 1;
    for (unsigned n = 0; n < 32; ++n) {
        const unsigned extra = n < 4 ? 0 : n / 2 - 1;
        meaning[n] = {static_cast<std::uint16_t>(base), 0, static_cast<std::uint8_t>(extra)};
        base += 1U << extra;
    }
    return meaning;
}();

constexpr std::array<Entry, 19> kMeaning_Lengths = [] {
    std::array<Entry, 19> meaning{};
    for (unsigned n = 0; n < 19; ++n) meaning[n] = {static_cast<std::uint16_t>(n), 0, CHuffmanTable::kKind_LITERAL};
    return meaning;
}();

constexpr std::uint8_t kCodeLengths_Order[19] = {16, 17, 18, 0, 8, 7, 9, 6, 10, 5, 11, 4, 12, 3, 13, 2, 14, 1, 15};

std::uint64_t LowBits(std::uint64_t bits, unsigned countL) noexcept {
    return bits & ((std::uint64_t{1} << countL) - 1);
}

}   // namespace

CInflate64::Step CInflate64::Run(std::span<const std::byte> in, std::span<std::byte> out) noexcept {
    Step step;
    const auto* const startP = reinterpret_cast<const std::uint8_t*>(in.data());
    i_inP = startP;
    i_inEndP = startP + in.size();
    for (;;) {
        // Half a window at a time, so that what is new never runs over what a match may still ask for.
        i_freshL = 0;
        i_mostL = std::min(kWindow / 2, out.size() - step.givenL);
        const std::size_t fromL = i_atL;
        Decode();
        const std::size_t firstL = std::min(i_freshL, kWindow - fromL);
        if (i_freshL > 0) {
            std::memcpy(out.data() + step.givenL, i_window.data() + fromL, firstL);
            if (i_freshL > firstL) std::memcpy(out.data() + step.givenL + firstL, i_window.data(), i_freshL - firstL);
        }
        step.givenL += i_freshL;
        i_knownL = std::min(kWindow, i_knownL + i_freshL);
        if (i_freshL < i_mostL || step.givenL == out.size()) break;
    }
    i_freshL = 0;
    step.takenL = static_cast<std::size_t>(i_inP - startP);
    i_takenL += step.takenL;
    if (i_state == State::kEnd)
        step.status = Status::kEnd;
    else if (i_state == State::kBad)
        step.status = Status::kBad;
    else
        step.status = i_inP == i_inEndP && step.givenL < out.size() ? Status::kNeedInput : Status::kNeedOutput;
    i_inP = i_inEndP = nullptr;
    return step;
}

void CInflate64::Decode() noexcept {
    while (Advance()) {
    }
}

/** One step; false when it wants more input or more room, or when there is nothing left to do. */
bool CInflate64::Advance() noexcept {
    switch (i_state) {
        case State::kBlock:
            return Block();
        case State::kStoredSize:
            return StoredSize();
        case State::kStored:
            return Stored();
        case State::kTableSizes:
            return TableSizes();
        case State::kCodeLengths:
            return CodeLengths();
        case State::kLengths:
            return Lengths();
        case State::kSymbol:
            return i_inEndP - i_inP >= 16 && i_freshL < i_mostL ? Fast() : Symbol();
        case State::kDistance:
            return Distance();
        case State::kMatch:
            return Match();
        case State::kEnd:
        case State::kBad:
            break;
    }
    return false;
}

bool CInflate64::Fail() noexcept {
    i_state = State::kBad;
    return false;
}

bool CInflate64::Need(unsigned bitsL) noexcept {
    while (i_bitsL < bitsL) {
        if (i_inP == i_inEndP) return false;
        i_bits |= std::uint64_t{*i_inP++} << i_bitsL;
        i_bitsL += 8;
    }
    return true;
}

unsigned CInflate64::Take(unsigned bitsL) noexcept {
    const unsigned taken = static_cast<unsigned>(LowBits(i_bits, bitsL));
    i_bits >>= bitsL;
    i_bitsL -= bitsL;
    return taken;
}

/** The next code, with its extra bits behind it in the buffer; nothing is taken off. */
bool CInflate64::FindAll(const CHuffmanTable& table, Entry& entry) noexcept {
    for (;;) {
        entry = table.Find(i_bits);
        const unsigned extra = entry.kind < CHuffmanTable::kKind_BAD ? entry.kind : 0U;
        // With a code that is whole the extra bits are known to be wanted; without, one more byte may tell.
        if (entry.bitsL + extra <= i_bitsL) return true;
        if (!Need(i_bitsL + 1)) return false;
    }
}

void CInflate64::Put(std::uint8_t byte) noexcept {
    i_window[i_atL] = byte;
    i_atL = (i_atL + 1) & (kWindow - 1);
    ++i_freshL;
}

bool CInflate64::Block() noexcept {
    if (i_lastB) {
        i_state = State::kEnd;
        return false;
    }
    if (!Need(3)) return false;
    i_lastB = Take(1) != 0;
    switch (Take(2)) {
        case 0:
            i_state = State::kStoredSize;
            return true;
        case 1: {
            std::array<std::uint8_t, 288> lengths{};
            for (std::size_t n = 0; n < lengths.size(); ++n) lengths[n] = n < 144 ? 8 : n < 256 ? 9 : n < 280 ? 7 : 8;
            std::array<std::uint8_t, 32> distances{};
            distances.fill(5);
            if (!i_literals.Build(lengths, kMeaning_Literals) || !i_distances.Build(distances, kMeaning_Distances))
                return Fail();
            i_state = State::kSymbol;
            return true;
        }
        case 2:
            i_state = State::kTableSizes;
            return true;
        default:
            return Fail();
    }
}

bool CInflate64::StoredSize() noexcept {
    // Whole bytes may already wait in the buffer: only those up to the next byte's start are dropped.
    const unsigned oddL = i_bitsL % 8;
    if (!Need(32 + oddL)) return false;
    Take(oddL);
    const unsigned sizeL = Take(16), check = Take(16);
    if ((sizeL ^ check) != 0xFFFF) return Fail();
    i_leftL = sizeL;
    i_state = State::kStored;
    return true;
}

bool CInflate64::Stored() noexcept {
    while (i_leftL > 0) {
        if (i_freshL == i_mostL) return false;
        if (i_bitsL > 0) {
            Put(static_cast<std::uint8_t>(Take(8)));
            --i_leftL;
            continue;
        }
        const std::size_t countL =
            std::min({i_leftL, i_mostL - i_freshL, kWindow - i_atL, static_cast<std::size_t>(i_inEndP - i_inP)});
        if (countL == 0) return false;
        std::memcpy(i_window.data() + i_atL, i_inP, countL);
        i_inP += countL;
        i_atL = (i_atL + countL) & (kWindow - 1);
        i_freshL += countL;
        i_leftL -= countL;
    }
    i_state = State::kBlock;
    return true;
}

bool CInflate64::TableSizes() noexcept {
    if (!Need(14)) return false;
    i_literalsL = Take(5) + 257;
    i_distancesL = Take(5) + 1;
    i_codesL = Take(4) + 4;
    if (i_literalsL > kLiterals_Most) return Fail();
    i_lengthsL = 0;
    i_codeLengths.fill(0);
    i_state = State::kCodeLengths;
    return true;
}

bool CInflate64::CodeLengths() noexcept {
    for (; i_lengthsL < i_codesL; ++i_lengthsL) {
        if (!Need(3)) return false;
        i_codeLengths[kCodeLengths_Order[i_lengthsL]] = static_cast<std::uint8_t>(Take(3));
    }
    if (!i_literals.Build(i_codeLengths, kMeaning_Lengths)) return Fail();
    i_lengthsL = 0;
    i_state = State::kLengths;
    return true;
}

bool CInflate64::Lengths() noexcept {
    const unsigned wholeL = i_literalsL + i_distancesL;
    while (i_lengthsL < wholeL) {
        Entry entry;
        if (!FindAll(i_literals, entry)) return false;
        if (entry.kind != CHuffmanTable::kKind_LITERAL) return Fail();
        if (entry.value < 16) {
            Take(entry.bitsL);
            i_lengths[i_lengthsL++] = static_cast<std::uint8_t>(entry.value);
            continue;
        }
        constexpr struct { unsigned extra, base; } kRepeats[] = {{2, 3}, {3, 3}, {7, 11}};
        const auto repeat = kRepeats[entry.value - 16];
        if (!Need(entry.bitsL + repeat.extra)) return false;
        Take(entry.bitsL);
        const unsigned countL = repeat.base + Take(repeat.extra);
        if (countL > wholeL - i_lengthsL || (entry.value == 16 && i_lengthsL == 0)) return Fail();
        const std::uint8_t length = entry.value == 16 ? i_lengths[i_lengthsL - 1] : std::uint8_t{0};
        std::fill_n(i_lengths.begin() + i_lengthsL, countL, length);
        i_lengthsL += countL;
    }
    return BuildTables();
}

bool CInflate64::BuildTables() noexcept {
    const std::span<const std::uint8_t> all(i_lengths);
    if (i_lengths[kSymbol_End] == 0) return Fail();   // a block that could not end
    if (!i_literals.Build(all.first(i_literalsL), kMeaning_Literals) ||
        !i_distances.Build(all.subspan(i_literalsL, i_distancesL), kMeaning_Distances))
        return Fail();
    i_state = State::kSymbol;
    return true;
}

bool CInflate64::Symbol() noexcept {
    if (i_freshL == i_mostL) return false;
    Entry entry;
    if (!FindAll(i_literals, entry)) return false;
    Take(entry.bitsL);
    if (entry.kind == CHuffmanTable::kKind_LITERAL) {
        Put(static_cast<std::uint8_t>(entry.value));
        return true;
    }
    if (entry.kind == CHuffmanTable::kKind_END) {
        i_state = State::kBlock;
        return true;
    }
    if (entry.kind == CHuffmanTable::kKind_BAD) return Fail();
    i_leftL = entry.value + Take(entry.kind);
    i_state = State::kDistance;
    return true;
}

bool CInflate64::Distance() noexcept {
    Entry entry;
    if (!FindAll(i_distances, entry)) return false;
    if (entry.kind == CHuffmanTable::kKind_BAD) return Fail();
    Take(entry.bitsL);
    i_distanceL = entry.value + Take(entry.kind);
    if (IsFar(i_distanceL)) return Fail();
    i_state = State::kMatch;
    return true;
}

bool CInflate64::Match() noexcept {
    const std::size_t countL = std::min(i_leftL, i_mostL - i_freshL);
    CopyMatch(countL);
    i_leftL -= countL;
    if (i_leftL > 0) return false;
    i_state = State::kSymbol;
    return true;
}

/** From `i_distanceL` back. Where the two run into each other, what was just written is read again, as the format
    wants. */
void CInflate64::CopyMatch(std::size_t countL) noexcept {
    std::size_t fromL = (i_atL - i_distanceL) & (kWindow - 1), toL = i_atL;
    i_freshL += countL;
    i_atL = (i_atL + countL) & (kWindow - 1);
    std::uint8_t* const windowP = i_window.data();
    if (i_distanceL >= 8 && countL <= kWindow - std::max(fromL, toL)) {
        for (; countL >= 8; countL -= 8, fromL += 8, toL += 8) {
            std::uint64_t eight;
            std::memcpy(&eight, windowP + fromL, 8);
            std::memcpy(windowP + toL, &eight, 8);
        }
    }
    for (; countL > 0; --countL) {
        windowP[toL] = windowP[fromL];
        fromL = (fromL + 1) & (kWindow - 1);
        toL = (toL + 1) & (kWindow - 1);
    }
}

/** Symbols as long as there are 16 bytes of input and room: no question about bits in between. Leaves the bits above
    those that are known at 0 again. */
bool CInflate64::Fast() noexcept {
    const std::uint8_t* inP = i_inP;
    const std::uint8_t* const safeP = i_inEndP - 16;   // two refills of 8 bytes a symbol
    std::uint64_t bits = i_bits;
    unsigned bitsL = i_bitsL;
    std::size_t atL = i_atL, freshL = i_freshL;
    const std::size_t mostL = i_mostL;
    // At least 56 bits after it; bits above the count are those that the next refill brings again.
    const auto refill = [&] {
        std::uint64_t eight;
        std::memcpy(&eight, inP, 8);
        if constexpr (std::endian::native == std::endian::big) eight = __builtin_bswap64(eight);
        bits |= eight << bitsL;
        inP += (63 - bitsL) >> 3;
        bitsL |= 56;
    };
    const auto take = [&](unsigned countL) {
        const std::size_t taken = static_cast<std::size_t>(LowBits(bits, countL));
        bits >>= countL;
        bitsL -= countL;
        return taken;
    };
    bool okB = true;
    while (inP <= safeP && freshL < mostL) {
        refill();
        Entry entry = i_literals.Find(bits);
        if (entry.kind == CHuffmanTable::kKind_LITERAL) {
            // Up to three in a row from one refill: 45 bits at the most.
            for (int more = 2;; --more) {
                take(entry.bitsL);
                i_window[atL] = static_cast<std::uint8_t>(entry.value);
                atL = (atL + 1) & (kWindow - 1);
                ++freshL;
                if (more == 0 || freshL == mostL) break;
                entry = i_literals.Find(bits);
                if (entry.kind != CHuffmanTable::kKind_LITERAL) break;
            }
            continue;
        }
        take(entry.bitsL);
        if (entry.kind == CHuffmanTable::kKind_END) {
            i_state = State::kBlock;
            break;
        }
        if (entry.kind == CHuffmanTable::kKind_BAD) {
            okB = false;
            break;
        }
        std::size_t lengthL = entry.value + take(entry.kind);
        refill();
        entry = i_distances.Find(bits);
        if (entry.kind == CHuffmanTable::kKind_BAD) {
            okB = false;
            break;
        }
        take(entry.bitsL);
        i_distanceL = entry.value + take(entry.kind);
        i_atL = atL;
        i_freshL = freshL;
        if (IsFar(i_distanceL)) {
            okB = false;
            break;
        }
        const std::size_t countL = std::min(lengthL, mostL - freshL);
        CopyMatch(countL);
        atL = i_atL;
        freshL = i_freshL;
        if (countL < lengthL) {
            i_leftL = lengthL - countL;
            i_state = State::kMatch;
            break;
        }
    }
    // Bytes that were only looked at go back.
    const unsigned spareL = std::min<unsigned>(bitsL / 8, static_cast<unsigned>(inP - i_inP));
    inP -= spareL;
    bitsL -= spareL * 8;
    i_bits = LowBits(bits, bitsL);
    i_bitsL = bitsL;
    i_inP = inP;
    i_atL = atL;
    i_freshL = freshL;
    if (!okB) return Fail();
    return true;
}
