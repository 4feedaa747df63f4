// bench_decode [SECONDS]: an MP3 of so many seconds (300), made by the ffmpeg program, decoded to the chain's sound by
// a bare libavcodec loop, by CMediaAudio and by CAS_QuickTimeAudioReader through a pump into CAS_Null; the three take
// turns, the best of each counts. Then the times from opening to the first block, and of seeks into a fresh and into a
// known file.
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "Audio/CAS_Null.h"
#include "Audio/CAS_QuickTimeAudioReader.h"
#include "Audio/CSpoolPump.h"
#include "Files/CByteSource_File.h"
#include "Media/CMediaAudio.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

namespace {

using Clock = std::chrono::steady_clock;
double Since(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }
constexpr int kBench_Rounds = 7, kBench_Seeks = 50;

/** Nothing but the library: its own file reading, its own trimming. */
std::size_t BareFrames(const std::string& path) {
    AVFormatContext* formatP = nullptr;
    if (avformat_open_input(&formatP, path.c_str(), nullptr, nullptr) < 0) std::abort();
    if (avformat_find_stream_info(formatP, nullptr) < 0) std::abort();
    const AVCodec* codecP = nullptr;
    const int best = av_find_best_stream(formatP, AVMEDIA_TYPE_AUDIO, -1, -1, &codecP, 0);
    if (best < 0) std::abort();
    AVCodecContext* contextP = avcodec_alloc_context3(codecP);
    avcodec_parameters_to_context(contextP, formatP->streams[best]->codecpar);
    contextP->pkt_timebase = formatP->streams[best]->time_base;
    contextP->thread_count = 1;
    if (avcodec_open2(contextP, codecP, nullptr) < 0) std::abort();
    AVChannelLayout stereo{};
    av_channel_layout_default(&stereo, 2);
    SwrContext* swrP = nullptr;
    if (swr_alloc_set_opts2(&swrP, &stereo, AV_SAMPLE_FMT_S16, 44100, &contextP->ch_layout, contextP->sample_fmt,
                            contextP->sample_rate, 0, nullptr) < 0 ||
        swr_init(swrP) < 0)
        std::abort();
    AVPacket* packetP = av_packet_alloc();
    AVFrame* frameP = av_frame_alloc();
    std::vector<std::uint8_t> block(1U << 16);
    std::size_t framesL = 0;
    const auto drain = [&] {
        while (avcodec_receive_frame(contextP, frameP) >= 0) {
            std::uint8_t* outP = block.data();
            framesL += static_cast<std::size_t>(swr_convert(
                swrP, &outP, 1 << 14, const_cast<const std::uint8_t**>(frameP->extended_data), frameP->nb_samples));
        }
    };
    while (av_read_frame(formatP, packetP) >= 0) {
        if (packetP->stream_index == best && avcodec_send_packet(contextP, packetP) >= 0) drain();
        av_packet_unref(packetP);
    }
    avcodec_send_packet(contextP, nullptr);
    drain();
    av_frame_free(&frameP);
    av_packet_free(&packetP);
    swr_free(&swrP);
    avcodec_free_context(&contextP);
    avformat_close_input(&formatP);
    return framesL;
}

std::size_t OurFrames(const std::string& path) {
    CByteSource_File source;
    CMediaAudio audio;
    if (Failed(source.Open(CFileRef(path))) || Failed(audio.Open(source, "mp3"))) std::abort();
    std::vector<std::int16_t> block(4896);
    std::size_t samplesL = 0, gotL = 0;
    while (!Failed(audio.Read(block, gotL))) samplesL += gotL;
    return samplesL / 2;
}

std::size_t PumpedFrames(const std::string& path) {
    const auto readerP = MakeRef<CAS_QuickTimeAudioReader>(CFileRef(path));
    const auto nullP = MakeRef<CAS_Null>();
    if (Failed(CSpoolPump(readerP, nullP).Run())) std::abort();
    return nullP->GetWritten() / 2;
}

void Seeks(const std::string& path, std::uint64_t frames) {
    CByteSource_File source;
    std::vector<std::int16_t> block(4896);
    std::size_t gotL = 0;
    std::mt19937_64 random(1);
    double firstBlock = 0, fresh = 0, worst = 0, sum = 0;
    for (int n = 0; n < kBench_Seeks; ++n) {
        CByteSource_File file;
        const auto start = Clock::now();
        CMediaAudio audio;
        if (Failed(file.Open(CFileRef(path))) || Failed(audio.Open(file, "mp3")) || Failed(audio.Read(block, gotL)))
            std::abort();
        firstBlock = std::max(firstBlock, Since(start));
        const auto sought = Clock::now();
        if (Failed(audio.Seek(frames * 9 / 10)) || Failed(audio.Read(block, gotL))) std::abort();
        fresh = std::max(fresh, Since(sought));
    }
    CMediaAudio audio;
    if (Failed(source.Open(CFileRef(path))) || Failed(audio.Open(source, "mp3")) || Failed(audio.Seek(frames - 44100)))
        std::abort();
    for (int n = 0; n < kBench_Seeks; ++n) {
        const auto start = Clock::now();
        if (Failed(audio.Seek(random() % (frames - 44100))) || Failed(audio.Read(block, gotL))) std::abort();
        worst = std::max(worst, Since(start));
        sum += Since(start);
    }
    std::printf("open to first block, worst of %d: %.1f ms\n", kBench_Seeks, firstBlock * 1e3);
    std::printf("seek to 90 %% of a fresh file and a block, worst of %d: %.1f ms\n", kBench_Seeks, fresh * 1e3);
    std::printf("seek in a known file and a block, %d: mean %.1f ms, worst %.1f ms\n", kBench_Seeks,
                sum / kBench_Seeks * 1e3, worst * 1e3);
}

}   // namespace

int main(int argc, char** argv) {
    const int seconds = argc > 1 ? std::max(5, std::atoi(argv[1])) : 300;
    av_log_set_level(AV_LOG_QUIET);
    CThreadManager manager;
    TagThread(1, true);   // this thread is the pump
    for (const char* codingZ : {"-b:a 192k", "-q:a 3"}) {
        const std::string path = "/tmp/bench_decode_" + std::to_string(::getpid()) + ".mp3";
        const std::string make =
            "ffmpeg -nostdin -v error -y -f lavfi -i "
            "\"aevalsrc='0.3*sin(2*PI*220*t)*exp(-3*mod(t\\,0.5))+0.2*sin(2*PI*(330+"
            "110*floor(mod(t\\,4)))*t)+0.1*(random(0)-0.5)*lt(mod(t\\,0.25)\\,0.06)|0.3*sin(2*PI*277*t)*exp(-2*mod(t\\,"
            "1))+"
            "0.1*(random(1)-0.5)*lt(mod(t\\,0.5)\\,0.1)':s=44100:d=" +
            std::to_string(seconds) + "\" -c:a libmp3lame " + codingZ + " " + path;
        if (std::system(make.c_str()) != 0) return 1;
        double bare = 1e9, ours = 1e9, pumped = 1e9;
        std::size_t bareL = 0, oursL = 0, pumpedL = 0;
        const auto time = [&](double& least, std::size_t& framesL, auto decode) {
            const auto start = Clock::now();
            framesL = decode(path);
            least = std::min(least, Since(start));
        };
        for (int round = 0; round < kBench_Rounds; ++round) {
            time(bare, bareL, BareFrames);
            time(ours, oursL, OurFrames);
            time(pumped, pumpedL, PumpedFrames);
        }
        if (bareL != oursL || bareL != pumpedL) std::printf("frames differ: %zu %zu %zu\n", bareL, oursL, pumpedL);
        const double length = static_cast<double>(bareL) / 44100;
        std::printf("%s, %.0f s, best of %d\n", codingZ, length, kBench_Rounds);
        std::printf("bare libavcodec loop       %7.0f times real time\n", length / bare);
        std::printf("CMediaAudio                %7.0f times real time, ratio %.3f\n", length / ours, bare / ours);
        std::printf("reader, pump into nothing  %7.0f times real time, ratio %.3f\n", length / pumped, bare / pumped);
        Seeks(path, oursL);
        ::unlink(path.c_str());
    }
    TagThread(0, false);
    return 0;
}
