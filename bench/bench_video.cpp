// bench_video [FILE]: a movie of 1920 x 1080, 30 pictures a second, H.264 with AAC (10 s of testsrc2, made by the
// ffmpeg program), or FILE. First as fast as it goes: the ffmpeg program into nothing, our reader alone, and the reader
// with each picture painted at the file's size and at those of windows, by turns, the best of each. Then in its own
// time for the length of the movie, as in a window of that size: pictures shown, dropped, and the share of one core
// that it took.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "Files/CByteSource_File.h"
#include "Movies/CAS_QuickTimeVideo.h"
#include "Movies/CMoviePainter.h"
#include "Movies/CMovieReader.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kBench_Rounds = 3;

double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

/** Of this process and its threads, in seconds. */
double ProcessorT() {
    rusage use{};
    getrusage(RUSAGE_SELF, &use);
    const auto seconds = [](const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) / 1e6;
    };
    return seconds(use.ru_utime) + seconds(use.ru_stime);
}

double ResidentMB() {
    long pages = 0;
    if (FILE* fileP = std::fopen("/proc/self/statm", "r"); fileP != nullptr) {
        if (std::fscanf(fileP, "%*d %ld", &pages) != 1) pages = 0;
        std::fclose(fileP);
    }
    return static_cast<double>(pages) * static_cast<double>(sysconf(_SC_PAGESIZE)) / 1e6;
}

struct Speed {
    double bestT = 1e9;
    std::size_t picturesL = 0;
    [[nodiscard]] double PerSecond() const { return static_cast<double>(picturesL) / bestT; }
};

/** All pictures, painted at `size`; none: decoded alone. */
void Read(const std::string& path, const PictureSize& size, Speed& speed) {
    CByteSource_File source;
    CMovieReader reader;
    if (Failed(source.Open(CFileRef(path))) || Failed(reader.Open(source, "mp4"))) std::abort();
    CMoviePainter painter;
    COffscreen pixels;
    const auto start = Clock::now();
    speed.picturesL = 0;
    for (MovieFrame frame; !Failed(reader.Next(frame)); ++speed.picturesL)
        if (size.width > 0 && Failed(painter.Paint(*frame.frameP, size, pixels))) std::abort();
    speed.bestT = std::min(speed.bestT, Since(start));
}

void RunTool(const std::string& path, Speed& speed) {
    const auto start = Clock::now();
    const std::string command = "ffmpeg -nostdin -v error -i '" + path + "' -map 0:v -f null -";
    if (std::system(command.c_str()) != 0) std::abort();
    speed.bestT = std::min(speed.bestT, Since(start));
}

void PlayThrough(const std::string& path, const PictureSize& window) {
    Ref<CAS_QuickTimeVideo> movieP;
    std::uint64_t unitsL = 0;
    if (Failed(MakeSongMovie(CFileRef(path), movieP)) || Failed(movieP->Open(false, unitsL))) std::abort();
    movieP->SetNeededSize(window.width, window.height);
    const double lengthT = movieP->Facts().seconds;
    while (!movieP->Show()) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const double beforeT = ProcessorT();
    const auto start = Clock::now();
    movieP->SetPaused(false);
    double latestT = 0;
    while (!movieP->IsEnded() && Since(start) < lengthT + 2) {
        if (movieP->Show()) latestT = std::max(latestT, movieP->CurTime() - movieP->ShownTime());
        std::this_thread::sleep_for(std::chrono::duration<double>(movieP->NextShowIn()));
    }
    const double tookT = Since(start);
    const MovieCounts counts = movieP->Counts();
    std::printf(
        "in its time, %4d x %-4d   %5.1f pictures/s, %llu of %llu dropped, %3.0f %% of one core, latest %.1f ms, "
        "resident %.0f MB\n",
        window.width, window.height, static_cast<double>(counts.shownL) / tookT,
        static_cast<unsigned long long>(counts.droppedL), static_cast<unsigned long long>(counts.decodedL),
        100 * (ProcessorT() - beforeT) / tookT, 1000 * latestT, ResidentMB());
    static_cast<void>(movieP->Close(false));
}

void Seeks(const std::string& path) {
    CByteSource_File source;
    CMovieReader reader;
    if (Failed(source.Open(CFileRef(path))) || Failed(reader.Open(source, "mp4"))) std::abort();
    std::vector<double> tookT;
    for (int n = 0; n < 40; ++n) {
        const double toT = reader.Facts().seconds * (n * 17 % 40) / 40;
        const auto start = Clock::now();
        if (Failed(reader.Seek(toT))) std::abort();
        tookT.push_back(1000 * Since(start));
    }
    std::ranges::sort(tookT);
    std::printf("seek to the exact picture  median %.0f ms, worst %.0f ms\n", tookT[tookT.size() / 2], tookT.back());
}

}   // namespace

int main(int argc, char** argv) {
    TagThread(1, true);
    CThreadManager threads;
    std::string path = argc > 1 ? argv[1] : "";
    const bool madeB = path.empty();
    if (madeB) {
        path = "/tmp/bench_video." + std::to_string(getpid()) + ".mp4";
        const std::string make =
            "ffmpeg -nostdin -v error -y -f lavfi -i testsrc2=s=1920x1080:r=30:d=10 -f lavfi -i sine=d=10 -c:v libx264 "
            "-preset fast -pix_fmt yuv420p -c:a aac " +
            path;
        if (std::system(make.c_str()) != 0) return 1;
    }
    Speed tool, bare, full, window, small;
    for (int round = 0; round < kBench_Rounds; ++round) {
        RunTool(path, tool);
        Read(path, {}, bare);
        Read(path, {1920, 1080}, full);
        Read(path, {1280, 720}, window);
        Read(path, {900, 506}, small);
    }
    tool.picturesL = bare.picturesL;
    std::printf("%zu pictures, best of %d\n", bare.picturesL, kBench_Rounds);
    std::printf("ffmpeg program into nothing  %6.1f pictures/s\n", tool.PerSecond());
    std::printf("our reader                   %6.1f pictures/s, ratio %.2f\n", bare.PerSecond(),
                tool.bestT / bare.bestT);
    std::printf("painted at 1920 x 1080       %6.1f pictures/s, ratio %.2f\n", full.PerSecond(),
                tool.bestT / full.bestT);
    std::printf("painted at 1280 x 720        %6.1f pictures/s, ratio %.2f\n", window.PerSecond(),
                tool.bestT / window.bestT);
    std::printf("painted at 900 x 506         %6.1f pictures/s, ratio %.2f\n", small.PerSecond(),
                tool.bestT / small.bestT);
    Seeks(path);
    for (const PictureSize size : {PictureSize{1920, 1080}, PictureSize{1280, 720}, PictureSize{900, 506}})
        PlayThrough(path, size);
    if (madeB) ::unlink(path.c_str());
    TagThread(0, false);
    return 0;
}
