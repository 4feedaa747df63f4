#include "Audio/CWavHeader.h"

#include <algorithm>
#include <string_view>

#include "Audio/SpoolUnits.h"
#include "Core/CLog.h"

namespace {

constexpr std::uint32_t kWav_FormatBytes = 16;
constexpr std::uint32_t kWav_BlockAlign = 4, kWav_ByteRate = kSamplesPerSecond * kWav_BlockAlign;
constexpr int kWav_MostChunks = 1000;

struct Chunk {
    std::array<char, 4> id{};
    std::uint32_t sizeL = 0;
    [[nodiscard]] bool Is(std::string_view name) const { return std::string_view(id.data(), id.size()) == name; }
};

OSErr ReadExactly(CByteSource& source, std::span<std::byte> to) {
    std::size_t got = 0;
    const OSErr err = source.Read(to, got);
    if (got == to.size()) return noErr;
    return Failed(err) ? err : eofErr;
}

std::uint32_t Little(std::span<const std::byte> bytes, std::size_t at, std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t n = count; n > 0; --n) value = value << 8U | std::to_integer<std::uint32_t>(bytes[at + n - 1]);
    return value;
}

OSErr ReadChunk(CByteSource& source, Chunk& chunk) {
    std::array<std::byte, 8> bytes{};
    if (const OSErr err = ReadExactly(source, bytes); Failed(err)) return err;
    for (std::size_t n = 0; n < chunk.id.size(); ++n) chunk.id[n] = static_cast<char>(bytes[n]);
    chunk.sizeL = Little(bytes, 4, 4);
    return noErr;
}

/** True when `ruleB` holds; else the log tells which rule the file broke. */
bool Holds(bool ruleB, const char* ruleZ) {
    if (!ruleB) LogF("wav header: not so: %s", ruleZ);
    return ruleB;
}

OSErr CheckFormat(CByteSource& source) {
    std::array<std::byte, kWav_FormatBytes> format{};
    if (const OSErr err = ReadExactly(source, format); Failed(err)) return err;
    const bool goodB =
        Holds(Little(format, 0, 2) == 1, "chunkFormat.audioFormat == 1") &&
        Holds(Little(format, 2, 2) == 2, "chunkFormat.numChannels == 2") &&
        Holds(Little(format, 4, 4) == kSamplesPerSecond, "chunkFormat.sampleRate == kSamplesPerSecond") &&
        Holds(Little(format, 8, 4) == kWav_ByteRate, "chunkFormat.byteRate == 176400") &&
        Holds(Little(format, 12, 2) == kWav_BlockAlign, "chunkFormat.blockAlign == 4") &&
        Holds(Little(format, 14, 2) == 16, "chunkFormat.bitsPerSample == 16");
    return goodB ? noErr : paramErr;
}

}   // namespace

OSErr CWavHeader::Read(CByteSource& source) {
    if (const OSErr err = source.Seek(0); Failed(err)) return err;
    Chunk riff;
    std::array<std::byte, 4> wave{};
    if (const OSErr err = ReadChunk(source, riff); Failed(err)) return err;
    if (!Holds(riff.Is("RIFF"), "wavHeader.chunkID == 'RIFF'") || !Holds(riff.sizeL > 0, "wavHeader.chunkSize > 0"))
        return paramErr;
    if (const OSErr err = ReadExactly(source, wave); Failed(err)) return err;
    constexpr std::string_view kWave = "WAVE";
    if (!Holds(std::ranges::equal(wave, std::as_bytes(std::span(kWave))), "waveChunk == 'WAVE'")) return paramErr;

    bool formatB = false;
    for (int chunks = 0; chunks < kWav_MostChunks; ++chunks) {
        Chunk chunk;
        if (const OSErr err = ReadChunk(source, chunk); Failed(err)) return err;
        const std::uint64_t bodyL = source.Position();
        if (chunk.Is("data") && formatB) {
            const std::uint64_t leftL = source.Size() - std::min(source.Size(), bodyL);
            dataAtL = bodyL;
            dataBytesL = std::min<std::uint64_t>(chunk.sizeL, leftL) / kWav_BlockAlign * kWav_BlockAlign;
            return noErr;
        }
        if (chunk.Is("fmt ")) {
            if (!Holds(chunk.sizeL >= kWav_FormatBytes, "wavHeader.chunkSize >= sizeof(WAV_ChunkFormat)"))
                return paramErr;
            if (const OSErr err = CheckFormat(source); Failed(err)) return err;
            formatB = true;
        } else if (!Holds(formatB || !chunk.Is("data"), "wavHeader.chunkID == 'fmt '")) {
            return paramErr;
        }
        const std::uint64_t nextL = bodyL + chunk.sizeL + chunk.sizeL % 2;   // chunks lie at even places
        if (nextL > source.Size()) return eofErr;
        if (const OSErr err = source.Seek(nextL); Failed(err)) return err;
    }
    return paramErr;
}

std::array<std::byte, CWavHeader::kBytes> CWavHeader::Make(std::uint64_t dataBytes) {
    std::array<std::byte, kBytes> bytes{};
    std::size_t at = 0;
    const auto text = [&](std::string_view id) {
        for (const char c : id) bytes[at++] = static_cast<std::byte>(c);
    };
    const auto number = [&](std::uint64_t value, std::size_t count) {
        for (; count > 0; --count, value >>= 8U) bytes[at++] = static_cast<std::byte>(value & 0xFFU);
    };
    text("RIFF"), number(dataBytes + kBytes - 8, 4), text("WAVE");
    text("fmt "), number(kWav_FormatBytes, 4);
    number(1, 2), number(2, 2), number(kSamplesPerSecond, 4), number(kWav_ByteRate, 4), number(kWav_BlockAlign, 2),
        number(16, 2);
    text("data"), number(dataBytes, 4);
    return bytes;
}
