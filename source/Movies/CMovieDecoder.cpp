#include "Movies/CMovieDecoder.h"

#include <algorithm>
#include <filesystem>
#include <thread>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/hwcontext.h>
#include <libavutil/pixdesc.h>
}

namespace {

constexpr std::int64_t kMovie_MostPixels = 8192LL * 4352;   // of the source; a decoder holds some twenty of them
constexpr int kMovie_FirstRenderNode = 128, kMovie_RenderNodes = 8;
constexpr int kMovie_MostHardwareErrors = 8;   // one after the other: the file is damaged, or the hardware is

/** What the hardware offers, if it is among what the decoder can give; else the first form in memory. */
AVPixelFormat ChooseFormat(AVCodecContext* codecP, const AVPixelFormat* formatsP) {
    for (const AVPixelFormat* eachP = formatsP; *eachP != AV_PIX_FMT_NONE; ++eachP)
        if (*eachP == AV_PIX_FMT_VAAPI && codecP->hw_device_ctx != nullptr) return *eachP;
    for (const AVPixelFormat* eachP = formatsP; *eachP != AV_PIX_FMT_NONE; ++eachP) {
        const AVPixFmtDescriptor* formP = av_pix_fmt_desc_get(*eachP);
        if (formP != nullptr && (formP->flags & AV_PIX_FMT_FLAG_HWACCEL) == 0) return *eachP;
    }
    return AV_PIX_FMT_NONE;
}

bool HardwareCan(const AVCodec& codec) {
    for (int n = 0;; ++n) {
        const AVCodecHWConfig* configP = avcodec_get_hw_config(&codec, n);
        if (configP == nullptr) return false;
        if (configP->device_type == AV_HWDEVICE_TYPE_VAAPI &&
            (configP->methods & AV_CODEC_HW_CONFIG_METHOD_HW_DEVICE_CTX) != 0)
            return true;
    }
}

}   // namespace

CMovieDecoder::~CMovieDecoder() { Close(); }

void CMovieDecoder::Close() {
    avcodec_free_context(&i_codecP);
    av_buffer_unref(&i_deviceP);
    i_hardwareB = i_askedB = i_failedB = false;
    i_streakL = 0;
}

bool CMovieDecoder::OpenHardware(const AVCodec& codec) {
    if (!HardwareCan(codec)) return false;
    for (int n = kMovie_FirstRenderNode; n < kMovie_FirstRenderNode + kMovie_RenderNodes; ++n) {
        // By name and only where one is: asked for any device, the driver's library talks to the display and to stderr.
        const std::string node = "/dev/dri/renderD" + std::to_string(n);
        std::error_code ignored;
        if (!std::filesystem::exists(node, ignored)) continue;
        if (av_hwdevice_ctx_create(&i_deviceP, AV_HWDEVICE_TYPE_VAAPI, node.c_str(), nullptr, 0) >= 0) return true;
    }
    return false;
}

OSErr CMovieDecoder::Open(const AVCodecParameters& parameters, const AVRational& timeBase, bool hardwareB) {
    Close();
    i_askedB = hardwareB;
    const AVCodec* codecP = avcodec_find_decoder(parameters.codec_id);
    if (codecP == nullptr) return paramErr;
    i_codecP = avcodec_alloc_context3(codecP);
    if (i_codecP == nullptr) return memFullErr;
    if (avcodec_parameters_to_context(i_codecP, &parameters) < 0) return paramErr;
    i_codecP->pkt_timebase = timeBase;
    i_codecP->max_pixels = kMovie_MostPixels;
    i_codecP->thread_count = static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1U, 4U));
    if (hardwareB && OpenHardware(*codecP)) i_codecP->hw_device_ctx = av_buffer_ref(i_deviceP);
    i_codecP->get_format = &ChooseFormat;
    return avcodec_open2(i_codecP, codecP, nullptr) < 0 ? paramErr : noErr;
}

void CMovieDecoder::NoteError(int result) {
    const bool hardwareB = i_codecP->pix_fmt == AV_PIX_FMT_VAAPI;
    // A damaged packet is invalid data; all else is the driver, which will not do better with the next one.
    if (hardwareB && (result != AVERROR_INVALIDDATA || ++i_streakL >= kMovie_MostHardwareErrors))
        i_failedB = true;
    else
        ++i_damagedL;
}

bool CMovieDecoder::Send(const AVPacket* packetP) {
    const int result = avcodec_send_packet(i_codecP, packetP);
    if (result == AVERROR(EAGAIN)) return false;
    if (result < 0 && result != AVERROR_EOF) NoteError(result);
    return true;
}

OSErr CMovieDecoder::Receive(AVFramePtr& frameP) {
    frameP.reset(av_frame_alloc());
    if (!frameP) return memFullErr;
    if (i_faultB && i_askedB && i_faultB()) i_failedB = true;
    for (;;) {
        if (i_failedB) return ioErr;
        const int result = avcodec_receive_frame(i_codecP, frameP.get());
        if (result == AVERROR(EAGAIN)) return queueNotDoneErr;
        if (result == AVERROR_EOF) return eofErr;
        if (result >= 0) break;
        NoteError(result);
        if (result == AVERROR(ENOMEM) && !i_failedB) return memFullErr;
    }
    i_streakL = 0;
    if (frameP->hw_frames_ctx == nullptr) return noErr;
    i_hardwareB = true;
    const AVFramePtr inMemoryP(av_frame_alloc());
    if (!inMemoryP) return memFullErr;
    if (av_hwframe_transfer_data(inMemoryP.get(), frameP.get(), 0) < 0) return ioErr;
    if (av_frame_copy_props(inMemoryP.get(), frameP.get()) < 0) return memFullErr;
    av_frame_unref(frameP.get());
    av_frame_move_ref(frameP.get(), inMemoryP.get());
    return noErr;
}

void CMovieDecoder::Flush() { avcodec_flush_buffers(i_codecP); }

void CMovieDecoder::SetHurry(MovieHurry hurry) {
    i_codecP->skip_frame = hurry == MovieHurry::kNone ? AVDISCARD_DEFAULT : AVDISCARD_NONREF;
}
