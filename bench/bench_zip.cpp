/** Bytes a second of our inflate64 against zlib's inflate on the same contents, both packed by 7z at its best; and what
   it takes to open a zipped song of 5 MB up to the first byte of its audio, and to jump about in it. Needs 7z. */
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "BenchClock.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"
#include "Zip/CZipSongMembers.h"
#include "Zip/CZipUnpacker.h"
#include "Zip/ZipRecords.h"

namespace {

namespace fs = std::filesystem;
constexpr int kRounds = 9;   // the best counts: others use the machine too

[[noreturn]] void Stop(const char* whyZ) {
    std::printf("%s\n", whyZ);
    std::exit(1);
}

std::string ReadFile(const fs::path& file) {
    std::ifstream in(file, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

/** Nearly all noise, as an MP3 is. */
std::string Sound(std::size_t sizeL) {
    std::mt19937 random(1);
    std::string bytes(sizeL, '\0');
    for (std::size_t n = 0; n < sizeL; ++n)
        bytes[n] = static_cast<char>(n % 418 < 36 ? n % 418 * 7 : random() & (n % 5 != 0 ? 0xFF : 0x3F));
    return bytes;
}
/** Packs of which most bytes are told again and again, as in a .cdg. */
std::string Packs(std::size_t sizeL) {
    std::mt19937 random(2);
    std::string bytes;
    while (bytes.size() < sizeL) {
        std::string pack(24, '\0');
        if (random() % 3 != 0) {
            pack[0] = 9;
            pack[1] = 6;
            for (std::size_t n = 4; n < 20; ++n) pack[n] = static_cast<char>(random() % 8 == 0 ? random() % 64 : 0);
        }
        bytes += pack;
    }
    return bytes;
}

/** Seconds to unpack the packed bytes of the only member of `zip`. */
double Seconds(const fs::path& zip, const std::string& contents) {
    CZipArchive archive;
    if (Failed(archive.Open(CFileRef(zip))) || archive.Members().empty()) Stop("an archive cannot be read");
    const CZipMember& member = archive.Members().front();
    const std::string file = ReadFile(zip);
    const auto at = std::as_bytes(std::span(file)).subspan(static_cast<std::size_t>(member.headerAt));
    const auto packed =
        at.subspan(kZip_LocalBytes + ZipU16(at, 26) + ZipU16(at, 28), static_cast<std::size_t>(member.packedL));
    std::vector<std::byte> out(contents.size());
    double bestT = 1e9;
    for (int round = 0; round < kRounds; ++round) {
        const auto unpacker = CZipUnpacker::Make(member.method);
        const double startT = Now();
        std::size_t takenL = 0, gotL = 0;
        while (gotL < out.size()) {   // in blocks, as the reader of members does
            const CZipUnpacker::Step step =
                unpacker->Run(packed.subspan(takenL, std::min<std::size_t>(32'768, packed.size() - takenL)),
                              std::span(out).subspan(gotL, std::min<std::size_t>(32'768, out.size() - gotL)));
            takenL += step.takenL;
            gotL += step.givenL;
            if (step.status == CZipUnpacker::Status::kBad) Stop("an archive is damaged");
        }
        bestT = std::min(bestT, Now() - startT);
    }
    if (!std::equal(out.begin(), out.end(), std::as_bytes(std::span(contents)).begin())) Stop("the contents differ");
    return bestT;
}

void Song(const fs::path& zip) {
    double openT = 1e9, jumpT = 0;
    for (int round = 0; round < kRounds; ++round) {
        const double startT = Now();
        CZipArchive archive;
        if (Failed(archive.Open(CFileRef(zip)))) Stop("the song cannot be read");
        const CZipSongMembers song = CZipSongMembers::Choose(archive.Members());
        CByteSource_Zip audio;
        std::byte first;
        std::size_t got = 0;
        if (!song.audio || !song.graphics || Failed(audio.Open(archive.File(), archive.Members()[*song.audio])) ||
            Failed(audio.Read({&first, 1}, got)))
            Stop("the song cannot be read");
        openT = std::min(openT, Now() - startT);
        std::mt19937 random(3);
        constexpr int kJumps = 200;
        std::byte part[4'096];
        static_cast<void>(audio.Seek(audio.Size()));   // all saved states are there after this
        static_cast<void>(audio.Seek(audio.Size() - 1));
        static_cast<void>(audio.Read(part, got));
        const double jumpsT = Now();
        for (int n = 0; n < kJumps; ++n)
            if (Failed(audio.Seek(random() % (audio.Size() - 4'096))) || Failed(audio.Read(part, got)))
                Stop("a jump failed");
        jumpT = (Now() - jumpsT) / kJumps;
    }
    std::printf("song of 5 MB: %.3f ms to the first byte of its audio, %.3f ms a jump\n", openT * 1000, jumpT * 1000);
}

}   // namespace

int main() {
    const fs::path folder = fs::temp_directory_path() / ("bench-zip-" + std::to_string(::getpid()));
    fs::create_directories(folder);
    const struct {
        const char* nameZ;
        std::string bytes;
    } kContents[] = {{"song.mp3", Sound(5'000'000)}, {"song.cdg", Packs(5'000'000)}};
    const auto pack = [&](const char* methodZ, const std::string& zip, const std::string& files) {
        if (std::system(("cd '" + folder.string() + "' && 7z a -bd -tzip -mx=9 -mm=" + methodZ + " " + zip + " " +
                         files + " >/dev/null")
                            .c_str()) != 0)
            Stop("7z did not run");
    };
    for (const auto& [nameZ, bytes] : kContents) {
        std::ofstream(folder / nameZ, std::ios::binary) << bytes;
        pack("Deflate", std::string(nameZ) + ".d.zip", nameZ);
        pack("Deflate64", std::string(nameZ) + ".d64.zip", nameZ);
        const double zlibT = Seconds(folder / (std::string(nameZ) + ".d.zip"), bytes);
        const double oursT = Seconds(folder / (std::string(nameZ) + ".d64.zip"), bytes);
        const double mega = static_cast<double>(bytes.size()) / 1e6;
        std::printf("%s: inflate64 %.0f MB/s, zlib's inflate %.0f MB/s, ratio %.2f\n", nameZ, mega / oursT,
                    mega / zlibT, zlibT / oursT);
    }
    pack("Deflate", "song.zip", "song.mp3 song.cdg");
    Song(folder / "song.zip");
    fs::remove_all(folder);
    return 0;
}
