#include "Cli/CliCdg.h"

#include <openssl/sha.h>

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <iomanip>
#include <memory>
#include <optional>
#include <sstream>
#include <vector>

#include "Cli/CliWords.h"
#include "Graphics/CGraphics.h"
#include "Graphics/CHq4x.h"
#include "Graphics/CSubCodeStream_File.h"
#include "Graphics/CSubCodeStream_Memory.h"
#include "Graphics/Png.h"

namespace {
constexpr std::string_view kCdg_Usage_Frame =
    "usage: cdg frame FILE --at SECONDS --out PNG [--visible] [--hq4x] [--channels MASK]";
/** Times up to here have exact packet numbers. */
constexpr double kMost_Seconds = 9007199254740992.0 / kSubCodePacketsPerSecond;
constexpr std::string_view kCdg_Usage_Info = "usage: cdg info FILE";
constexpr std::string_view kCdg_Usage_Bench = "usage: cdg bench FILE";
constexpr std::string_view kCdg_Usage = "usage: cdg frame|info|bench FILE ...";

/** The shortest text that reads back as the same number. */
std::string NumberText(double value) {
    std::array<char, 32> text{};
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value).ptr};
}

/** What `cdg frame` was asked for. */
struct FrameOptions {
    std::filesystem::path file, out;
    double atSeconds = -1;
    bool visibleB = false, hq4xB = false;
    std::uint16_t channelMask = 0xFFFF;
};

std::optional<FrameOptions> ReadFrameOptions(std::span<const std::string> words) {
    FrameOptions options;
    bool plainB = false;   // behind "--" a file's name may begin with "-"
    for (std::size_t n = 0; n < words.size(); ++n) {
        const std::string& word = words[n];
        const auto value = [&]() -> std::string { return n + 1 < words.size() ? words[++n] : std::string(); };
        if (plainB || !word.starts_with('-')) {
            if (!options.file.empty()) return {};
            options.file = word;
        } else if (word == "--") {
            plainB = true;
        } else if (word == "--visible") {
            options.visibleB = true;
        } else if (word == "--hq4x") {
            options.hq4xB = true;
        } else if (word == "--out") {
            options.out = value();
        } else if (word == "--at") {
            const std::optional<double> at = ReadNumber<double>(value());
            if (!at || !(*at >= 0 && *at <= kMost_Seconds)) return {};
            options.atSeconds = *at;
        } else if (word == "--channels") {
            const std::optional<std::uint16_t> mask = ReadNumber<std::uint16_t>(value());
            if (!mask) return {};
            options.channelMask = *mask;
        } else {
            return {};
        }
    }
    if (options.file.empty() || options.out.empty() || options.atSeconds < 0) return {};
    return options;
}

GraphicsUpscaler Upscaler(bool hq4xB) {
    if (!hq4xB) return {};
    return [filter = std::make_shared<CHq4x>()](const CPixels& source, CPixels& dest) {
        return filter->Scale(source, dest);
    };
}

/** The only file of `info` and `bench`. */
std::optional<std::filesystem::path> ReadFileWord(std::span<const std::string> words) {
    const bool plainB = !words.empty() && words[0] == "--";
    if (plainB) words = words.subspan(1);
    if (words.size() != 1 || words[0].empty() || (!plainB && words[0].starts_with('-'))) return {};
    return words[0];
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

int Frame(const CliContext& context, std::span<const std::string> words) {
    const std::optional<FrameOptions> options = ReadFrameOptions(words);
    if (!options) return CliUsage(context, kCdg_Usage_Frame);
    std::error_code fault;   // one of them missing: they are not the same
    if (std::filesystem::equivalent(options->file, options->out, fault))
        return CliUsage(context, "cdg frame: the picture would take the place of the song");
    CSubCodeStream_File stream;
    OSErr err = stream.Open(options->file);
    if (!Failed(err) && stream.LengthUnits() == 0) err = eofErr;
    if (Failed(err)) return CliFailFile(context, err, options->file);

    const std::unique_ptr<CGraphics> graphics = CGraphics::Make(options->channelMask, Upscaler(options->hq4xB), err);
    if (!graphics) return CliFailStep(context, err, "making the picture");
    const double time300 = std::floor(options->atSeconds * kSubCodePacketsPerSecond + 0.5);
    const std::size_t inFileL = (stream.LengthUnits() + kSubCodePacket_Units - 1) / kSubCodePacket_Units;
    const std::size_t countL = time300 < static_cast<double>(inFileL) ? static_cast<std::size_t>(time300) : inFileL;
    if (countL > 0)
        err = graphics->Advance(&stream, countL, false, false);
    else
        graphics->ExecutePackets({}, false, false);
    if (Failed(err)) return CliFailFile(context, err, options->file);

    const CPixels& picture = graphics->Picture();
    Rect part = picture.bounds();
    if (options->visibleB) {
        const int scale = part.Width() / kCDGPlane_Area.Width();
        part = MakeRect(kCDGVisible_Area.left * scale, kCDGVisible_Area.top * scale, kCDGVisible_Area.Width() * scale,
                        kCDGVisible_Area.Height() * scale);
    }
    if (err = WritePng(picture, part, options->out); Failed(err)) return CliFailFile(context, err, options->out);
    context.out << "{\"time300\":" << static_cast<std::int64_t>(time300) << ",\"width\":" << part.Width()
                << ",\"height\":" << part.Height() << ",\"sha256\":\"" << SHA256(picture, part) << "\"}\n";
    return 0;
}

int Info(const CliContext& context, std::span<const std::string> words) {
    const std::optional<std::filesystem::path> file = ReadFileWord(words);
    if (!file) return CliUsage(context, kCdg_Usage_Info);
    CSubCodeStream_File stream;
    OSErr err = stream.Open(*file);
    if (!Failed(err) && stream.LengthUnits() == 0) err = eofErr;
    if (Failed(err)) return CliFailFile(context, err, *file);

    static constexpr std::array<std::uint8_t, 9> kKnown{1, 2, 6, 20, 24, 28, 30, 31, 38};
    std::array<std::size_t, 64> counts{};
    std::size_t packetsL = 0, correctedL = 0, droppedL = 0;
    for (SubCodeRead got; got.err == noErr;) {   // a part at a time: no file is too long
        std::vector<SubCodePacket> part(8192);
        got = stream.Read({part.data()->bytes.data(), part.size() * kSubCodePacket_Bytes});
        if (Failed(got.err) && got.err != eofErr) return CliFailFile(context, got.err, *file);
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

int Bench(const CliContext& context, std::span<const std::string> words) {
    const std::optional<std::filesystem::path> file = ReadFileWord(words);
    if (!file) return CliUsage(context, kCdg_Usage_Bench);
    std::vector<SubCodePacket> packets;
    OSErr err = LoadPackets(*file, packets);
    if (Failed(err)) return CliFailFile(context, err, *file);
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

struct CdgCommand {
    std::string_view name;
    int (*run)(const CliContext&, std::span<const std::string>);
};
constexpr CdgCommand kCdg_Commands[] = {{"frame", Frame}, {"info", Info}, {"bench", Bench}};
}   // namespace

int RunCdg(const CliContext& context, std::span<const std::string> words) {
    if (!words.empty())
        for (const CdgCommand& command : kCdg_Commands)
            if (command.name == words[0]) return command.run(context, words.subspan(1));
    return CliUsage(context, kCdg_Usage);
}
