#include "Audio/CMediaPackets.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <mutex>

#include "Core/CLog.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

/** Only formats that hold their own sound: playlists and the like would make the library open other files and URLs. */
constexpr const char* kMedia_Formats =
    "aac,ac3,aiff,amr,amrnb,amrwb,ape,asf,au,avi,caf,dts,eac3,flac,flv,matroska,mov,mp3,mp4,mpc,mpc8,mpeg,mpegts,ogg,"
    "rm,s16le,tta,"
    "w64,wav,webm,wv";
/** Of those, where a packet is one piece of the file (checked on the first few). Not in ADTS, where a tag may lie
 * between. */
constexpr std::array<std::string_view, 8> kMedia_InOnePiece = {"ac3", "aiff", "amr", "flac", "mov,mp4,m4a,3gp,3g2,mj2",
                                                               "mp3", "w64",  "wav"};
constexpr std::size_t kMedia_PlacesChecked = 4;
constexpr std::size_t kMedia_PacketOverhead = 640;   // what a held packet takes beside its bytes
constexpr std::int64_t kMedia_ProbeBytes = 2 << 20;
constexpr std::int64_t kMedia_AnalyzeTime = 2 * AV_TIME_BASE;
constexpr std::uint64_t kMedia_OpenBudget = 96U << 20;   // an index at the end, a cover in front
constexpr int kMedia_MostBadReads = 64;

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

}   // namespace

void CMediaPackets::QuietLibrary() {
    static std::once_flag s_once;
    std::call_once(s_once, [] { av_log_set_level(AV_LOG_QUIET); });
}

CMediaPackets::CMediaPackets() { QuietLibrary(); }
CMediaPackets::~CMediaPackets() { avformat_close_input(&i_formatP); }

OSErr CMediaPackets::Open(CByteSource& source, std::string_view extension) {
    i_sourceP = &source;
    i_extension.clear();
    for (const char c : extension.substr(0, 8))
        if (c > ' ' && c < 127 && c != '/' && c != ':')
            i_extension += static_cast<char>(c >= 'A' && c <= 'Z' ? c + 32 : c);
    if (const OSErr err = i_bytes.Open(source); Failed(err)) return err;
    return OpenFormat();
}

OSErr CMediaPackets::OpenFormat() {
    i_formatP = avformat_alloc_context();
    if (i_formatP == nullptr) return memFullErr;
    i_formatP->pb = i_bytes.Context();
    i_formatP->flags |= AVFMT_FLAG_CUSTOM_IO;
    i_formatP->io_open = &RefuseOther;
    i_formatP->probesize = kMedia_ProbeBytes;
    i_formatP->max_analyze_duration = kMedia_AnalyzeTime;
    i_formatP->interrupt_callback = {
        [](void* selfP) { return static_cast<CMediaPackets*>(selfP)->IsAborted() ? 1 : 0; }, this};

    OptionsKeeper options;
    options.Set("format_whitelist", kMedia_Formats);
    options.Set("protocol_whitelist", "none");
    const AVInputFormat* formatP = nullptr;
    if (i_extension == "pcm" || i_extension == "raw") {
        formatP = av_find_input_format("s16le");
        options.Set("sample_rate", "44100");
        options.Set("channels", "2");
    }
    i_bytes.SetBudget(kMedia_OpenBudget);
    const std::string name = "sound." + i_extension;
    int result = avformat_open_input(&i_formatP, name.c_str(), formatP, &options.dictionaryP);
    if (result < 0) return FromFFmpeg(result, i_bytes.Err());
    i_container = i_formatP->iformat->name;

    // Not asked for is not analysed, and by most demuxers not even read.
    const auto quiet = [this] {
        for (unsigned n = 0; n < i_formatP->nb_streams; ++n)
            if (i_formatP->streams[n]->codecpar->codec_type != AVMEDIA_TYPE_AUDIO)
                i_formatP->streams[n]->discard = AVDISCARD_ALL;
    };
    quiet();
    result = avformat_find_stream_info(i_formatP, nullptr);
    if (result < 0) return FromFFmpeg(result, i_bytes.Err());
    quiet();
    const int best = av_find_best_stream(i_formatP, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (best < 0) return FromFFmpeg(best, i_bytes.Err());
    i_streamP = i_formatP->streams[best];
    for (unsigned n = 0; n < i_formatP->nb_streams; ++n)
        if (static_cast<int>(n) != best) i_formatP->streams[n]->discard = AVDISCARD_ALL;
    i_placesB = std::ranges::find(kMedia_InOnePiece, i_container) != kMedia_InOnePiece.end();
    return noErr;
}

bool CMediaPackets::EndOpening() noexcept {
    i_bytes.SetBudget(CMediaBytes::kBudget_None);
    return !i_bytes.IsSpent();
}

OSErr CMediaPackets::Restart() {
    avformat_close_input(&i_formatP);
    i_streamP = nullptr;
    i_rows.clear();
    i_positionL = i_heldL = 0;
    i_endB = false;
    i_endErr = eofErr;
    i_bytes.ForgetErr();
    avio_seek(i_bytes.Context(), 0, SEEK_SET);
    const OSErr err = OpenFormat();
    EndOpening();
    return err;
}

OSErr CMediaPackets::Next(AVPacket& packet) {
    if (i_tableB && i_positionL < i_rows.size()) {
        const OSErr err = ReadFromTable(i_rows[i_positionL], packet);
        if (!Failed(err)) ++i_positionL;
        return err;
    }
    return ReadFromFile(packet);
}

OSErr CMediaPackets::ReadFromFile(AVPacket& packet) {
    if (i_endB) return i_endErr;
    if (i_streamP == nullptr) return paramErr;
    for (int bad = 0;;) {
        const int result = av_read_frame(i_formatP, &packet);
        if (IsAborted()) {
            av_packet_unref(&packet);
            return abortErr;
        }
        if (result >= 0) {
            if (packet.stream_index == i_streamP->index && packet.size > 0) break;
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
    Note(packet);
    ++i_positionL;
    return noErr;
}

bool CMediaPackets::LiesThere(const AVPacket& packet) {
    if (packet.pos < 0) return false;
    std::vector<std::byte> there(static_cast<std::size_t>(packet.size));
    if (Failed(i_bytes.ReadAt(static_cast<std::uint64_t>(packet.pos), there))) return false;
    return std::memcmp(there.data(), packet.data, there.size()) == 0;
}

void CMediaPackets::Note(const AVPacket& packet) {
    if (!i_tableB) return;
    if (i_placesB && (packet.pos < 0 || (i_rows.size() < kMedia_PlacesChecked && !LiesThere(packet))))
        i_placesB = false;
    MediaPacketRow row;
    row.sizeL = static_cast<std::uint32_t>(packet.size);
    if (i_placesB && packet.side_data_elems == 0) {   // what stands beside the bytes is in no place of the file
        row.placeL = packet.pos;
    } else {
        AVPacket* heldP = av_packet_clone(&packet);
        i_heldL += row.sizeL + kMedia_PacketOverhead;
        if (heldP != nullptr) row.heldP = {heldP, [](AVPacket* goneP) { av_packet_free(&goneP); }};
        if (heldP == nullptr || i_heldL > kMediaPackets_MostHeld) return DropTable();
    }
    if (i_rows.size() >= kMediaPackets_MostRows) return DropTable();
    i_rows.push_back(std::move(row));
}

void CMediaPackets::DropTable() {
    i_tableB = false;
    i_rows = {};
}

OSErr CMediaPackets::ReadFromTable(const MediaPacketRow& row, AVPacket& packet) {
    if (row.heldP) return av_packet_ref(&packet, row.heldP.get()) < 0 ? memFullErr : noErr;
    if (av_new_packet(&packet, static_cast<int>(row.sizeL)) < 0) return memFullErr;
    const OSErr err = i_bytes.ReadAt(static_cast<std::uint64_t>(row.placeL),
                                     std::as_writable_bytes(std::span(packet.data, row.sizeL)));
    if (Failed(err)) av_packet_unref(&packet);
    return err;
}

const AVCodecParameters& CMediaPackets::Parameters() const { return *i_streamP->codecpar; }
AVRational CMediaPackets::TimeBase() const { return i_streamP->time_base; }

double CMediaPackets::Seconds() const {
    if (i_streamP == nullptr) return 0;
    if (i_streamP->duration > 0) return static_cast<double>(i_streamP->duration) * av_q2d(i_streamP->time_base);
    return i_formatP->duration > 0 ? static_cast<double>(i_formatP->duration) / AV_TIME_BASE : 0;
}
