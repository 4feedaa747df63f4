#include "Media/CMediaFormat.h"

#include <limits>
#include <mutex>

extern "C" {
#include <libavformat/avformat.h>
}

namespace {

/** Only formats that hold their own streams: playlists and the like would make the library open other files and URLs. */
constexpr const char* kMedia_Formats =
    "aac,ac3,aiff,amr,amrnb,amrwb,ape,asf,au,avi,caf,dts,eac3,flac,flv,matroska,mov,mp4,mpc,mpc8,mpeg,mpegts,ogg,rm,"
    "s16le,tta,w64,wav,webm,wv";
constexpr const char* kMedia_PictureFormats = "asf,avi,dv,flv,m4v,matroska,mov,mp4,mpeg,mpegts,mpegvideo,ogg,rm,webm";
constexpr std::int64_t kMedia_ProbeBytes = 2 << 20;
constexpr std::int64_t kMedia_AnalyzeTime = 2 * AV_TIME_BASE;
// Of files whose head does not name their streams, when the sound was not met in that: it may begin late.
constexpr std::int64_t kMedia_DeepProbeBytes = 32 << 20;
constexpr std::int64_t kMedia_DeepAnalyzeTime = 30 * AV_TIME_BASE;
constexpr std::size_t kMedia_MostHeldBytes = 16U << 20, kMedia_MostHeld = 4096;
constexpr double kMedia_SoundNearT = 0.5;                // nearer, the library knows better: a decoder's delay counts
constexpr std::uint64_t kMedia_OpenBudget = 96U << 20;   // an index at the end, a cover in front
constexpr int kMedia_MostBadReads = 64;
// For the length alone: what is damaged, or no media at all, must not cost much.
constexpr std::int64_t kMedia_LengthProbe = 128 << 10;
constexpr int kMedia_LengthGuess = 32 << 10;   // bytes in which the format must be found
constexpr std::uint64_t kMedia_LengthBudget = 32U << 20;

int RefuseOther(AVFormatContext*, AVIOContext**, const char*, int, AVDictionary**) { return AVERROR(EPERM); }

OSErr FromFFmpeg(int result, OSErr ioErrKept) {
    if (Failed(ioErrKept)) return ioErrKept;
    if (result == AVERROR_EXIT) return abortErr;
    if (result == AVERROR(ENOMEM)) return memFullErr;
    return paramErr;
}

struct OptionsKeeper {
    AVDictionary* dictionaryP = nullptr;
    ~OptionsKeeper() { av_dict_free(&dictionaryP); }
    void Set(const char* keyZ, const char* valueZ) { av_dict_set(&dictionaryP, keyZ, valueZ, 0); }
};

/** A cover is a picture, but none that plays. */
bool IsCover(const AVStream& stream) { return (stream.disposition & AV_DISPOSITION_ATTACHED_PIC) != 0; }

}   // namespace

void CMediaFormat::QuietLibrary() {
    static std::once_flag s_once;
    std::call_once(s_once, [] { av_log_set_level(AV_LOG_QUIET); });
}

CMediaFormat::CMediaFormat(MediaKind kind, MediaUse use) : i_kind(kind), i_use(use) { QuietLibrary(); }
CMediaFormat::~CMediaFormat() { avformat_close_input(&i_formatP); }

OSErr CMediaFormat::Open(CByteSource& source, std::string_view extension) {
    i_extension.clear();
    for (const char c : extension.substr(0, 8))
        if (c > ' ' && c < 127 && c != '/' && c != ':')
            i_extension += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    if (const OSErr err = i_bytes.Open(source); Failed(err)) return err;
    return OpenFormat();
}

/** Not asked for is not analysed, and by most demuxers not even read. A picture's times count from where the sound
    begins, so that the sound is looked at too. */
void CMediaFormat::Quiet() {
    for (unsigned n = 0; n < i_formatP->nb_streams; ++n) {
        AVStream& stream = *i_formatP->streams[n];
        const AVMediaType type = stream.codecpar->codec_type;
        const bool wantedB = type == AVMEDIA_TYPE_AUDIO ||
                             (i_kind == MediaKind::kPicture && type == AVMEDIA_TYPE_VIDEO && !IsCover(stream));
        if (!wantedB) stream.discard = AVDISCARD_ALL;
    }
}

int CMediaFormat::BestStream() const {
    if (i_kind == MediaKind::kSound) return av_find_best_stream(i_formatP, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    const int best = av_find_best_stream(i_formatP, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
    if (best >= 0 && !IsCover(*i_formatP->streams[best])) return best;
    for (unsigned n = 0; n < i_formatP->nb_streams; ++n)
        if (i_formatP->streams[n]->codecpar->codec_type == AVMEDIA_TYPE_VIDEO && !IsCover(*i_formatP->streams[n]))
            return static_cast<int>(n);
    return AVERROR_STREAM_NOT_FOUND;
}

OSErr CMediaFormat::OpenFormat() {
    const OSErr err = OpenAndAnalyze();
    if (i_deepB || i_use == MediaUse::kLength || IsAborted() || !MayHideSound()) return err;
    i_deepB = true;
    Rewind();
    return OpenAndAnalyze();
}

/** Streams of such a file are known once a packet of theirs was met, and no sound was. */
bool CMediaFormat::MayHideSound() const {
    if (i_formatP == nullptr || i_container.empty()) return false;
    const bool headlessB =
        (i_formatP->ctx_flags & AVFMTCTX_NOHEADER) != 0 || (i_formatP->iformat->flags & AVFMT_TS_DISCONT) != 0;
    return headlessB && av_find_best_stream(i_formatP, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0) < 0;
}

/** The library takes a stream of which it has met no packet for one that begins with the file. What of the picture is
    read on the way to the first packet is kept for Next. */
void CMediaFormat::FindSoundStart() {
    i_soundStartT = std::numeric_limits<double>::quiet_NaN();
    const int sound = av_find_best_stream(i_formatP, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (sound < 0) return;
    const AVStream& stream = *i_formatP->streams[sound];
    const auto timeOf = [&stream](std::int64_t stamp) { return static_cast<double>(stamp) * av_q2d(stream.time_base); };
    if (stream.start_time != AV_NOPTS_VALUE) i_soundStartT = timeOf(stream.start_time);
    for (std::size_t bytesL = 0; bytesL < kMedia_MostHeldBytes && i_held.size() < kMedia_MostHeld;) {
        HeldPacket packetP(av_packet_alloc());
        if (!packetP || av_read_frame(i_formatP, packetP.get()) < 0) return;   // Next meets the end again
        if (packetP->stream_index == sound && packetP->pts != AV_NOPTS_VALUE) {
            const double firstT = timeOf(packetP->pts);
            if (!(firstT - i_soundStartT < kMedia_SoundNearT)) i_soundStartT = firstT;
            return;
        }
        if (packetP->stream_index != i_streamP->index || packetP->size <= 0) continue;
        bytesL += static_cast<std::size_t>(packetP->size);
        i_held.push_back(std::move(packetP));
    }
}

void CMediaFormat::FreePacket::operator()(AVPacket* packetP) const noexcept { av_packet_free(&packetP); }

void CMediaFormat::Rewind() {
    avformat_close_input(&i_formatP);
    i_streamP = nullptr;
    ForgetEnd();
    avio_seek(i_bytes.Context(), 0, SEEK_SET);
}

OSErr CMediaFormat::OpenAndAnalyze() {
    i_container.clear();
    i_formatP = avformat_alloc_context();
    if (i_formatP == nullptr) return memFullErr;
    i_formatP->pb = i_bytes.Context();
    i_formatP->flags |= AVFMT_FLAG_CUSTOM_IO;
    i_formatP->io_open = &RefuseOther;
    const bool lengthB = i_use == MediaUse::kLength;
    i_formatP->probesize = lengthB ? kMedia_LengthProbe : i_deepB ? kMedia_DeepProbeBytes : kMedia_ProbeBytes;
    if (lengthB) i_formatP->format_probesize = kMedia_LengthGuess;
    i_formatP->max_analyze_duration = i_deepB ? kMedia_DeepAnalyzeTime : kMedia_AnalyzeTime;
    i_formatP->interrupt_callback = {[](void* selfP) { return static_cast<CMediaFormat*>(selfP)->IsAborted() ? 1 : 0; },
                                     this};

    OptionsKeeper options;
    // Its demuxer looks for a frame in 64 KB, byte by byte, and guesses the length then: MP3Length does better.
    const std::string sounds = std::string(kMedia_Formats) + (lengthB ? "" : ",mp3");
    options.Set("format_whitelist", i_kind == MediaKind::kSound ? sounds.c_str() : kMedia_PictureFormats);
    options.Set("protocol_whitelist", "none");
    const AVInputFormat* formatP = nullptr;
    if (i_kind == MediaKind::kSound && (i_extension == "pcm" || i_extension == "raw")) {
        formatP = av_find_input_format("s16le");
        options.Set("sample_rate", "44100");
        options.Set("channels", "2");
    }
    i_bytes.SetBudget(lengthB ? kMedia_LengthBudget : kMedia_OpenBudget);
    const std::string name = (i_kind == MediaKind::kSound ? "sound." : "movie.") + i_extension;
    int result = avformat_open_input(&i_formatP, name.c_str(), formatP, &options.dictionaryP);
    if (result < 0) return FromFFmpeg(result, i_bytes.Err());
    i_container = i_formatP->iformat->name;
    // Known by nothing but its name.
    if (lengthB && formatP == nullptr && i_formatP->probe_score <= AVPROBE_SCORE_RETRY) return paramErr;

    Quiet();
    if (!lengthB || !IsToldByHead()) {
        result = avformat_find_stream_info(i_formatP, nullptr);
        if (result < 0) return FromFFmpeg(result, i_bytes.Err());
        Quiet();
    }
    const int best = BestStream();
    if (best < 0) return FromFFmpeg(best, i_bytes.Err());
    i_streamP = i_formatP->streams[best];
    if (i_kind == MediaKind::kPicture && !lengthB) FindSoundStart();
    for (unsigned n = 0; n < i_formatP->nb_streams; ++n)
        if (static_cast<int>(n) != best) i_formatP->streams[n]->discard = AVDISCARD_ALL;
    return noErr;
}

OSErr CMediaFormat::Restart() {
    Rewind();
    const OSErr err = OpenFormat();
    EndOpening();
    return err;
}

bool CMediaFormat::EndOpening() noexcept {
    i_bytes.SetBudget(CMediaBytes::kBudget_None);
    return !i_bytes.IsSpent();
}

void CMediaFormat::ForgetEnd() noexcept {
    i_held.clear();
    i_endB = false;
    i_endErr = eofErr;
    i_bytes.ForgetErr();
}

OSErr CMediaFormat::Next(AVPacket& packet) {
    if (!i_held.empty() && !IsAborted()) {
        av_packet_move_ref(&packet, i_held.front().get());
        i_held.pop_front();
        return noErr;
    }
    if (i_endB) return i_endErr;
    if (i_streamP == nullptr) return paramErr;
    for (int bad = 0;;) {
        const int result = av_read_frame(i_formatP, &packet);
        if (IsAborted()) {
            av_packet_unref(&packet);
            return abortErr;
        }
        if (result >= 0) {
            if (packet.stream_index == i_streamP->index && packet.size > 0) return noErr;
            av_packet_unref(&packet);
            continue;
        }
        if (result == AVERROR_EOF || result == AVERROR(EIO) || result == AVERROR(ENOMEM) ||
            ++bad > kMedia_MostBadReads) {
            i_endB = true;
            i_endErr = result == AVERROR(ENOMEM) ? memFullErr : eofErr;   // demuxers tell a cut file by EIO too
            if (Failed(i_bytes.Err())) i_endErr = i_bytes.Err();
            return i_endErr;
        }
    }
}

double CMediaFormat::Seconds() const {
    if (i_streamP == nullptr) return 0;
    if (i_streamP->duration > 0) return static_cast<double>(i_streamP->duration) * av_q2d(i_streamP->time_base);
    return i_formatP->duration > 0 ? static_cast<double>(i_formatP->duration) / AV_TIME_BASE : 0;
}

bool CMediaFormat::IsToldByHead() const {
    const int best = BestStream();
    return best >= 0 && (i_formatP->streams[best]->duration > 0 || i_formatP->duration > 0);
}

bool CMediaFormat::TellsSeconds() const {
    if (Seconds() <= 0) return false;
    return i_formatP->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE ||
           av_get_exact_bits_per_sample(i_streamP->codecpar->codec_id) > 0;
}
