// bench_cdg FILE.cdg [SECONDS]: packets decoded a second by us, by a bare libavcodec loop and by the ffmpeg program,
// all on one thread and the same file, and the time of a cold seek to SECONDS (3600): file, packets and picture.
#include <fcntl.h>
#include <unistd.h>
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "Graphics/CGraphics.h"
#include "Graphics/CSubCodeStream_File.h"
#include "Graphics/CSubCodeStream_Memory.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {
using Clock = std::chrono::steady_clock;
double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

/** Runs `pass` for a second at least; passes a second. */
template <typename Pass>
double PassesPerSecond(Pass pass) {
    int passesL = 0;
    const Clock::time_point start = Clock::now();
    do {
        pass();
        ++passesL;
    } while (Since(start) < 1.0);
    return passesL / Since(start);
}

/** Corrects and runs `stepL` packets at a time, as ticks do; with `drawB` the true-colour picture follows each. */
double Ours(const std::vector<SubCodePacket>& packets, std::size_t stepL, bool drawB) {
    OSErr err = noErr;
    const auto graphics = CGraphics::Make(0xFFFF, {}, err);
    if (!graphics) std::exit(1);
    CCDGDecoder decoder = graphics->Decoder();
    std::vector<SubCodePacket> step;
    return PassesPerSecond([&] {
               for (std::span<const SubCodePacket> left(packets); !left.empty(); left = left.subspan(step.size())) {
                   const auto next = left.first(std::min(stepL, left.size()));
                   step.assign(next.begin(), next.end());
                   CSubChannels::Correct(step);
                   if (drawB)
                       graphics->ExecutePackets(step, false, false);
                   else
                       decoder.Execute(step);
               }
           }) *
           static_cast<double>(packets.size());
}

double BareLibrary(const std::vector<SubCodePacket>& packets) {
    const AVCodec* codecP = avcodec_find_decoder(AV_CODEC_ID_CDGRAPHICS);
    AVCodecContext* contextP = codecP == nullptr ? nullptr : avcodec_alloc_context3(codecP);
    AVPacket* packetP = av_packet_alloc();
    AVFrame* frameP = av_frame_alloc();
    // One counted and padded buffer for all: a packet without one is copied by the library each time.
    const std::size_t bytesL = packets.size() * kSubCodePacket_Bytes;
    AVBufferRef* allP = av_buffer_allocz(bytesL + AV_INPUT_BUFFER_PADDING_SIZE);
    if (contextP == nullptr || packetP == nullptr || frameP == nullptr || allP == nullptr) std::exit(1);
    std::memcpy(allP->data, packets.data(), bytesL);
    contextP->thread_count = 1;
    if (avcodec_open2(contextP, codecP, nullptr) < 0) std::exit(1);
    const double passes = PassesPerSecond([&] {
        for (std::size_t at = 0; at < bytesL; at += kSubCodePacket_Bytes) {
            av_packet_unref(packetP);
            packetP->buf = av_buffer_ref(allP);
            packetP->data = allP->data + at;
            packetP->size = static_cast<int>(kSubCodePacket_Bytes);
            if (avcodec_send_packet(contextP, packetP) < 0) continue;
            while (avcodec_receive_frame(contextP, frameP) >= 0) av_frame_unref(frameP);
        }
    });
    av_frame_free(&frameP);
    av_packet_free(&packetP);
    av_buffer_unref(&allP);
    avcodec_free_context(&contextP);
    return passes * static_cast<double>(packets.size());
}

double Program(const std::string& file, std::size_t packetsL) {
    std::string quoted;
    for (const char letter : file) quoted += letter == '\'' ? std::string("'\\''") : std::string(1, letter);
    const std::string command = "ffmpeg -v error -nostdin -threads 1 -i '" + quoted + "' -threads 1 -f null - 2>&1";
    const Clock::time_point start = Clock::now();
    std::FILE* pipeP = ::popen(command.c_str(), "r");
    if (pipeP == nullptr) return 0;
    while (std::fgetc(pipeP) != EOF) {
    }
    return ::pclose(pipeP) == 0 ? static_cast<double>(packetsL) / Since(start) : 0;
}

struct SeekTimes {
    double first = 0, best = 1e9;
};
/** The first round finds nothing of the file in memory, as far as the system lets go of it. */
SeekTimes SeekMilliseconds(const std::string& file, double seconds) {
    SeekTimes times;
    if (const int handle = ::open(file.c_str(), O_RDONLY | O_CLOEXEC); handle >= 0) {
        ::fdatasync(handle);   // what is not written yet cannot be let go
        ::posix_fadvise(handle, 0, 0, POSIX_FADV_DONTNEED);
        ::close(handle);
    }
    for (int round = 0; round < 5; ++round) {
        const Clock::time_point start = Clock::now();
        CSubCodeStream_File stream;
        OSErr err = stream.Open(file);
        const auto graphics = CGraphics::Make(0xFFFF, {}, err);
        const auto countL = static_cast<std::size_t>(seconds * 300);
        if (!graphics || Failed(graphics->Advance(&stream, countL, false, false))) std::exit(1);
        const double taken = Since(start) * 1000;
        if (round == 0) times.first = taken;
        times.best = std::min(times.best, taken);
    }
    return times;
}
}   // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fputs("usage: bench_cdg FILE.cdg [SECONDS]\n", stderr);
        return 2;
    }
    const double seekSeconds = argc > 2 ? std::atof(argv[2]) : 3600.0;
    CSubCodeStream_Memory stream;
    if (Failed(stream.LoadFile(argv[1])) || stream.LengthUnits() < kSubCodePacket_Units || !(seekSeconds > 0)) {
        std::fprintf(stderr, "%s: no packets\n", argv[1]);
        return 1;
    }
    std::vector<SubCodePacket> packets(stream.LengthUnits() / kSubCodePacket_Units);
    static_cast<void>(stream.Read({packets.data()->bytes.data(), packets.size() * kSubCodePacket_Bytes}));

    const double one = Ours(packets, 1, false), tick = Ours(packets, 20, true);
    const double library = BareLibrary(packets), program = Program(argv[1], packets.size());
    std::printf("packets in the file            %12zu\n", packets.size());
    std::printf("ours, one packet at a time     %12.0f /s\n", one);
    std::printf("ours, ticks of 20 with picture %12.0f /s\n", tick);
    const char* const ratioZ = "%-30s %12.0f /s   ours is %.1f times as fast, %.1f times with the picture\n";
    std::printf(ratioZ, "libavcodec loop", library, one / library, tick / library);
    std::printf(ratioZ, "ffmpeg program", program, one / program, tick / program);
    const SeekTimes seek = SeekMilliseconds(argv[1], seekSeconds);
    std::printf("cold seek to %.0f s            %12.1f ms from the disc, %.1f ms from memory\n", seekSeconds,
                seek.first, seek.best);
    return 0;
}
