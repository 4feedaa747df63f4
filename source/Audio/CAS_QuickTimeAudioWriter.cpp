#include "Audio/CAS_QuickTimeAudioWriter.h"

#include <algorithm>
#include <array>

#include "Core/CLog.h"
#include "Media/CMediaFormat.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
}

namespace {

constexpr int kEncoder_Buffer = 64 * 1024;
constexpr int kEncoder_FramesAtATime = 4096;   // where the codec does not ask for a number

struct FormFacts {
    EncodedForm form;
    AVCodecID codec;
    const char* muxerZ;
    AVSampleFormat samples;
    bool ratedB;   // has a bit rate
};
constexpr std::array<FormFacts, 2> kEncoder_Forms = {{
    {EncodedForm::kM4A, AV_CODEC_ID_AAC, "ipod", AV_SAMPLE_FMT_FLTP, true},
    {EncodedForm::kFLAC, AV_CODEC_ID_FLAC, "flac", AV_SAMPLE_FMT_S16, false},
}};

/** `kept`, the failure of the file, comes first: the muxers tell of it as EIO, or go on without a word. */
OSErr FromFFmpeg(int result, OSErr kept) {
    if (Failed(kept)) return kept;
    if (result >= 0) return noErr;
    return result == AVERROR(ENOMEM) ? memFullErr : paramErr;
}

}   // namespace

/** The encoder, the muxer and the way into the file. */
class CAS_QuickTimeAudioWriter::Encoder {
public:
    explicit Encoder(CSafeOutput& out) : i_out(out) {}
    ~Encoder() {
        swr_free(&i_swrP);
        avcodec_free_context(&i_codecP);
        if (i_formatP != nullptr) i_formatP->pb = nullptr;
        avformat_free_context(i_formatP);
        av_frame_free(&i_frameP);
        av_packet_free(&i_packetP);
        if (i_ioP == nullptr) return;
        av_freep(&i_ioP->buffer);
        avio_context_free(&i_ioP);
    }
    Encoder(const Encoder&) = delete;
    Encoder& operator=(const Encoder&) = delete;

    OSErr Begin(EncodedForm form, int kilobits) {
        CMediaFormat::QuietLibrary();
        const FormFacts& facts = *std::ranges::find(kEncoder_Forms, form, &FormFacts::form);
        const AVCodec* codecP = avcodec_find_encoder(facts.codec);
        if (codecP == nullptr || (facts.ratedB && (kilobits < 16 || kilobits > 512))) return paramErr;
        if (const OSErr err = OpenFile(facts.muxerZ); Failed(err)) return err;
        i_codecP = avcodec_alloc_context3(codecP);
        i_frameP = av_frame_alloc();
        i_packetP = av_packet_alloc();
        AVStream* streamP = avformat_new_stream(i_formatP, nullptr);
        if (i_codecP == nullptr || i_frameP == nullptr || i_packetP == nullptr || streamP == nullptr) return memFullErr;
        i_codecP->sample_fmt = facts.samples;
        i_codecP->sample_rate = static_cast<int>(kSamplesPerSecond);
        i_codecP->time_base = {1, i_codecP->sample_rate};
        av_channel_layout_default(&i_codecP->ch_layout, 2);
        if (facts.ratedB) i_codecP->bit_rate = std::int64_t{kilobits} * 1000;
        if ((i_formatP->oformat->flags & AVFMT_GLOBALHEADER) != 0) i_codecP->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
        int result = avcodec_open2(i_codecP, codecP, nullptr);
        if (result >= 0) result = avcodec_parameters_from_context(streamP->codecpar, i_codecP);
        if (result >= 0)
            result = swr_alloc_set_opts2(&i_swrP, &i_codecP->ch_layout, facts.samples, i_codecP->sample_rate,
                                         &i_codecP->ch_layout, AV_SAMPLE_FMT_S16, i_codecP->sample_rate, 0, nullptr);
        if (result >= 0) result = swr_init(i_swrP);
        streamP->time_base = i_codecP->time_base;
        // The index goes to the front at the end: a song can then be played while it is still being fetched.
        AVDictionary* optionsP = nullptr;
        if (form == EncodedForm::kM4A) av_dict_set(&optionsP, "movflags", "+faststart", 0);
        if (result >= 0) result = avformat_write_header(i_formatP, &optionsP);
        av_dict_free(&optionsP);
        return FromFFmpeg(result, i_err);
    }

    OSErr Encode(std::span<const std::int16_t> stereo) {
        const std::size_t wantedL = static_cast<std::size_t>(FrameSize()) * 2;
        i_block.insert(i_block.end(), stereo.begin(), stereo.end());
        std::size_t atL = 0;
        OSErr err = noErr;
        for (; !Failed(err) && i_block.size() - atL >= wantedL; atL += wantedL)
            err = EncodeFrame(std::span<const std::int16_t>(i_block).subspan(atL, wantedL));
        i_block.erase(i_block.begin(), i_block.begin() + static_cast<std::ptrdiff_t>(atL));
        return err;
    }

    OSErr End() {
        OSErr err = i_block.empty() ? noErr : EncodeFrame(i_block);
        if (!Failed(err)) err = Send(nullptr);
        if (Failed(err)) return err;
        const int result = av_write_trailer(i_formatP);
        avio_flush(i_ioP);
        return FromFFmpeg(result, i_err);   // asked last: the flush may be what failed
    }

private:
    [[nodiscard]] int FrameSize() const {
        return i_codecP->frame_size > 0 ? i_codecP->frame_size : kEncoder_FramesAtATime;
    }

    OSErr OpenFile(const char* muxerZ) {
        auto* bufferP = static_cast<unsigned char*>(av_malloc(kEncoder_Buffer));
        if (bufferP != nullptr)
            i_ioP = avio_alloc_context(bufferP, kEncoder_Buffer, 1, this, &ReadBack, &WriteOut, &SeekTo);
        if (i_ioP == nullptr) {
            av_free(bufferP);
            return memFullErr;
        }
        if (avformat_alloc_output_context2(&i_formatP, nullptr, muxerZ, nullptr) < 0) return paramErr;
        i_formatP->pb = i_ioP;
        i_formatP->flags |= AVFMT_FLAG_CUSTOM_IO;
        i_formatP->opaque = this;
        i_formatP->io_open = &OpenSecond;
        i_formatP->io_close2 = &CloseSecond;
        return noErr;
    }

    OSErr EncodeFrame(std::span<const std::int16_t> stereo) {
        av_frame_unref(i_frameP);
        i_frameP->nb_samples = static_cast<int>(stereo.size() / 2);
        i_frameP->format = i_codecP->sample_fmt;
        i_frameP->sample_rate = i_codecP->sample_rate;
        if (av_channel_layout_copy(&i_frameP->ch_layout, &i_codecP->ch_layout) < 0) return memFullErr;
        if (av_frame_get_buffer(i_frameP, 0) < 0) return memFullErr;
        const auto* inP = reinterpret_cast<const std::uint8_t*>(stereo.data());
        const int result =
            swr_convert(i_swrP, i_frameP->extended_data, i_frameP->nb_samples, &inP, i_frameP->nb_samples);
        if (result < 0) return FromFFmpeg(result, noErr);
        i_frameP->pts = i_ptsL;
        i_ptsL += i_frameP->nb_samples;
        return Send(i_frameP);
    }

    OSErr Send(const AVFrame* frameP) {
        int result = avcodec_send_frame(i_codecP, frameP);
        while (result >= 0) {
            result = avcodec_receive_packet(i_codecP, i_packetP);
            if (result == AVERROR(EAGAIN) || result == AVERROR_EOF) return i_err;
            if (result < 0) break;
            i_packetP->stream_index = 0;
            av_packet_rescale_ts(i_packetP, i_codecP->time_base, i_formatP->streams[0]->time_base);
            result = av_interleaved_write_frame(i_formatP, i_packetP);
        }
        return FromFFmpeg(result, i_err);
    }

    template <class Number>
    Number Told(OSErr err, Number resultL) {
        if (!Failed(err)) return resultL;
        if (!Failed(i_err)) i_err = err;
        return AVERROR(EIO);
    }
    static int WriteOut(void* selfP, std::uint8_t* fromP, int sizeL) {
        auto& self = *static_cast<Encoder*>(selfP);
        return self.Told(
            self.i_out.Write(std::as_bytes(std::span(fromP, static_cast<std::size_t>(std::max(sizeL, 0))))), sizeL);
    }
    int ReadFrom(CDataFork& fork, std::uint8_t* toP, int sizeL) {
        std::size_t got = 0;
        const auto to = std::as_writable_bytes(std::span(toP, static_cast<std::size_t>(std::max(sizeL, 0))));
        const OSErr err = fork.Read(to, got);
        if (got > 0) return static_cast<int>(got);
        return err == eofErr ? AVERROR_EOF : Told(err, 0);
    }
    static int ReadBack(void* selfP, std::uint8_t* toP, int sizeL) {
        auto& self = *static_cast<Encoder*>(selfP);
        return self.ReadFrom(self.i_out.Fork(), toP, sizeL);
    }
    /** The muxer moves the sound behind its index: it reads what was written by a way of its own. */
    static int OpenSecond(AVFormatContext* formatP, AVIOContext** ioPP, const char*, int flags, AVDictionary**) {
        auto& self = *static_cast<Encoder*>(formatP->opaque);
        if (flags != AVIO_FLAG_READ || self.i_second.IsOpen()) return AVERROR(EPERM);
        const OSErr err = self.i_second.Open(self.i_out.Written(), FileAccess::kRead);
        if (Failed(err)) return self.Told(err, 0);
        auto* bufferP = static_cast<unsigned char*>(av_malloc(kEncoder_Buffer));
        if (bufferP != nullptr)
            *ioPP = avio_alloc_context(bufferP, kEncoder_Buffer, 0, &self, &ReadSecond, nullptr, &SeekSecond);
        if (bufferP != nullptr && *ioPP != nullptr) return 0;
        av_free(bufferP);
        return CloseFork(self), AVERROR(ENOMEM);
    }
    static int CloseSecond(AVFormatContext* formatP, AVIOContext* ioP) {
        av_freep(&ioP->buffer);
        avio_context_free(&ioP);
        return CloseFork(*static_cast<Encoder*>(formatP->opaque));
    }
    static int CloseFork(Encoder& self) {
        const OSErr err = self.i_second.Close();
        return self.Told(err, 0);
    }
    static int ReadSecond(void* selfP, std::uint8_t* toP, int sizeL) {
        auto& self = *static_cast<Encoder*>(selfP);
        return self.ReadFrom(self.i_second, toP, sizeL);
    }
    static std::int64_t SeekSecond(void* selfP, std::int64_t offset, int whence) {
        auto& self = *static_cast<Encoder*>(selfP);
        return self.SeekIn(self.i_second, offset, whence);
    }

    std::int64_t SeekIn(CDataFork& fork, std::int64_t offset, int whence) {
        if ((whence & AVSEEK_SIZE) != 0) {
            std::uint64_t bytes = 0;
            const OSErr err = fork.GetEOF(bytes);
            return Told(err, static_cast<std::int64_t>(bytes));
        }
        using enum CDataFork::PosMode;
        const auto mode = whence == SEEK_SET ? kFromStart : whence == SEEK_END ? kFromEnd : kFromMark;
        const OSErr err = fork.SetPos(mode, offset);
        return Told(err, static_cast<std::int64_t>(fork.GetPos()));
    }
    static std::int64_t SeekTo(void* selfP, std::int64_t offset, int whence) {
        auto& self = *static_cast<Encoder*>(selfP);
        return self.SeekIn(self.i_out.Fork(), offset, whence);
    }

    CSafeOutput& i_out;
    CDataFork i_second;   // the same file, while the muxer moves what is in it
    AVIOContext* i_ioP = nullptr;
    AVFormatContext* i_formatP = nullptr;
    AVCodecContext* i_codecP = nullptr;
    SwrContext* i_swrP = nullptr;
    AVFrame* i_frameP = nullptr;
    AVPacket* i_packetP = nullptr;
    std::vector<std::int16_t> i_block;   // what is no whole frame of the codec yet
    std::int64_t i_ptsL = 0;
    OSErr i_err = noErr;   // the first failure of the file
};

CAS_QuickTimeAudioWriter::CAS_QuickTimeAudioWriter(const CFileRef& file, EncodedForm form, int kilobits)
    : CAS_SoundWriter(file, "QuickTime Writer"), i_form(form), i_kilobits(kilobits) {}
CAS_QuickTimeAudioWriter::~CAS_QuickTimeAudioWriter() = default;

OSErr CAS_QuickTimeAudioWriter::Begin(CSafeOutput& out, std::uint64_t) {
    i_encoderP = std::make_unique<Encoder>(out);
    return LogStep(i_encoderP->Begin(i_form, i_kilobits), "QT Audio Encoder", out.Path());
}
OSErr CAS_QuickTimeAudioWriter::Encode(CSafeOutput&, std::span<const std::int16_t> stereo) {
    return i_encoderP->Encode(stereo);
}
OSErr CAS_QuickTimeAudioWriter::End(CSafeOutput&) { return i_encoderP->End(); }
void CAS_QuickTimeAudioWriter::Forget() { i_encoderP.reset(); }
