#include "Graphics/CSubChannels.h"

#include <array>
#include <bit>
#include <cstring>

#include "Core/Assertions.h"
#include "Graphics/CReedSolomon64.h"
#include "Graphics/GF64.h"

namespace {
constexpr std::size_t kQ_Symbols = 4, kQ_Parity = 2, kP_Parity = 4;

/** Where byte n of a packet lies in the queue of an interleaved stream. */
constexpr std::array<std::uint8_t, kSubCodePacket_Bytes> kInterleave{
    0, 66, 125, 191, 100, 50, 150, 175, 8, 33, 58, 83, 108, 133, 158, 183, 16, 41, 25, 91, 116, 141, 166, 75};

/** What each value of each byte adds to the syndromes: those of P in bits 0 to 23, those of Q in bits 24 to 35. */
struct SyndromeTables {
    std::array<std::array<std::uint64_t, 64>, kQ_Symbols> both{};
    std::array<std::array<std::uint32_t, 64>, kSubCodePacket_Bytes> p{};   // the first four are not used
};
constexpr SyndromeTables kSyndromes = [] {
    SyndromeTables made;
    for (unsigned n = 0; n < kSubCodePacket_Bytes; ++n)
        for (unsigned value = 0; value < 64; ++value) {
            const auto symbol = static_cast<std::uint8_t>(value);
            std::uint32_t p = 0;
            for (unsigned root = 0; root < kP_Parity; ++root)
                p |= std::uint32_t{GF64::Times(symbol, GF64::Exp(root * (23 - n) % GF64::kOrder))} << 6 * root;
            made.p[n][value] = p;
            if (n >= kQ_Symbols) continue;
            std::uint64_t q = 0;
            for (unsigned root = 0; root < kQ_Parity; ++root)
                q |= std::uint64_t{GF64::Times(symbol, GF64::Exp(root * (3 - n)))} << 6 * root;
            made.both[n][value] = p | q << 24;
        }
    return made;
}();

static_assert(std::endian::native == std::endian::little, "the words below take byte 0 as their lowest");
constexpr std::uint64_t kMask8 = 0x3F3F3F3F3F3F3F3F;
constexpr std::uint64_t kParityQ = 0x00000000FFFF0000;   // bytes 2 and 3, in the first word
constexpr std::uint64_t kParityP = 0xFFFFFFFF00000000;   // bytes 20 to 23, in the last word

/** The 24 bytes as three words. */
struct Words {
    std::uint64_t a, b, c;
};
inline Words Load(const SubCodePacket& packet) noexcept {
    Words words;
    std::memcpy(&words, packet.bytes.data(), sizeof words);
    return words;
}
inline void Store(SubCodePacket& packet, const Words& words) noexcept {
    std::memcpy(packet.bytes.data(), &words, sizeof words);
}

template <unsigned n>
inline std::uint8_t Byte(std::uint64_t word) noexcept {
    return static_cast<std::uint8_t>(word >> 8 * n);
}
template <unsigned first>
inline std::uint32_t FourOfP(std::uint64_t word) noexcept {
    constexpr unsigned shift = first % 8;
    return kSyndromes.p[first][Byte<shift>(word)] ^ kSyndromes.p[first + 1][Byte<shift + 1>(word)] ^
           kSyndromes.p[first + 2][Byte<shift + 2>(word)] ^ kSyndromes.p[first + 3][Byte<shift + 3>(word)];
}
inline std::uint64_t SyndromesOf(const Words& words) noexcept {
    const std::uint64_t both = kSyndromes.both[0][Byte<0>(words.a)] ^ kSyndromes.both[1][Byte<1>(words.a)] ^
                               kSyndromes.both[2][Byte<2>(words.a)] ^ kSyndromes.both[3][Byte<3>(words.a)];
    return both ^ (FourOfP<4>(words.a) ^ FourOfP<8>(words.b) ^ FourOfP<12>(words.b) ^ FourOfP<16>(words.c) ^
                   FourOfP<20>(words.c));
}

/** Rare: a word whose syndromes are not zero. */
[[gnu::noinline]] bool Repair(SubCodePacket& packet) noexcept {
    const std::span<std::uint8_t> bytes(packet.bytes);
    const int q = CReedSolomon64::Decode(bytes.first(kQ_Symbols), kQ_Parity);
    const int p = CReedSolomon64::Decode(bytes, kP_Parity);
    return q > 0 || p > 0;
}

inline PacketCorrection CorrectOne(SubCodePacket& packet) noexcept {
    Words words = Load(packet);
    PacketCorrection found;
    if ((words.a | words.b | words.c) == 0) return found;   // blank: the common packet between two pages
    if (((words.a & kParityQ & kMask8) | (words.c & kParityP & kMask8)) != 0) {
        words = {words.a & kMask8, words.b & kMask8, words.c & kMask8};
        if (SyndromesOf(words) != 0) {
            Store(packet, words);
            found.correctedB = Repair(packet);
            words = Load(packet);
        }
    }
    // Without parity byte 0 was not masked: bits of channels P and Q in it drop the packet, as they always did.
    found.droppedB = Byte<0>(words.a) != kSubCode_CDG;
    if (found.droppedB)
        words = {0, 0, 0};
    else
        words = {words.a & ~kParityQ, words.b, words.c & ~kParityP};
    Store(packet, words);
    return found;
}
}   // namespace

void CSubChannels::SetMode(SubChannelMode mode) {
    i_mode = mode;
    i_queue.clear();
    i_frontL = 0;
    if (mode == SubChannelMode::kRaw) i_queue.assign(2 * kSubCodeBytesPerSector, 0);
}

void CSubChannels::PushSector(std::span<const std::uint8_t, kSubCodeBytesPerSector> sector) {
    for (const std::uint8_t byte : sector) i_queue.push_back(byte & kSubCode_Mask);
}

void CSubChannels::TakeFront() {
    i_frontL += kSubCodePacket_Bytes;
    if (i_frontL < 4096) return;   // move the rest down now and then, not for every packet
    i_queue.erase(i_queue.begin(), i_queue.begin() + static_cast<std::ptrdiff_t>(i_frontL));
    i_frontL = 0;
}

OSErr CSubChannels::Pop(SubCodePacket& packet) {
    const std::size_t queSizeL = QueueBytes();
    if (!AssertWords(queSizeL >= 2 * kSubCodeBytesPerSector, "queSizeL >= (short)(2 * kSubCodeBytesPerSector)"))
        return paramErr;
    for (std::size_t n = 0; n < kSubCodePacket_Bytes; ++n)
        packet.bytes[n] = i_queue[i_frontL + (i_mode == SubChannelMode::kInterleaved ? kInterleave[n] : n)];
    TakeFront();
    if (i_mode != SubChannelMode::kRaw) static_cast<void>(Correct(packet));
    return noErr;
}

OSErr CSubChannels::Encode(const SubCodePacket& packet) {
    const std::size_t queSizeL = QueueBytes();
    if (!AssertWords(i_mode == SubChannelMode::kRaw && queSizeL == 2 * kSubCodeBytesPerSector,
                     "queSizeL == 2 * kSubCodeBytesPerSector"))
        return paramErr;
    SubCodePacket coded = packet;
    WriteParity(coded);
    i_queue.insert(i_queue.end(), kSubCodePacket_Bytes, 0);
    for (std::size_t n = 0; n < kSubCodePacket_Bytes; ++n) i_queue[i_frontL + kInterleave[n]] = coded.bytes[n];
    return noErr;
}

PacketCorrection CSubChannels::Correct(SubCodePacket& packet) noexcept { return CorrectOne(packet); }

void CSubChannels::Correct(std::span<SubCodePacket> packets) noexcept {
    for (SubCodePacket& packet : packets) static_cast<void>(CorrectOne(packet));
}

void CSubChannels::WriteParity(SubCodePacket& packet) noexcept {
    for (std::uint8_t& byte : packet.bytes) byte &= kSubCode_Mask;
    CReedSolomon64::Encode(std::span(packet.bytes).first(kQ_Symbols), kQ_Parity);
    CReedSolomon64::Encode(packet.bytes, kP_Parity);
}
