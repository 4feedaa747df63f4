#include <unistd.h>

#include <cstdio>
#include <filesystem>
#include <fstream>

#include "Graphics/CGraphics.h"
#include "Graphics/CSubCodeStream_File.h"
#include "Graphics/SlowCDG.h"

namespace {
/** The last picture that the ffmpeg program makes of a stream, three bytes a pixel; empty when it fails. */
std::vector<unsigned char> LastFrameOfFFmpeg(const std::filesystem::path& file) {
    const std::string command =
        "ffmpeg -v error -nostdin -f cdg -i '" + file.string() + "' -vsync passthrough -f rawvideo -pix_fmt rgb24 -";
    std::FILE* pipeP = ::popen(command.c_str(), "r");
    if (pipeP == nullptr) return {};
    std::vector<unsigned char> frame, last(300 * 216 * 3);
    while (std::fread(last.data(), 1, last.size(), pipeP) == last.size()) frame = last;
    return ::pclose(pipeP) == 0 ? frame : std::vector<unsigned char>();
}

// Without scrolls, offsets, channels and damage both tell the same; ffmpeg shows tiles under the border, so only the
// visible area is compared.
TEST(CGraphicsGolden, AgreesWithTheFFmpegProgram) {
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("vopla-golden-" + std::to_string(::getpid()) + ".cdg");
    for (unsigned seed = 1; seed <= 3; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        std::vector<SubCodePacket> packets;
        while (packets.size() < 300) {
            SubCodePacket packet = RandomPacket(random);
            if (packets.size() < 3) packet.bytes[1] = std::array<std::uint8_t, 3>{1, 30, 31}[packets.size()];
            if (packets.empty()) packet.bytes[5] = 0;
            const std::uint8_t kind = packet.bytes[1];
            if (kind == 20 || kind == 24 || kind == 28 || kind == 7 || (kind == 1 && packets.size() > 60)) continue;
            if (kind == 6 || kind == 38) {
                packet.bytes[4] &= 15, packet.bytes[5] &= 15;
                packet.bytes[6] %= 18, packet.bytes[7] %= 50;
            }
            packets.push_back(packet);
        }
        std::ofstream(file, std::ios::binary)
            .write(reinterpret_cast<const char*>(packets.data()), static_cast<long>(packets.size() * 24));
        const std::vector<unsigned char> golden = LastFrameOfFFmpeg(file);
        ASSERT_FALSE(golden.empty()) << "the ffmpeg program failed";
        CSubCodeStream_File stream;
        OSErr err = stream.Open(file);
        const auto graphics = CGraphics::Make(0xFFFF, {}, err);
        ASSERT_EQ(graphics->Advance(&stream, packets.size(), false, false), noErr);
        for (int y = 12; y < 204; ++y)
            for (int x = 6; x < 294; ++x) {
                const unsigned char* rgbP = &golden[static_cast<std::size_t>(y * 300 + x) * 3];
                const Pixel32 theirs = 0xFF000000U | Pixel32{rgbP[0]} << 16 | Pixel32{rgbP[1]} << 8 | rgbP[2];
                ASSERT_EQ(graphics->TrueColor().Row32(y)[static_cast<std::size_t>(x)], theirs) << x << ' ' << y;
            }
    }
    std::filesystem::remove(file);
}
}   // namespace
