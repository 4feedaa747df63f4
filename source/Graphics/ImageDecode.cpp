#include "Graphics/ImageDecode.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace {

struct CodecFree {
    void operator()(AVCodecContext* contextP) const noexcept { avcodec_free_context(&contextP); }
};
struct PacketFree {
    void operator()(AVPacket* packetP) const noexcept { av_packet_free(&packetP); }
};
struct ScaleFree {
    void operator()(SwsContext* contextP) const noexcept { sws_freeContext(contextP); }
};

void MultiplyAlpha(COffscreen& picture) {
    for (int y = 0; y < picture.bounds().bottom; ++y)
        for (Pixel32& pixel : picture.Row32(y)) {
            const Pixel32 alpha = pixel >> 24;
            const auto part = [&](unsigned shift) { return ((pixel >> shift & 0xFFU) * alpha + 127) / 255 << shift; };
            pixel = alpha << 24 | part(16) | part(8) | part(0);
        }
}

}   // namespace

void ImageFormatClose::operator()(AVFormatContext* contextP) const noexcept {
    AVIOContext* bytesP = contextP->pb;   // ours: closing the format leaves it
    avformat_close_input(&contextP);
    avio_closep(&bytesP);
}
void ImageFrameFree::operator()(AVFrame* frameP) const noexcept { av_frame_free(&frameP); }

ImageFormat OpenImage(const std::filesystem::path& file, const char* formatsZ) {
    AVIOContext* bytesP = nullptr;
    if (avio_open(&bytesP, ("file:" + file.string()).c_str(), AVIO_FLAG_READ) < 0) return nullptr;
    AVFormatContext* openP = avformat_alloc_context();
    AVDictionary* optionsP = nullptr;
    av_dict_set(&optionsP, "format_whitelist", formatsZ, 0);
    if (openP != nullptr) openP->pb = bytesP;
    // Without a name: the content tells what it is, and no part of a name is taken for a pattern.
    const int result = openP == nullptr ? AVERROR(ENOMEM) : avformat_open_input(&openP, "", nullptr, &optionsP);
    av_dict_free(&optionsP);
    if (result >= 0) return ImageFormat(openP);
    avio_closep(&bytesP);   // the format has freed itself
    return nullptr;
}

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

ImageFrame DecodePicture(const AVCodecParameters& parameters, const AVPacket& packet) {
    const AVCodec* decoderP = avcodec_find_decoder(parameters.codec_id);
    if (decoderP == nullptr) return nullptr;
    const std::unique_ptr<AVCodecContext, CodecFree> codec(avcodec_alloc_context3(decoderP));
    if (codec == nullptr || avcodec_parameters_to_context(codec.get(), &parameters) < 0) return nullptr;
    codec->max_pixels = static_cast<int64_t>(COffscreen::kMaxPixels);
    codec->thread_count = 1;
    if (avcodec_open2(codec.get(), decoderP, nullptr) < 0) return nullptr;

    ImageFrame frame(av_frame_alloc());
    if (frame == nullptr || avcodec_send_packet(codec.get(), &packet) < 0) return nullptr;
    (void)avcodec_send_packet(codec.get(), nullptr);   // one picture is all there is: flush
    return avcodec_receive_frame(codec.get(), frame.get()) >= 0 ? std::move(frame) : nullptr;
}

ImageFrame DecodeFirst(AVFormatContext& format, int streamIndex) {
    const std::unique_ptr<AVPacket, PacketFree> packet(av_packet_alloc());
    if (packet == nullptr) return nullptr;
    while (av_read_frame(&format, packet.get()) >= 0) {
        if (packet->stream_index == streamIndex) return DecodePicture(*format.streams[streamIndex]->codecpar, *packet);
        av_packet_unref(packet.get());
    }
    return nullptr;
}

std::unique_ptr<COffscreen> PixelsOf(const AVFrame& frame, int width, int height, OSErr& err) {
    auto picture = COffscreen::Make(MakeRect(0, 0, width, height), 32, err);
    if (picture == nullptr) return nullptr;
    const bool sameB = frame.width == width && frame.height == height;
    // RGB32 is 0xAARRGGBB in the machine's order, as our pixels are.
    const std::unique_ptr<SwsContext, ScaleFree> scale(
        sws_getContext(frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), width, height,
                       AV_PIX_FMT_RGB32, sameB ? SWS_POINT : SWS_AREA, nullptr, nullptr, nullptr));
    std::uint8_t* rowsP[] = {picture->base(), nullptr, nullptr, nullptr};
    const int strides[] = {static_cast<int>(picture->rowBytes()), 0, 0, 0};
    err = paramErr;
    if (scale == nullptr) return nullptr;
    if (sws_scale(scale.get(), frame.data, frame.linesize, 0, frame.height, rowsP, strides) != height) return nullptr;
    MultiplyAlpha(*picture);
    err = noErr;
    return picture;
}
