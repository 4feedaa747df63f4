#include "Media/CMediaFrames.h"

#include <algorithm>
#include <array>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/vorbis_parser.h>
#include <libavutil/intreadwrite.h>
}

namespace {

/** Packets of one length, as long as the stream does not change. */
constexpr std::array kMedia_OneLength = {AV_CODEC_ID_MP1, AV_CODEC_ID_MP2,    AV_CODEC_ID_MP3,   AV_CODEC_ID_AAC,
                                         AV_CODEC_ID_AC3, AV_CODEC_ID_AMR_NB, AV_CODEC_ID_AMR_WB};
/** The reservoir of MP3 reaches 23 packets back at its lowest rate; Opus and its kin forget within a second. */
constexpr std::size_t kMedia_PreRoll = 64;
constexpr std::size_t kMedia_FirstPackets = 4;
/** More than so many samples are no damage. */
constexpr std::int64_t kMedia_MostMissing = 1 << 20;
/** A landing costs the table; so many samples are read through as fast. */
constexpr std::uint64_t kMedia_Far = 1 << 18;
constexpr std::size_t kMedia_SkipBytes = 10;
/** Silence comes in pieces: a small file of damaged packets stands for hours of it. */
constexpr std::uint64_t kMedia_MostSilence = 64 << 10;

bool IsOneLength(AVCodecID id) { return std::ranges::find(kMedia_OneLength, id) != kMedia_OneLength.end(); }
bool IsPCM(AVCodecID id) { return id >= AV_CODEC_ID_FIRST_AUDIO && id < AV_CODEC_ID_ADPCM_IMA_QT; }
/** Samples at 48 kHz, as its first bytes tell; 0 for what is none.
    Source   RFC 6716, 3.1 and 3.2. */
std::uint32_t OpusSamples(const AVPacket& packet) {
    if (packet.size < 1) return 0;
    constexpr std::uint32_t kSilk[] = {480, 960, 1920, 2880}, kCelt[] = {120, 240, 480, 960};
    const std::uint32_t configL = packet.data[0] >> 3U, codeL = packet.data[0] & 3U;
    const std::uint32_t frameL = configL < 12   ? kSilk[configL & 3U]
                                 : configL < 16 ? kSilk[configL & 1U]
                                                : kCelt[configL & 3U];
    if (codeL < 3) return codeL == 0 ? frameL : 2 * frameL;
    const std::uint32_t allL = packet.size < 2 ? 0 : (packet.data[1] & 63U) * frameL;
    return allL <= 5760 ? allL : 0;
}
std::uint32_t Bounded(std::int64_t value) {
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, INT32_MAX));
}

}   // namespace

CMediaFrames::CMediaFrames(CMediaPackets& packets) : i_packets(packets) {}

CMediaFrames::~CMediaFrames() {
    avcodec_free_context(&i_codecP);
    av_frame_free(&i_frameP);
    av_packet_free(&i_packetP);
}

OSErr CMediaFrames::Open() {
    i_frameP = av_frame_alloc();
    i_packetP = av_packet_alloc();
    if (i_frameP == nullptr || i_packetP == nullptr) return memFullErr;
    return OpenCodec();
}

OSErr CMediaFrames::OpenCodec() {
    avcodec_free_context(&i_codecP);
    const AVCodecParameters& parameters = i_packets.Parameters();
    const AVCodec* codecP = avcodec_find_decoder(parameters.codec_id);
    if (codecP == nullptr) return paramErr;
    i_codecP = avcodec_alloc_context3(codecP);
    if (i_codecP == nullptr) return memFullErr;
    if (avcodec_parameters_to_context(i_codecP, &parameters) < 0) return paramErr;
    i_codecP->pkt_timebase = i_packets.TimeBase();
    i_codecP->thread_count = 1;                       // a packet in, its sound out
    i_codecP->flags2 |= AV_CODEC_FLAG2_SKIP_MANUAL;   // we cut, so that a seek can cut the same
    if (avcodec_open2(i_codecP, codecP, nullptr) < 0) return paramErr;
    i_current = {};
    i_skipL = 0;
    i_silenceL = 0;
    av_packet_unref(i_packetP);
    i_fetchedB = i_drainB = i_endB = i_heldFrameB = false;
    i_endErr = eofErr;
    return noErr;
}

MediaPacketRow* CMediaFrames::Row(std::size_t number) {
    auto& rows = i_packets.Rows();
    return i_packets.HasTable() && number < rows.size() ? &rows[number] : nullptr;
}

std::size_t CMediaFrames::CountedRows() {
    auto& rows = i_packets.Rows();
    return static_cast<std::size_t>(std::ranges::partition_point(rows, &MediaPacketRow::countedB) - rows.begin());
}

OSErr CMediaFrames::Next(MediaPiece& piece) {
    for (;;) {
        if (i_packets.IsAborted()) return abortErr;
        if (i_endB) return i_endErr;
        if (i_heldFrameB && i_silenceL > 0) {   // it goes ahead of the frame
            const std::uint64_t stepL = std::min(i_silenceL, kMedia_MostSilence);
            i_silenceL -= stepL;
            if (Deliver(nullptr, 0, stepL, piece)) return noErr;
            continue;
        }
        if (i_heldFrameB) {
            i_heldFrameB = false;
            if (Take(*i_frameP, piece)) return noErr;
            continue;
        }
        const int result = avcodec_receive_frame(i_codecP, i_frameP);
        if (result >= 0) {
            if (i_silenceL > 0) {
                i_heldFrameB = true;
                continue;
            }
            if (Take(*i_frameP, piece)) return noErr;
            continue;
        }
        if (result == AVERROR_EOF) {
            if (CloseRow(piece)) return noErr;
            DropSilenceAtEnd();
            i_endB = true;
            continue;
        }
        if (result != AVERROR(EAGAIN)) i_current.failedB = true;
        if (i_drainB) {
            i_endB = true;
            continue;
        }
        if (!i_fetchedB) {
            if (const OSErr err = Fetch(); Failed(err)) return err;
        }
        if (i_drainB) continue;   // what the decoder still has belongs to the last packet
        if (CloseRow(piece)) return noErr;
        Send();
    }
}

OSErr CMediaFrames::Fetch() {
    i_fetchedL = i_packets.Position();
    const OSErr err = i_packets.Next(*i_packetP);
    if (err == abortErr) return err;
    i_fetchedB = !Failed(err);
    if (i_fetchedB) return noErr;
    i_endErr = err;
    i_drainB = true;
    if (avcodec_send_packet(i_codecP, nullptr) < 0) i_endB = true;
    return noErr;
}

void CMediaFrames::Send() {
    i_fetchedB = false;
    i_current = {.rowL = i_fetchedL, .openB = true, .expectedL = Expected(*i_packetP)};
    if (const MediaPacketRow* rowP = Row(i_fetchedL)) i_current.knownB = rowP->countedB;
    if (avcodec_send_packet(i_codecP, i_packetP) < 0) i_current.failedB = true;
    av_packet_unref(i_packetP);
}

bool CMediaFrames::Deliver(const AVFrame* frameP, std::size_t fromL, std::size_t countL, MediaPiece& piece) {
    if (i_current.rowL < i_firstRowL) return false;
    const std::size_t dropL = std::min<std::uint64_t>(i_dropL, countL);
    i_dropL -= dropL;
    piece = {frameP, fromL + dropL, countL - dropL};
    return piece.countL > 0;
}

bool CMediaFrames::Take(const AVFrame& frame, MediaPiece& piece) {
    const std::uint32_t samplesL = Bounded(frame.nb_samples);
    std::uint32_t paddingL = 0;
    const AVFrameSideData* sideP = av_frame_get_side_data(&frame, AV_FRAME_DATA_SKIP_SAMPLES);
    if (sideP != nullptr && sideP->size >= kMedia_SkipBytes) {
        if (const std::uint32_t skipL = AV_RL32(sideP->data); skipL != 0) i_skipL = Bounded(skipL);
        paddingL = AV_RL32(sideP->data + 4);
    }
    std::uint32_t leadL = std::min(i_skipL, samplesL), heardL = 0;
    i_skipL -= leadL;
    if ((frame.flags & AV_FRAME_FLAG_DISCARD) != 0) leadL = samplesL;
    heardL = samplesL - leadL;
    if (paddingL <= heardL) heardL -= paddingL;

    const std::uint32_t beforeL = i_current.rawL;
    i_current.rawL += samplesL;
    if (i_current.knownB) {   // as it was cut the first time
        const MediaPacketRow* rowP = Row(i_current.rowL);
        if (rowP == nullptr) return false;
        const std::uint64_t beginL = std::max<std::uint64_t>(beforeL, rowP->leadL);
        const std::uint64_t endL = std::min<std::uint64_t>(i_current.rawL, std::uint64_t{rowP->leadL} + rowP->countL);
        if (beginL >= endL) return false;
        i_current.heardL += static_cast<std::uint32_t>(endL - beginL);
        return Deliver(&frame, beginL - beforeL, endL - beginL, piece);
    }
    if (i_current.heardL == 0) i_current.leadL += leadL;
    i_current.heardL += heardL;
    return heardL > 0 && Deliver(&frame, leadL, heardL, piece);
}

/** The packet is used up. True when there is silence to deliver in its place; called until it is false. */
bool CMediaFrames::CloseRow(MediaPiece& piece) {
    if (!i_current.openB) return false;
    MediaPacketRow* rowP = i_current.knownB ? Row(i_current.rowL) : nullptr;
    if (rowP != nullptr && i_current.failedB &&
        i_current.rawL == 0) {   // heard once a good one follows, as when it was new
        rowP->failedB = true;
        if (i_current.rowL >= i_firstRowL) i_silenceL += rowP->countL - std::min(rowP->countL, i_current.heardL);
        i_current.heardL = rowP->countL;
    }
    while (rowP != nullptr && i_current.heardL < rowP->countL) {
        const auto stepL = std::min(rowP->countL - i_current.heardL, static_cast<std::uint32_t>(kMedia_MostSilence));
        i_current.heardL += stepL;
        if (Deliver(nullptr, 0, stepL, piece)) return true;
    }
    i_current.openB = false;
    if (i_current.failedB) ++i_damagedL;
    if (rowP == nullptr) CloseNewRow();
    return false;
}

void CMediaFrames::CloseNewRow() {
    if (i_current.failedB && i_current.rawL == 0) {
        const std::uint32_t leadL = std::min(i_skipL, i_current.expectedL);
        i_skipL -= leadL;
        i_current.leadL = leadL;
        i_current.heardL = i_current.expectedL - leadL;
        i_silenceL += i_current.heardL;
    } else if (!i_current.failedB) {
        Learn(i_current.rawL);
    }
    MediaPacketRow* rowP = Row(i_current.rowL);
    if (rowP == nullptr) return;
    rowP->leadL = i_current.leadL;
    rowP->countL = i_current.heardL;
    rowP->failedB = i_current.failedB && i_current.rawL == 0;
    if (const MediaPacketRow* beforeP = i_current.rowL > 0 ? Row(i_current.rowL - 1) : nullptr)
        rowP->startL = beforeP->startL + beforeP->countL;
    rowP->countedB = true;
    const std::uint32_t missingL = i_fetchedB ? Missing(*rowP) : 0;
    rowP->countL += missingL;
    i_silenceL += missingL;
}

/** Samples between `before` and i_packetP, which comes next: in FLAC, damage to the head of a packet hides it whole. */
std::uint32_t CMediaFrames::Missing(const MediaPacketRow& before) const {
    const std::int64_t missingL =
        i_packets.TellsStart(*i_packetP) - static_cast<std::int64_t>(before.startL + before.countL);
    return missingL > 0 && missingL <= kMedia_MostMissing ? static_cast<std::uint32_t>(missingL) : 0;
}

void CMediaFrames::DropSilenceAtEnd() {
    auto& rows = i_packets.Rows();
    auto it = rows.rbegin();
    for (; it != rows.rend() && (it->failedB || it->countL == 0); ++it) it->countL = 0;
    const std::uint64_t endL = it == rows.rend() ? i_packets.Begin() : it->startL + it->countL;
    for (auto tail = it.base(); tail != rows.end(); ++tail) tail->startL = endL;
}

void CMediaFrames::Learn(std::uint32_t rawL) {
    if (rawL == 0 || !IsOneLength(i_codecP->codec_id)) return;
    if (i_packetSamplesL != 0 && i_packetSamplesL != rawL) i_variesB = true;
    i_packetSamplesL = rawL;
}

std::uint32_t CMediaFrames::Expected(const AVPacket& packet) const {
    const AVCodecParameters& parameters = i_packets.Parameters();
    const AVRational base = i_packets.TimeBase();
    if (IsOneLength(i_codecP->codec_id)) return i_variesB ? 0 : i_packetSamplesL;
    if (IsPCM(i_codecP->codec_id) && parameters.block_align > 0) return Bounded(packet.size / parameters.block_align);
    if (i_codecP->codec_id == AV_CODEC_ID_OPUS) return OpusSamples(packet);
    if (i_codecP->codec_id == AV_CODEC_ID_FLAC && base.num == 1 && base.den == parameters.sample_rate)
        return Bounded(packet.duration);
    return 0;
}

/** Of i_packetP, which is the packet `rowL` of the table and follows on the one that was asked about last. The lengths
    that demuxers tell are of no use: each page of an Ogg begins with a guess. */
std::uint32_t CMediaFrames::VorbisSamples(std::size_t rowL) {
    const AVCodecParameters& parameters = i_packets.Parameters();
    if (!i_vorbisP)
        i_vorbisP = {av_vorbis_parse_init(parameters.extradata, parameters.extradata_size),
                     [](AVVorbisParseContext* goneP) { av_vorbis_parse_free(&goneP); }};
    i_vorbisRowL = rowL;
    return i_vorbisP ? Bounded(av_vorbis_parse_frame(i_vorbisP.get(), i_packetP->data, i_packetP->size)) : 0;
}

bool CMediaFrames::LearnNext() {
    auto& rows = i_packets.Rows();
    const std::size_t countedL = CountedRows();
    av_packet_unref(i_packetP);
    const bool vorbisB = i_codecP->codec_id == AV_CODEC_ID_VORBIS;
    if (vorbisB && countedL > 0 && i_vorbisRowL != countedL - 1) {   // it knows a packet by the one before
        i_packets.GoTo(countedL - 1);
        if (!Failed(i_packets.Next(*i_packetP))) VorbisSamples(countedL - 1);
        av_packet_unref(i_packetP);
    }
    i_packets.GoTo(countedL);
    if (Failed(i_packets.Next(*i_packetP)) || !i_packets.HasTable()) {
        av_packet_unref(i_packetP);
        return false;
    }
    if (countedL > 0) rows[countedL - 1].countL += Missing(rows[countedL - 1]);
    const std::uint32_t rawL = vorbisB ? VorbisSamples(countedL) : Expected(*i_packetP);
    std::size_t bytesL = 0;
    const std::uint8_t* sideP = av_packet_get_side_data(i_packetP, AV_PKT_DATA_SKIP_SAMPLES, &bytesL);
    const std::uint32_t paddingL = sideP != nullptr && bytesL >= kMedia_SkipBytes ? AV_RL32(sideP + 4) : 0;
    const bool silentB = (i_packetP->flags & AV_PKT_FLAG_DISCARD) != 0;
    av_packet_unref(i_packetP);
    if (rawL == 0) return false;
    MediaPacketRow& row = rows[countedL];
    row.leadL = silentB ? rawL : 0;
    row.countL = silentB || paddingL > rawL ? 0 : rawL - paddingL;
    row.startL = countedL > 0 ? rows[countedL - 1].startL + rows[countedL - 1].countL : 0;
    row.countedB = true;
    return true;
}

std::uint64_t CMediaFrames::Reach(std::uint64_t sample) {
    if (!i_packets.HasTable()) return 0;
    auto& rows = i_packets.Rows();
    const auto reach = [&] {
        const std::size_t countedL = CountedRows();
        return countedL == 0 ? 0 : rows[countedL - 1].startL + rows[countedL - 1].countL;
    };
    if (sample < i_packets.Begin() || (sample > reach() + kMedia_Far && i_packets.MayLand())) {
        i_packets.Land(sample);
        i_firstRowL = 0;
        i_dropL = 0;
        if (!i_packets.HasTable() || Failed(OpenCodec())) return 0;
    }
    // The first packets are decoded in any case: they tell the delay, and how long a packet is.
    for (MediaPiece piece; (CountedRows() < kMedia_FirstPackets || i_skipL > 0) && !Failed(Next(piece));) {
    }
    while (CountedRows() >= kMedia_FirstPackets && i_skipL == 0 && reach() <= sample && LearnNext()) {
    }
    return i_packets.HasTable() ? reach() : 0;
}

std::size_t CMediaFrames::PreRoll() const {
    const AVCodecID id = i_codecP->codec_id;
    return IsPCM(id) || id == AV_CODEC_ID_FLAC || id == AV_CODEC_ID_ALAC ? 0 : kMedia_PreRoll;
}

OSErr CMediaFrames::GoTo(std::uint64_t sample) {
    if (!i_packets.HasTable()) return paramErr;
    auto& rows = i_packets.Rows();
    const auto counted = std::span(rows).first(CountedRows());
    const auto after = std::ranges::upper_bound(counted, sample, {}, &MediaPacketRow::startL);
    const std::size_t rowL = after == counted.begin() ? 0 : static_cast<std::size_t>(after - counted.begin()) - 1;
    i_firstRowL = rowL;
    i_dropL = counted.empty() ? 0 : sample - counted[rowL].startL;
    i_packets.GoTo(rowL - std::min(rowL, PreRoll()));
    return OpenCodec();   // not flushed: some decoders keep a state beyond a flush, and the same place must sound the
                          // same
}

OSErr CMediaFrames::Restart() {
    i_firstRowL = 0;
    i_dropL = 0;
    if (i_packets.HasTable() && i_packets.Begin() == 0) {
        i_packets.GoTo(0);
    } else {   // and as on the first reading, nothing is known of what comes
        i_packetSamplesL = 0;
        i_variesB = false;
        if (const OSErr err = i_packets.Restart(); Failed(err)) return err;
    }
    return OpenCodec();
}
