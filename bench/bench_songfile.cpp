// bench_songfile [SONGS [FOLDER]]: writes and reads "Songs.vlb" with so many songs (1,000,000) in FOLDER (here), beside
// a plain read of the file; seconds and MB/s, the best of three.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "Storage/CSongFileReader.h"
#include "Storage/CSongFileWriter.h"

namespace {

[[noreturn]] void Give(const char* stepZ, OSErr err) {
    std::fprintf(stderr, "%s: %d\n", stepZ, Number(err));
    std::exit(1);
}

template <typename Work>
double BestOfThree(Work work) {
    double best = std::numeric_limits<double>::max();
    for (int round = 0; round < 3; ++round) {
        const auto start = std::chrono::steady_clock::now();
        work();
        best = std::min(best, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count());
    }
    return best;
}

void WriteSongs(const CFileRef& file, std::uint32_t songsL) {
    CSongFileWriter writer;
    if (const OSErr err = writer.Start(file, songsL); Failed(err)) Give("start", err);
    for (std::uint32_t id = 1; id <= songsL; ++id) {
        const std::string number = std::to_string(id), name = "The Song of Number " + number,
                          artist = "Artist " + std::to_string(id / 17);
        const std::string audio = artist + "/Karaoke Hits/" + name + ".mp3",
                          video = artist + "/Karaoke Hits/" + name + ".cdg";
        SongRecord song;
        song.songID = id;
        song.duration = 180 + id % 120;
        song.Text(SongText::kName) = name;
        song.Text(SongText::kArtist) = artist;
        song.Text(SongText::kAlbum) = "Karaoke Hits";
        song.Text(SongText::kGenre) = "Pop";
        song.Text(SongText::kAudioPath) = audio;
        song.Text(SongText::kVideoPath) = video;
        if (const OSErr err = writer.Add(song); Failed(err)) Give("add", err);
    }
    if (const OSErr err = writer.Finish(); Failed(err)) Give("finish", err);
}

void ReadSongs(const CFileRef& file, std::uint32_t songsL) {
    CSongFileReader reader;
    if (const OSErr err = reader.Open(file); Failed(err)) Give("open", err);
    std::size_t textL = 0;
    for (SongRecord song; reader.Next(song);) textL += song.Text(SongText::kName).size();
    if (const OSErr err = reader.Finish(); Failed(err) || reader.Count() != songsL || textL == 0) Give("read", err);
}

void ReadPlainly(const CFileRef& file) {
    CDataFork fork;
    if (const OSErr err = fork.Open(file, FileAccess::kRead); Failed(err)) Give("open", err);
    std::vector<std::byte> part(std::size_t{1} << 20);
    std::size_t got = 0;
    while (!Failed(fork.Read(part, got))) {
    }
}

}   // namespace

int main(int argc, char** argv) {
    const auto songsL = static_cast<std::uint32_t>(argc > 1 ? std::strtoul(argv[1], nullptr, 10) : 1'000'000);
    const std::filesystem::path folder = argc > 2 ? argv[2] : ".";
    const CFileRef file(std::filesystem::absolute(folder) / "Songs.vlb");
    const double writeT = BestOfThree([&] { WriteSongs(file, songsL); });
    const double megabytes = static_cast<double>(std::filesystem::file_size(file.GetPath())) / 1e6;
    const double readT = BestOfThree([&] { ReadSongs(file, songsL); });
    const double plainT = BestOfThree([&] { ReadPlainly(file); });
    std::printf("%u songs, %.1f MB\n", songsL, megabytes);
    for (const auto& [whatZ, seconds] : {std::pair{"written", writeT}, {"read", readT}, {"read plainly", plainT}})
        std::printf("%-13s %7.3f s %8.0f MB/s\n", whatZ, seconds, megabytes / seconds);
    std::filesystem::remove(file.GetPath());
}
