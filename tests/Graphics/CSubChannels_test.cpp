#include "Graphics/CSubChannels.h"

#include <random>

#include "Core/Assertions.h"
#include "Graphics/CAS_Adapt_SubChannels.h"
#include "Graphics/SlowCDG.h"

namespace {
using Bytes = std::vector<std::uint8_t>;

SubCodePacket WithParity(SubCodePacket packet) {
    CSubChannels::WriteParity(packet);
    return packet;
}
SubCodePacket WithoutParity(SubCodePacket packet) {
    for (const std::size_t n : {2U, 3U, 20U, 21U, 22U, 23U}) packet.bytes[n] = 0;
    return packet;
}

/** Counts failed assertions instead of logging them. */
struct AssertCounter {
    static inline int s_failedL = 0;
    AssertCounter() {
        s_failedL = 0;
        SetAssertHandler([](const char*, const char*, long, bool) { return ++s_failedL, true; });
    }
    ~AssertCounter() { SetAssertHandler(nullptr); }
};

TEST(CSubChannels, PassesCleanPacketsAndTheirNoise) {
    std::mt19937 random(5);
    for (int n = 0; n < 300; ++n) {
        const SubCodePacket data = RandomPacket(random);
        SubCodePacket packet = WithParity(data);
        for (auto& byte : packet.bytes) byte = static_cast<std::uint8_t>(byte | random() % 4 * 64);
        const PacketCorrection found = CSubChannels::Correct(packet);
        ASSERT_EQ(packet, data);
        ASSERT_FALSE(found.correctedB || found.droppedB);
    }
}

TEST(CSubChannels, RepairsUpToTwoWrongBytes) {
    std::mt19937 random(6);
    for (int n = 0; n < 2000; ++n) {
        const SubCodePacket data = RandomPacket(random);
        SubCodePacket packet = WithParity(data);
        const std::size_t a = random() % 24, b = 4 + random() % 20;   // two in the Q word may be taken for another one
        const auto damage = [&](std::uint8_t& byte) { byte = static_cast<std::uint8_t>(byte ^ (random() % 63 + 1)); };
        damage(packet.bytes[a]);
        if (a != b) damage(packet.bytes[b]);
        if ((packet.bytes[2] | packet.bytes[3] | packet.bytes[20] | packet.bytes[21] | packet.bytes[22] |
             packet.bytes[23]) == 0)
            continue;   // no parity left: unchecked, as told
        ASSERT_TRUE(CSubChannels::Correct(packet).correctedB) << a << ' ' << b;
        ASSERT_EQ(packet, data) << a << ' ' << b;
    }
}

TEST(CSubChannels, DropsWhatIsNoGraphics) {
    SubCodePacket packet = WithoutParity({});
    EXPECT_FALSE(CSubChannels::Correct(packet).droppedB);   // blank already
    packet.bytes = {0x49, 1, 0, 0, 7};
    EXPECT_TRUE(CSubChannels::Correct(packet).droppedB);   // no parity, so not masked either
    EXPECT_EQ(packet, SubCodePacket{});
    packet.bytes = {0x09, 1, 0xC0, 0x40, 7};
    EXPECT_FALSE(CSubChannels::Correct(packet).droppedB);   // parity is empty in its low bits
    EXPECT_EQ(packet.bytes[4], 7);
    packet.bytes = {0x09, 1, 0, 0, 7};
    CSubChannels::WriteParity(packet);
    packet.bytes[0] = 0x49;
    EXPECT_FALSE(CSubChannels::Correct(packet).correctedB);
    EXPECT_EQ(packet.bytes[0], 9);
    packet.bytes = {8, 1, 0, 0, 7};
    CSubChannels::WriteParity(packet);
    EXPECT_TRUE(CSubChannels::Correct(packet).droppedB);
}

TEST(CSubChannels, WhatIsEncodedComesBackThroughTheInterleave) {
    std::mt19937 random(7);
    CSubChannels writer, reader;
    writer.SetMode(SubChannelMode::kRaw);
    reader.SetMode(SubChannelMode::kInterleaved);
    std::vector<SubCodePacket> in, out;
    Bytes stream;
    for (int n = 0; n < 400; ++n) {
        in.push_back(RandomPacket(random));
        ASSERT_EQ(writer.Encode(in.back()), noErr);
        SubCodePacket raw;
        ASSERT_EQ(writer.Pop(raw), noErr);
        stream.insert(stream.end(), raw.bytes.begin(), raw.bytes.end());
    }
    stream.resize(stream.size() + 2 * kSubCodeBytesPerSector);   // short of the encoder's tail: zeros
    for (std::size_t at = 0; at < stream.size(); at += kSubCodeBytesPerSector) {
        reader.PushSector(std::span(stream).subspan(at).first<kSubCodeBytesPerSector>());
        while (reader.QueuePackets() >= 8) ASSERT_EQ(reader.Pop(out.emplace_back()), noErr);
    }
    ASSERT_GE(out.size(), in.size());
    // The last seven packets still stood in the writer when the stream was cut; those before are whole.
    for (std::size_t n = 0; n + 8 < in.size(); ++n) ASSERT_EQ(out[n], in[n]) << n;
}

// Where the 24 symbols of a packet lie on a disc, written out here: a round trip alone would not see a wrong table.
constexpr std::array<std::size_t, 24> kOnDisc{0,   66,  125, 191, 100, 50, 150, 175, 8,   33,  58,  83,
                                              108, 133, 158, 183, 16,  41, 25,  91,  116, 141, 166, 75};

TEST(CSubChannels, TakesEachSymbolFromItsPlaceOnTheDisc) {
    // One symbol of a packet without parity stands at its place, all else is zero; 9 keeps the packet.
    for (std::size_t n = 1; n < 24; ++n) {
        if (n == 2 || n == 3 || n >= 20) continue;   // parity: it would be checked
        Bytes disc(2 * kSubCodeBytesPerSector);
        disc[kOnDisc[0]] = 9;
        disc[kOnDisc[n]] = static_cast<std::uint8_t>(n + 20);
        CSubChannels channels;
        channels.SetMode(SubChannelMode::kInterleaved);
        for (const std::size_t at : {std::size_t{0}, kSubCodeBytesPerSector})
            channels.PushSector(std::span(disc).subspan(at).first<kSubCodeBytesPerSector>());
        SubCodePacket packet, expected;
        ASSERT_EQ(channels.Pop(packet), noErr);
        expected.bytes[0] = 9;
        expected.bytes[n] = static_cast<std::uint8_t>(n + 20);
        EXPECT_EQ(packet, expected) << n;
    }
}

TEST(CSubChannels, PutsEachSymbolAtItsPlaceOnTheDisc) {
    CSubChannels channels;
    channels.SetMode(SubChannelMode::kRaw);
    SubCodePacket packet;
    for (std::size_t n = 0; n < 24; ++n) packet.bytes[n] = static_cast<std::uint8_t>(n == 0 ? 9 : 20 + n);
    CSubChannels::WriteParity(packet);
    ASSERT_EQ(channels.Encode(packet), noErr);
    Bytes disc;
    for (int n = 0; n < 9; ++n) {   // the two sectors of the encoder's delay, and the packet behind
        SubCodePacket raw;
        ASSERT_EQ(channels.Pop(raw), noErr);
        disc.insert(disc.end(), raw.bytes.begin(), raw.bytes.end());
        if (n < 8) {
            ASSERT_EQ(channels.Encode({}), noErr);
        }
    }
    for (std::size_t n = 0; n < 24; ++n) EXPECT_EQ(disc[kOnDisc[n]], packet.bytes[n]) << n;
}

TEST(CSubChannels, RefusesAQueueOfTheWrongLength) {
    const AssertCounter counter;
    CSubChannels channels;
    SubCodePacket packet;
    EXPECT_EQ(channels.Pop(packet), paramErr);
    EXPECT_EQ(channels.Encode(packet), paramErr);
    channels.SetMode(SubChannelMode::kRaw);
    EXPECT_EQ(channels.Encode(packet), noErr);
    EXPECT_EQ(channels.Encode(packet), paramErr);   // its packet was not taken
    EXPECT_EQ(AssertCounter::s_failedL, 3);
}

struct MemorySink final : CSubCodeSink {
    Bytes bytes;
    OSErr Write(std::span<const std::uint8_t> more) override {
        bytes.insert(bytes.end(), more.begin(), more.end());
        return noErr;
    }
    SubCodePacket Packet(std::size_t n) const {
        SubCodePacket packet;
        std::copy_n(bytes.begin() + static_cast<long>(n * 24), 24, packet.bytes.begin());
        return packet;
    }
};

TEST(CAS_Adapt_SubChannels, BlanksRepeatedColorsAndFillsTheLastPacket) {
    SubCodePacket low, high, other;
    low.bytes = {9, 30, 0, 0, 1, 2, 3};
    high.bytes = {9, 31, 0, 0, 1, 2, 3};
    other.bytes = {9, 30, 0, 0, 1, 2, 4};
    MemorySink sink;
    CAS_Adapt_SubChannels adapter(sink, SubChannelMode::kPlain);
    const std::vector in{low, high, low, high, other, low, low};
    const std::vector<SubCodePacket> out{low, high, {}, {}, other, low, {}};
    for (const auto& packet : in) ASSERT_EQ(adapter.Write(WithParity(packet).bytes), noErr);
    ASSERT_EQ(sink.bytes.size(), in.size() * 24);
    for (std::size_t n = 0; n < out.size(); ++n) EXPECT_EQ(sink.Packet(n), out[n]) << n;
    const Bytes shortL{9, 6, 0, 0, 1, 1, 1, 1};
    ASSERT_EQ(adapter.Write(shortL), noErr);
    EXPECT_EQ(sink.bytes.size(), 8U * 24);
    EXPECT_EQ(sink.Packet(7).bytes[7], 1);
    EXPECT_EQ(adapter.Write(Bytes{1, 2, 3}), paramErr);
}

TEST(CAS_Adapt_SubChannels, TakesSectorsOffADisc) {
    std::mt19937 random(8);
    CSubChannels writer;
    writer.SetMode(SubChannelMode::kRaw);
    MemorySink sink;
    CAS_Adapt_SubChannels adapter(sink, SubChannelMode::kInterleaved);
    std::vector<SubCodePacket> in(40);
    Bytes sector;
    for (std::size_t n = 0; n < in.size() + 8; ++n) {
        SubCodePacket data, raw;
        if (n < in.size()) in[n] = data = WithoutParity(RandomPacket(random));
        if (data.bytes[1] == 30 || data.bytes[1] == 31) in[n].bytes[1] = data.bytes[1] = 28;
        ASSERT_EQ(writer.Encode(data), noErr);
        ASSERT_EQ(writer.Pop(raw), noErr);
        sector.insert(sector.end(), raw.bytes.begin(), raw.bytes.end());
        if (sector.size() < kSubCodeBytesPerSector) continue;
        ASSERT_EQ(adapter.Write(sector), noErr);
        sector.clear();
    }
    ASSERT_EQ(adapter.Close(), noErr);
    ASSERT_GE(sink.bytes.size(), in.size() * 24);
    for (std::size_t n = 0; n < in.size(); ++n) ASSERT_EQ(sink.Packet(n), in[n]) << n;
    const AssertCounter counter;
    CAS_Adapt_SubChannels strict(sink, SubChannelMode::kInterleaved);
    EXPECT_EQ(strict.Write(Bytes(92)), paramErr);
    EXPECT_EQ(AssertCounter::s_failedL, 1);
}
}   // namespace
