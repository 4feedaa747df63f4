// bench_cdg FILE.cdg [SECONDS]: packets decoded a second by us, by a bare libavcodec loop and by the ffmpeg program,
// all on one thread and the same file, and the time of a cold seek to SECONDS (3600): file, packets and picture.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
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

double BareLibrary(std::vector<SubCodePacket> packets) {
    const AVCodec* codecP = avcodec_find_decoder(AV_CODEC_ID_CDGRAPHICS);
    AVCodecContext* contextP = avcodec_alloc_context3(codecP);
    contextP->thread_count = 1;
    AVPacket* packetP = av_packet_alloc();
    AVFrame* frameP = av_frame_alloc();
    if (codecP == nullptr || avcodec_open2(contextP, codecP, nullptr) < 0) std::exit(1);
    const double passes = PassesPerSecond([&] {
        for (SubCodePacket& packet : packets) {
            packetP->data = packet.bytes.data();
            packetP->size = static_cast<int>(packet.bytes.size());
            if (avcodec_send_packet(contextP, packetP) < 0) continue;
            while (avcodec_receive_frame(contextP, frameP) >= 0) av_frame_unref(frameP);
        }
    });
    av_frame_free(&frameP);
    av_packet_free(&packetP);
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

double SeekMilliseconds(const std::string& file, double seconds) {
    double best = 1e9;
    for (int round = 0; round < 5; ++round) {
        const Clock::time_point start = Clock::now();
        CSubCodeStream_File stream;
        OSErr err = stream.Open(file);
        const auto graphics = CGraphics::Make(0xFFFF, {}, err);
        const auto countL = static_cast<std::size_t>(seconds * 300);
        if (!graphics || Failed(graphics->Advance(&stream, countL, false, false))) std::exit(1);
        best = std::min(best, Since(start) * 1000);
    }
    return best;
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
    std::printf("libavcodec loop                %12.0f /s   ours is %.1f times as fast\n", library, one / library);
    std::printf("ffmpeg program                 %12.0f /s   ours is %.1f times as fast\n", program, one / program);
    std::printf("cold seek to %.0f s            %12.1f ms\n", seekSeconds, SeekMilliseconds(argv[1], seekSeconds));
    return 0;
}
