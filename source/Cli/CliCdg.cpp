#include "Cli/CliCdg.h"

#include <openssl/sha.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <iomanip>
#include <memory>
#include <sstream>
#include <vector>

#include "Cli/CliCommand.h"
#include "Graphics/CGraphics.h"
#include "Graphics/CHq4x.h"
#include "Graphics/CSubCodeStream_File.h"
#include "Graphics/CSubCodeStream_Memory.h"
#include "Graphics/Png.h"

namespace {

constexpr int kChannels_Shown = 3;   // the first two, as the host shows a song

/** The shortest text that reads back as the same number. */
std::string NumberText(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

GraphicsUpscaler Upscaler(bool hq4xB) {
    if (!hq4xB) return {};
    return [filter = std::make_shared<CHq4x>()](const CPixels& source, CPixels& dest) {
        return filter->Scale(source, dest);
    };
}

/** The file as packets, the last one filled up with zeros; eofErr for a file without any. */
OSErr LoadPackets(const std::filesystem::path& file, std::vector<SubCodePacket>& packets) {
    CSubCodeStream_Memory stream;
    if (const OSErr err = stream.LoadFile(file); Failed(err)) return err;
    if (stream.LengthUnits() == 0) return eofErr;
    packets.resize((stream.LengthUnits() + kSubCodePacket_Units - 1) / kSubCodePacket_Units);
    const SubCodeRead got = stream.Read({packets.data()->bytes.data(), stream.LengthUnits() * kSubCodeUnit_Bytes});
    return got.err;
}

/** Of red, green and blue, three bytes a pixel, row by row. */
std::string SHA256(const CPixels& pixels, const Rect& part) {
    std::vector<unsigned char> bytes;
    bytes.reserve(static_cast<std::size_t>(part.Width()) * static_cast<std::size_t>(part.Height()) * 3);
    for (int y = part.top; y < part.bottom; ++y)
        for (int x = part.left; x < part.right; ++x) {
            const Pixel32 pixel = pixels.Row32(y)[static_cast<std::size_t>(x)];
            for (const unsigned shift : {16U, 8U, 0U}) bytes.push_back(static_cast<unsigned char>(pixel >> shift));
        }
    std::array<unsigned char, SHA256_DIGEST_LENGTH> digest{};
    ::SHA256(bytes.data(), bytes.size(), digest.data());
    std::ostringstream text;
    text << std::hex << std::setfill('0');
    for (const unsigned char byte : digest) text << std::setw(2) << static_cast<unsigned>(byte);
    return text.str();
}

}   // namespace

int MakeCdgFrame(const CliCall& call) {
    const CliContext& context = call.context;
    const std::filesystem::path file(call.words.arguments[0]), out(*call.words.Text("--out"));
    if (CliCall::WouldReplace(out, file)) return call.Usage("the picture would take the place of the song");
    CSubCodeStream_File stream;
    OSErr err = stream.Open(file);
    if (!Failed(err) && stream.LengthUnits() == 0) err = eofErr;
    if (Failed(err)) return CliFailFile(context, err, file);

    const auto channels = static_cast<std::uint16_t>(call.words.Number("--channels", kChannels_Shown));
    const std::unique_ptr<CGraphics> graphics = CGraphics::Make(channels, Upscaler(call.words.Has("--hq4x")), err);
    if (!graphics) return CliFailStep(context, err, "making the picture");
    const double time300 = std::floor(call.words.Number("--at", 0.0) * kSubCodePacketsPerSecond + 0.5);
    const std::size_t inFileL = (stream.LengthUnits() + kSubCodePacket_Units - 1) / kSubCodePacket_Units;
    const std::size_t countL = time300 < static_cast<double>(inFileL) ? static_cast<std::size_t>(time300) : inFileL;
    if (countL > 0)
        err = graphics->Advance(&stream, countL, false, false);
    else
        graphics->ExecutePackets({}, false, false);
    if (Failed(err)) return CliFailFile(context, err, file);

    const CPixels& picture = graphics->Picture();
    Rect part = picture.bounds();
    if (call.words.Has("--visible")) {
        const int scale = part.Width() / kCDGPlane_Area.Width();
        part = MakeRect(kCDGVisible_Area.left * scale, kCDGVisible_Area.top * scale, kCDGVisible_Area.Width() * scale,
                        kCDGVisible_Area.Height() * scale);
    }
    if (err = WritePng(picture, part, out); Failed(err)) return CliFailFile(context, err, out);
    context.out << "{\"time300\":" << static_cast<std::int64_t>(time300) << ",\"width\":" << part.Width()
                << ",\"height\":" << part.Height() << ",\"sha256\":\"" << SHA256(picture, part) << "\"}\n";
    return 0;
}

int ShowCdgInfo(const CliCall& call) {
    const CliContext& context = call.context;
    const std::filesystem::path file(call.words.arguments[0]);
    CSubCodeStream_File stream;
    OSErr err = stream.Open(file);
    if (!Failed(err) && stream.LengthUnits() == 0) err = eofErr;
    if (Failed(err)) return CliFailFile(context, err, file);

    static constexpr std::array<std::uint8_t, 9> kKnown{1, 2, 6, 20, 24, 28, 30, 31, 38};
    std::array<std::size_t, 64> counts{};
    std::size_t packetsL = 0, correctedL = 0, droppedL = 0;
    for (SubCodeRead got; got.err == noErr;) {   // a part at a time: no file is too long
        std::vector<SubCodePacket> part(8192);
        got = stream.Read({part.data()->bytes.data(), part.size() * kSubCodePacket_Bytes});
        if (Failed(got.err) && got.err != eofErr) return CliFailFile(context, got.err, file);
        part.resize((got.unitsL + kSubCodePacket_Units - 1) / kSubCodePacket_Units);
        packetsL += part.size();
        for (SubCodePacket& packet : part) {
            const PacketCorrection found = CSubChannels::Correct(packet);
            correctedL += found.correctedB;
            droppedL += found.droppedB;
            if (packet.IsCDG()) ++counts[packet.bytes[1] & kSubCode_Mask];
        }
    }
    std::size_t otherL = 0;
    for (const std::size_t countL : counts) otherL += countL;
    context.out << "{\"packets\":" << packetsL
                << ",\"seconds\":" << NumberText(static_cast<double>(packetsL) / kSubCodePacketsPerSecond)
                << ",\"instructions\":{";
    for (const std::uint8_t known : kKnown) {
        context.out << (known == kKnown[0] ? "" : ",") << '"' << static_cast<int>(known) << "\":" << counts[known];
        otherL -= counts[known];
    }
    context.out << "},\"other\":" << otherL << ",\"corrected\":" << correctedL << ",\"dropped\":" << droppedL << "}\n";
    return 0;
}

int BenchCdg(const CliCall& call) {
    const CliContext& context = call.context;
    const std::filesystem::path file(call.words.arguments[0]);
    std::vector<SubCodePacket> packets;
    OSErr err = LoadPackets(file, packets);
    if (Failed(err)) return CliFailFile(context, err, file);
    const std::unique_ptr<CGraphics> graphics = CGraphics::Make(0xFFFF, {}, err);
    if (!graphics) return CliFailStep(context, err, "making the picture");
    CCDGDecoder decoder = graphics->Decoder();   // runs over the same planes, without the screen

    using Clock = std::chrono::steady_clock;
    std::size_t doneL = 0;
    double seconds = 0;
    const Clock::time_point start = Clock::now();
    do {
        for (const SubCodePacket& raw : packets) {   // one at a time: no packet is passed over
            SubCodePacket packet = raw;
            static_cast<void>(CSubChannels::Correct(packet));
            decoder.Execute({&packet, 1});
        }
        doneL += packets.size();
        seconds = std::chrono::duration<double>(Clock::now() - start).count();
    } while (seconds < 1.0);
    context.out << "{\"packets\":" << doneL << ",\"seconds\":" << seconds << ",\"packets_per_second\":" << std::fixed
                << std::setprecision(0) << static_cast<double>(doneL) / seconds << "}\n";
    return 0;
}
