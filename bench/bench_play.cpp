// bench_play [SECONDS | FILE...]: an MP3 of so many seconds (240) and a zip of it with graphics, made by the ffmpeg
// program and python's zipfile, or the files that are given. Medians and worst of 20: from the file's name to the first
// block in the ring, a seek in the ring that is full until its new sound is there; and what one chain keeps in memory
// while it is read at its pace.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <random>
#include <string>
#include <vector>

#include "Audio/CAS_AudioRing.h"
#include "Audio/CAS_SpoolRec.h"
#include "Audio/SongSource.h"
#include "BenchClock.h"
#include "Cli/CCliHost.h"

namespace {

using Clock = std::chrono::steady_clock;
double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }
constexpr int kBench_Rounds = 20;

void Must(bool doneB, const char* whatZ) {
    if (doneB) return;
    std::fprintf(stderr, "bench_play: %s\n", whatZ);
    std::exit(1);
}

void Tell(const char* whatZ, std::vector<double> seconds) {
    std::ranges::sort(seconds);
    std::printf("%-44s median %6.1f ms, worst %6.1f ms\n", whatZ, seconds[seconds.size() / 2] * 1e3,
                seconds.back() * 1e3);
}

/** A ring whose first block is there, open for its reader. */
Ref<CAS_AudioRing> Opened(const std::string& file) {
    Ref<CSpooler> sourceP;
    Must(!Failed(MakeSongSource(CFileRef(file), sourceP)), "no source");
    const Ref<CAS_AudioRing> ringP = MakeAudioRing();
    Must(!Failed(StartSpooling(sourceP, ringP, false)), "no start");
    std::uint64_t sizeL = 0;
    Must(!Failed(ringP->Open(false, sizeL)), "no reader");
    return ringP;
}

void Read(CAS_AudioRing& ring, std::size_t frames) {
    std::vector<float> block(4096);
    for (std::size_t leftL = frames; leftL > 0;) {
        std::size_t gotL = 0;
        const std::size_t wantedL = std::min(leftL * 2, block.size());
        if (Failed(ring.Read(std::as_writable_bytes(std::span(block).first(wantedL)), gotL))) return;
        if (gotL == 0) ::usleep(200);
        leftL -= gotL / 8;
    }
}

void Bench(const std::string& name, const std::string& file) {
    std::vector<double> opens, seeks;
    for (int n = 0; n < kBench_Rounds; ++n) {
        const auto start = Clock::now();
        const Ref<CAS_AudioRing> ringP = Opened(file);
        Read(*ringP, 1);
        opens.push_back(Since(start));
        Must(!Failed(ringP->Close(false)), "no end");
    }
    const Ref<CAS_AudioRing> ringP = Opened(file);
    std::mt19937 random(1);
    for (int n = 0; n < kBench_Rounds; ++n) {
        ::usleep(30'000);   // the ring is full by now, and its writer waits
        const auto start = Clock::now();
        Must(!Failed(ringP->Seek(std::uniform_real_distribution(0.05, 0.95)(random))), "no seek");
        Read(*ringP, 1);
        seeks.push_back(Since(start));
    }
    Must(!Failed(ringP->Close(false)), "no end");
    Tell((name + ": open to the first sound").c_str(), opens);
    Tell((name + ": seek to the new sound").c_str(), seeks);
}

void BenchMemory(const std::string& file) {
    const long beforeL = ResidentKilobytes();
    const Ref<CAS_AudioRing> ringP = Opened(file);
    Must(!Failed(ringP->SetPitchTempo(2, 1.1)), "no pitch");
    long mostL = 0;
    for (int n = 0; n < 60; ++n) {
        Read(*ringP, 44100);
        mostL = std::max(mostL, ResidentKilobytes());
    }
    std::printf("%-44s %.1f MB more than before (at the most, in 60 s of sound)\n", "memory of a chain that is read",
                static_cast<double>(mostL - beforeL) / 1024);
    Must(!Failed(ringP->Close(false)), "no end");
}

}   // namespace

int main(int argc, char** argv) {
    if (argc > 1 && std::atoi(argv[1]) == 0) {
        CCliHost host;
        for (int n = 1; n < argc; ++n) Bench(argv[n], argv[n]);
        return 0;
    }
    const int secondsL = argc > 1 ? std::atoi(argv[1]) : 240;
    std::string folder = "/tmp/bench-play-XXXXXX";
    Must(::mkdtemp(folder.data()) != nullptr, "no folder");
    const std::string make = "cd " + folder +
                             " && ffmpeg -v error -nostdin -f lavfi -i anoisesrc=c=pink:d=" + std::to_string(secondsL) +
                             " -ac 2 -b:a 192k song.mp3 && head -c 1728000 /dev/urandom > song.cdg && "
                             "python3 -c \"import zipfile\nz=zipfile.ZipFile('song.zip','w',zipfile.ZIP_DEFLATED)\n"
                             "z.write('song.mp3')\nz.write('song.cdg')\nz.close()\"";
    Must(std::system(make.c_str()) == 0, "the song could not be made");
    {
        CCliHost host;
        BenchMemory(folder + "/song.mp3");   // first, so that nothing is kept from before
        Bench("MP3", folder + "/song.mp3");
        Bench("zip of MP3 and CD+G", folder + "/song.zip");
    }
    return std::system(("rm -r " + folder).c_str()) == 0 ? 0 : 1;
}
