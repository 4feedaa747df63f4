// bench_lengths: adds 1,000 pairs of MP3 and graphics, four minutes each, to a library while a main loop turns: until
// the songs are there, until they have their lengths, and the longest turn of the main thread. Then what noise costs.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "BenchHost.h"
#include "Files/CByteSource_File.h"
#include "Library/CSongDatabase.h"
#include "Media/MediaLength.h"
#include "Meta/CMetaManager.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "SongFiles/CSongFileWork.h"
#include "Threads/CThreadHost.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

namespace {

namespace fs = std::filesystem;
constexpr std::size_t kPairs = 1000, kFrames = 9188;   // of 1,152 samples: 240 s

enum class Kind { kTold, kConstant, kVariable };

/** Frames without sound: 128 kbit/s, or 128 and 160 in turns; 44.1 kHz. */
std::string MP3(Kind kind) {
    std::string bytes, words = "Info" + std::string("\0\0\0\3", 4);
    const auto put = [](std::string& to, std::size_t number) {
        for (int shift = 24; shift >= 0; shift -= 8) to += static_cast<char>(number >> shift & 0xFF);
    };
    for (std::size_t n = 0; n < kFrames; ++n) {
        const bool wideB = kind == Kind::kVariable && n % 2 != 0;
        std::string frame = std::string("\xFF\xFB") + (wideB ? '\xA0' : '\x90') + '\0';
        frame.resize(wideB ? 522 : 417, '\x55');
        bytes += frame;
    }
    if (kind == Kind::kTold) {
        put(words, kFrames - 1);
        put(words, bytes.size());
        bytes.replace(36, words.size(), words);
    }
    return bytes;
}

void Write(const fs::path& file, const std::string& bytes) { std::ofstream(file, std::ios::binary) << bytes; }

void Measure(BenchHost& host, const char* nameZ, const fs::path& folder, Kind kind) {
    fs::create_directories(folder / "songs");
    Write(folder / "sound", MP3(kind));
    Write(folder / "graphics", std::string(24 * 72000, '\0'));
    for (std::size_t n = 0; n < kPairs; ++n) {
        const std::string base = "SC8001-" + std::to_string(n) + " - Artist - Title";
        fs::create_hard_link(folder / "sound", folder / "songs" / (base + ".mp3"));
        fs::create_hard_link(folder / "graphics", folder / "songs" / (base + ".cdg"));
    }
    CSongDatabaseHost above;
    CSongDatabase database(above);
    CSongFileWork files(database);
    double longestT = 0;
    const auto turn = [&] {
        host.MainLoop().Wait(0.001);
        longestT = std::max(longestT, Milliseconds([&] {
                                while (host.MainLoop().PumpOne(kMessage_All)) {
                                }
                            }));
    };
    std::vector<SongID> songs;
    bool addedB = false;
    double lengthsT = 0;
    const double addedT = Milliseconds([&] {
        (void)Failed(AddFilesToLibrary(database, {folder / "songs"}, [&](const AddedFiles& added) {
            songs = added.songs;
            addedB = true;
        }));
        while (!addedB) turn();
    });
    lengthsT = Milliseconds([&] {
        while (files.Lengths().IsBusy()) turn();
    });
    for (int n = 0; n < 500; ++n) turn();   // the lists and the watchers hear of it
    const auto knownL = std::ranges::count_if(songs, [&](SongID song) {
        return std::abs(database.GetSong(song)->Meta().GetInteger("drtn"_key) - 240 * 300) < 30;
    });
    std::printf("%-34s %zu songs after %6.1f ms; the lengths of %td after %7.1f ms more; longest turn %4.1f ms\n",
                nameZ, songs.size(), addedT, knownL, lengthsT, longestT);
    fs::remove_all(folder);
}

void MeasureNoise(const fs::path& folder) {
    fs::create_directories(folder);
    std::mt19937 random(1);
    std::string bytes(4 << 20, '\0');
    for (char& c : bytes) c = static_cast<char>(random());
    for (const char* extensionZ : {"mp3", "m4a", "wav", "ogg", "wma", "mpg", "avi", "aac"}) {
        constexpr int kTimes = 100;
        int foundL = 0;
        const fs::path file = folder / "noise";
        Write(file, bytes);
        const double eachT = Milliseconds([&] {
                                 for (int n = 0; n < kTimes; ++n) {
                                     CByteSource_File source;
                                     std::uint32_t length300 = 0;
                                     if (!Failed(source.Open(CFileRef(file))) &&
                                         !Failed(FindMediaLength(source, extensionZ, MediaKind::kSound, length300)))
                                         ++foundL;
                                 }
                             }) /
                             kTimes;
        std::printf("4 MB of noise named .%s: %5.2f ms, %d lengths\n", extensionZ, eachT, foundL);
    }
    fs::remove_all(folder);
}

}   // namespace

int main() {
    BenchHost host;
    TagThread(0, false);
    CMetaManager meta;
    const fs::path folder = fs::temp_directory_path() / ("bench_lengths." + std::to_string(std::random_device{}()));
    {
        CThreadManager threads;
        Measure(host, "told by the encoder", folder, Kind::kTold);
        Measure(host, "one bit rate, told by nobody", folder, Kind::kConstant);
        Measure(host, "two bit rates, told by nobody", folder, Kind::kVariable);
    }
    MeasureNoise(folder);
    return 0;
}
