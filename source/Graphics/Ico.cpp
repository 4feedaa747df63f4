#include "Graphics/Ico.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

#include "Core/CLog.h"

namespace {

struct FormatFree {
    void operator()(AVFormatContext* contextP) const noexcept { avformat_close_input(&contextP); }
};
struct CodecFree {
    void operator()(AVCodecContext* contextP) const noexcept { avcodec_free_context(&contextP); }
};
struct FrameFree {
    void operator()(AVFrame* frameP) const noexcept { av_frame_free(&frameP); }
};
struct PacketFree {
    void operator()(AVPacket* packetP) const noexcept { av_packet_free(&packetP); }
};
struct ScaleFree {
    void operator()(SwsContext* contextP) const noexcept { sws_freeContext(contextP); }
};
using Frame = std::unique_ptr<AVFrame, FrameFree>;

/** The stream with the most pixels by the file's directory, where 0 stands for 256 and more. */
int LargestStream(const AVFormatContext& format) {
    int bestIndex = -1;
    long bestL = -1;
    for (unsigned n = 0; n < format.nb_streams; ++n) {
        const AVCodecParameters& codec = *format.streams[n]->codecpar;
        const auto side = [](int pixels) { return pixels > 0 ? static_cast<long>(pixels) : 256L; };
        const long sizeL = side(codec.width) * side(codec.height);
        if (sizeL > bestL) {
            bestL = sizeL;
            bestIndex = static_cast<int>(n);
        }
    }
    return bestIndex;
}

/** The first frame of the stream; null when there is none. */
Frame DecodeFirst(AVFormatContext& format, int streamIndex) {
    const AVCodecParameters& parameters = *format.streams[streamIndex]->codecpar;
    const AVCodec* decoderP = avcodec_find_decoder(parameters.codec_id);
    if (decoderP == nullptr) return nullptr;
    const std::unique_ptr<AVCodecContext, CodecFree> codec(avcodec_alloc_context3(decoderP));
    if (codec == nullptr || avcodec_parameters_to_context(codec.get(), &parameters) < 0) return nullptr;
    codec->max_pixels = static_cast<int64_t>(COffscreen::kMaxPixels);
    codec->thread_count = 1;
    if (avcodec_open2(codec.get(), decoderP, nullptr) < 0) return nullptr;

    const std::unique_ptr<AVPacket, PacketFree> packet(av_packet_alloc());
    Frame frame(av_frame_alloc());
    if (packet == nullptr || frame == nullptr) return nullptr;
    while (av_read_frame(&format, packet.get()) >= 0) {
        const bool wantedB = packet->stream_index == streamIndex;
        const bool sentB = wantedB && avcodec_send_packet(codec.get(), packet.get()) >= 0;
        av_packet_unref(packet.get());
        if (!wantedB) continue;
        if (!sentB) return nullptr;
        (void)avcodec_send_packet(codec.get(), nullptr);   // one picture is all there is: flush
        return avcodec_receive_frame(codec.get(), frame.get()) >= 0 ? std::move(frame) : nullptr;
    }
    return nullptr;
}

void MultiplyAlpha(COffscreen& picture) {
    for (int y = 0; y < picture.bounds().bottom; ++y)
        for (Pixel32& pixel : picture.Row32(y)) {
            const Pixel32 alpha = pixel >> 24;
            const auto part = [&](unsigned shift) { return ((pixel >> shift & 0xFFU) * alpha + 127) / 255 << shift; };
            pixel = alpha << 24 | part(16) | part(8) | part(0);
        }
}

}   // namespace

std::unique_ptr<COffscreen> ReadIco(const std::filesystem::path& file, OSErr& err) {
    std::error_code ignored;
    err = std::filesystem::is_regular_file(file, ignored) ? paramErr : fnfErr;
    if (Failed(err) && err == fnfErr) return nullptr;

    AVFormatContext* openP = nullptr;
    const std::string url = "file:" + file.string();   // never a protocol that the name spells
    if (avformat_open_input(&openP, url.c_str(), av_find_input_format("ico"), nullptr) < 0) return nullptr;
    const std::unique_ptr<AVFormatContext, FormatFree> format(openP);
    const int streamIndex = LargestStream(*format);
    if (streamIndex < 0) return nullptr;
    const Frame frame = DecodeFirst(*format, streamIndex);
    if (frame == nullptr || frame->width <= 0 || frame->height <= 0) return nullptr;
    if (frame->width > 32767 || frame->height > 32767) {
        err = memFullErr;
        return nullptr;
    }

    auto picture = COffscreen::Make(MakeRect(0, 0, frame->width, frame->height), 32, err);
    if (picture == nullptr) return nullptr;
    err = paramErr;
    // RGB32 is 0xAARRGGBB in the machine's order, as our pixels are.
    const std::unique_ptr<SwsContext, ScaleFree> scale(
        sws_getContext(frame->width, frame->height, static_cast<AVPixelFormat>(frame->format), frame->width,
                       frame->height, AV_PIX_FMT_RGB32, SWS_POINT, nullptr, nullptr, nullptr));
    if (scale == nullptr) return nullptr;
    std::uint8_t* rowsP[] = {picture->base(), nullptr, nullptr, nullptr};
    const int strides[] = {static_cast<int>(picture->rowBytes()), 0, 0, 0};
    if (sws_scale(scale.get(), frame->data, frame->linesize, 0, frame->height, rowsP, strides) != frame->height)
        return nullptr;
    MultiplyAlpha(*picture);
    err = noErr;
    return picture;
}
