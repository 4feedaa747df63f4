#include "Graphics/CAS_Adapt_SubChannels.h"

#include <algorithm>
#include <cstring>
#include <vector>

#include "Core/Assertions.h"

CAS_Adapt_SubChannels::CAS_Adapt_SubChannels(CSubCodeSink& sink, SubChannelMode mode) : i_sink(sink) {
    i_channels.SetMode(mode);
}

OSErr CAS_Adapt_SubChannels::Write(std::span<const std::uint8_t> bytes) {
    if (i_closedB || bytes.size() % kSubCodeUnit_Bytes != 0) return paramErr;
    if (i_channels.Mode() == SubChannelMode::kInterleaved) {
        const std::size_t sizeL = bytes.size() / kSubCodeUnit_Bytes;
        if (!Assert(sizeL == kSamplesPerCDSector_SubChan)) return paramErr;
        return WriteSector(bytes);
    }
    if (bytes.empty()) return noErr;
    std::vector<SubCodePacket> packets((bytes.size() + kSubCodePacket_Bytes - 1) / kSubCodePacket_Bytes);
    std::memcpy(packets.data(), bytes.data(), bytes.size());
    return WritePackets(packets);
}

OSErr CAS_Adapt_SubChannels::Close() {
    if (i_closedB) return noErr;
    OSErr err = noErr;
    if (i_channels.Mode() == SubChannelMode::kInterleaved) {
        const std::array<std::uint8_t, kSubCodeBytesPerSector> empty{};
        for (int sector = 0; sector < 2 && !Failed(err); ++sector) err = WriteSector(empty);
    }
    i_closedB = true;
    return err;
}

OSErr CAS_Adapt_SubChannels::WriteSector(std::span<const std::uint8_t> sector) {
    i_channels.PushSector(sector.first<kSubCodeBytesPerSector>());
    std::vector<SubCodePacket> packets;
    while (i_channels.QueuePackets() >= 2 * kPacketsPerCDSector) {
        if (const OSErr err = i_channels.Pop(packets.emplace_back()); Failed(err)) return err;
    }
    return packets.empty() ? noErr : WritePackets(packets);
}

OSErr CAS_Adapt_SubChannels::WritePackets(std::span<SubCodePacket> packets) {
    for (SubCodePacket& packet : packets) Finish(packet);
    return i_sink.Write({packets.front().bytes.data(), packets.size() * kSubCodePacket_Bytes});
}

void CAS_Adapt_SubChannels::Finish(SubCodePacket& packet) {
    // A packet out of the queue was corrected there; once more changes nothing, since its parity is zero now.
    static_cast<void>(CSubChannels::Correct(packet));
    const bool lowB = packet.Instruction() == CDGInstruction::kLoadLow;
    if (!packet.IsCDG() || (!lowB && packet.Instruction() != CDGInstruction::kLoadHigh)) return;
    Colors colors;
    std::copy_n(packet.bytes.begin() + 4, colors.size(), colors.begin());
    std::optional<Colors>& last = lowB ? i_lastLow : i_lastHigh;
    if (last == colors)
        packet = SubCodePacket{};
    else
        last = colors;
}
