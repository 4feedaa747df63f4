// Raw sub-code through the adapter: packets one by one and all at once leave as the same bytes, whole packets only, and a
// second close adds nothing.
#include <algorithm>
#include <vector>

#include "Graphics/CAS_Adapt_SubChannels.h"

namespace {
struct Kept final : CSubCodeSink {
    OSErr Write(std::span<const std::uint8_t> bytes) override {
        i_bytes.insert(i_bytes.end(), bytes.begin(), bytes.end());
        return noErr;
    }
    std::vector<std::uint8_t> i_bytes;
};

std::vector<std::uint8_t> Adapted(std::span<const std::uint8_t> raw, SubChannelMode mode, std::size_t stepL) {
    Kept sink;
    CAS_Adapt_SubChannels adapter(sink, mode);
    for (std::size_t at = 0; at < raw.size(); at += stepL)
        if (Failed(adapter.Write(raw.subspan(at, std::min(stepL, raw.size() - at))))) __builtin_trap();
    if (Failed(adapter.Close())) __builtin_trap();
    const std::size_t closedL = sink.i_bytes.size();
    if (Failed(adapter.Close()) || sink.i_bytes.size() != closedL || closedL % kSubCodePacket_Bytes != 0)
        __builtin_trap();
    return sink.i_bytes;
}
}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    const std::span raw(dataP, sizeL / 4 * 4);
    if (raw.empty()) return 0;
    if (Adapted(raw, SubChannelMode::kPlain, kSubCodePacket_Bytes) != Adapted(raw, SubChannelMode::kPlain, raw.size()))
        __builtin_trap();
    const std::span sectors = raw.first(raw.size() / kSubCodeBytesPerSector * kSubCodeBytesPerSector);
    if (Adapted(sectors, SubChannelMode::kInterleaved, kSubCodeBytesPerSector).size() < sectors.size())
        __builtin_trap();
    return 0;
}
