// Packets one by one and all at once end in the same picture, and no byte of them reaches outside the planes.
#include <algorithm>
#include <cstring>
#include <vector>

#include "Graphics/CGraphics.h"
#include "Graphics/CSubCodeStream_Memory.h"

namespace {
std::unique_ptr<CGraphics> Fresh(std::uint16_t channels) {
    OSErr err = noErr;
    auto graphics = CGraphics::Make(channels, {}, err);
    if (!graphics) __builtin_trap();
    return graphics;
}
bool SamePicture(const CGraphics& a, const CGraphics& b) {
    for (int y = 0; y < 216; ++y) {
        if (!std::ranges::equal(a.TrueColor().Row32(y), b.TrueColor().Row32(y))) return false;
        if (std::memcmp(a.Index().Row(y), b.Index().Row(y), kCDGPlane_Width / 2) != 0) return false;
    }
    return true;
}
}   // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* dataP, std::size_t sizeL) {
    // The first two bytes choose the channels that are shown.
    const auto channels = static_cast<std::uint16_t>(sizeL < 2 ? 0xFFFF : dataP[0] << 8 | dataP[1]);
    CSubCodeStream_Memory whole(std::span(dataP, sizeL)), parts(std::span(dataP, sizeL));
    const auto once = Fresh(channels), split = Fresh(channels);
    const auto run = [](CGraphics& graphics, CSubCodeStream& stream, std::size_t countL) {
        std::vector<SubCodePacket> packets(countL + CGraphics::kShortRead_Packets);
        if (Failed(graphics.ReadSubCodes(&stream, packets, countL))) return false;
        graphics.ExecutePackets(std::span(packets).first(countL), false, false);
        return true;
    };
    static_cast<void>(run(*once, whole, sizeL / kSubCodePacket_Bytes + 1));
    while (run(*split, parts, 1)) {
    }
    if (!SamePicture(*once, *split)) __builtin_trap();
    return 0;
}
