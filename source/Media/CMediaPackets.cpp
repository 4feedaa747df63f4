#include "Media/CMediaPackets.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <utility>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/intreadwrite.h>
}

namespace {

/** Containers where a packet is one piece of the file (checked on the first few). Not in ADTS, where a tag may lie
    between. */
constexpr std::array<std::string_view, 8> kMedia_InOnePiece = {"ac3", "aiff", "amr", "flac", "mov,mp4,m4a,3gp,3g2,mj2",
                                                               "mp3", "w64",  "wav"};
constexpr std::size_t kMedia_PlacesChecked = 4;
constexpr std::size_t kMedia_PacketOverhead = 640;   // what a held packet takes beside its bytes

/** Of those, where nothing lies between two packets. */
constexpr std::array<std::string_view, 3> kMedia_WithoutGaps = {"ac3", "flac", "mp3"};

/** Before the last packet of a file the demuxer does not find its way everywhere. */
constexpr std::array<std::int64_t, 3> kMedia_StepsBack = {0, 16, 64};

using PacketKeeper = std::unique_ptr<AVPacket, void (*)(AVPacket*)>;
PacketKeeper NewPacket() {
    return {av_packet_alloc(), [](AVPacket* goneP) { av_packet_free(&goneP); }};
}

std::shared_ptr<AVPacket> Clone(const AVPacket& packet) {
    AVPacket* cloneP = av_packet_clone(&packet);
    if (cloneP == nullptr) return nullptr;
    return {cloneP, [](AVPacket* goneP) { av_packet_free(&goneP); }};
}

/** Samples of every packet but the last; 0 where they differ, or in another codec.
    Source  RFC 9639, 8.2: a stream's least and most come first. */
std::int64_t FlacBlock(const AVCodecParameters& parameters) {
    if (parameters.codec_id != AV_CODEC_ID_FLAC || parameters.extradata_size < 34) return 0;
    const std::int64_t leastL = AV_RB16(parameters.extradata), mostL = AV_RB16(parameters.extradata + 2);
    return leastL == mostL ? leastL : 0;
}

}   // namespace

OSErr CMediaPackets::Open(CByteSource& source, std::string_view extension) {
    return BeginTable(i_format.Open(source, extension));
}

OSErr CMediaPackets::Restart() { return BeginTable(i_format.Restart()); }

OSErr CMediaPackets::BeginTable(OSErr opened) {
    i_rows.clear();
    i_positionL = i_heldL = 0;
    i_lastP = nullptr;
    i_placesB = !Failed(opened) && std::ranges::find(kMedia_InOnePiece, Container()) != kMedia_InOnePiece.end();
    i_withoutGapsB = std::ranges::find(kMedia_WithoutGaps, Container()) != kMedia_WithoutGaps.end();
    return opened;
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
    if (const OSErr err = i_format.Next(packet); Failed(err)) return err;
    Note(packet);
    ++i_positionL;
    return noErr;
}

/** Packets count their samples, from the first one of the file to the last. */
bool CMediaPackets::TellsSamples() const {
    if (i_format.Stream() == nullptr || Container() != "flac") return false;
    const AVStream& stream = *i_format.Stream();
    return FlacBlock(*stream.codecpar) > 0 && stream.time_base.num == 1 &&
           stream.time_base.den == stream.codecpar->sample_rate && stream.start_time == 0 && stream.duration > 0;
}

bool CMediaPackets::MayLand() const {
    return i_landing != Landing::kNever && i_tableB && TellsSamples() && i_format.Bytes().IsNearEverywhere();
}

std::int64_t CMediaPackets::TellsStart(const AVPacket& packet) const {
    if (packet.pts < 0 || !TellsSamples()) return -1;
    const AVStream& stream = *i_format.Stream();
    return packet.pts < stream.duration && packet.pts % FlacBlock(*stream.codecpar) == 0 ? packet.pts : -1;
}

void CMediaPackets::Land(std::uint64_t sample) {
    if (i_landing == Landing::kUntried) i_landing = EndsAsTold() ? Landing::kExact : Landing::kNever;
    if (i_landing == Landing::kExact && SendTo(sample)) return;
    i_landing = Landing::kNever;
    if (Failed(Restart())) DropTable();
}

void CMediaPackets::StopLanding() {
    i_landing = Landing::kNever;
    if (i_tableB && Begin() > 0 && Failed(Restart())) DropTable();
}

/** Two files that were joined number their frames twice, a file that was cut off has lost some. */
bool CMediaPackets::EndsAsTold() {
    const auto told = i_format.Stream()->duration;
    const PacketKeeper packetP = NewPacket();
    if (!packetP || !SendTo(static_cast<std::uint64_t>(told))) return false;
    auto end = static_cast<std::int64_t>(i_rows.back().startL + i_rows.back().countL);
    for (std::int64_t leftL = kMedia_StepsBack.back(); leftL > 0 && !Failed(ReadFromFile(*packetP)); --leftL) {
        end = packetP->pts + packetP->duration;
        av_packet_unref(packetP.get());
    }
    return i_format.IsAtEnd() && end == told;
}

/** False: the demuxer stands anywhere. */
bool CMediaPackets::SendTo(std::uint64_t sample) {
    const AVStream& stream = *i_format.Stream();
    const auto target = static_cast<std::int64_t>(std::min(sample, static_cast<std::uint64_t>(stream.duration) - 1));
    const std::int64_t blockL = FlacBlock(*stream.codecpar);
    i_format.ForgetEnd();
    const auto isThere = [&](std::int64_t back) {
        return av_seek_frame(i_format.Format(), stream.index, std::max<std::int64_t>(target - back * blockL, 0),
                             AVSEEK_FLAG_BACKWARD) >= 0;
    };
    if (std::ranges::none_of(kMedia_StepsBack, isThere) || Failed(BeginTable(noErr))) return false;
    const PacketKeeper packetP = NewPacket();
    if (!packetP) return false;
    std::int64_t next = -1;
    while (i_rows.size() < kMedia_PlacesChecked) {
        const OSErr err = ReadFromFile(*packetP);
        if (err == eofErr && next >= 0) break;
        if (Failed(err) || !i_tableB) return false;
        const std::int64_t at = packetP->pts, countL = packetP->duration;
        av_packet_unref(packetP.get());
        const bool followsB = next < 0 ? at >= 0 && at <= target && at % blockL == 0 : at == next;
        if (!followsB || countL <= 0 || countL > blockL) return false;
        MediaPacketRow& row = i_rows.back();
        row.startL = static_cast<std::uint64_t>(at);
        row.countL = static_cast<std::uint32_t>(countL);
        row.countedB = true;
        next = at + countL;
    }
    i_positionL = 0;
    return true;
}

bool CMediaPackets::LiesThere(const AVPacket& packet) {
    if (packet.pos < 0) return false;
    std::vector<std::byte> there(static_cast<std::size_t>(packet.size));
    if (Failed(i_format.Bytes().ReadAt(static_cast<std::uint64_t>(packet.pos), there))) return false;
    return std::memcmp(there.data(), packet.data, there.size()) == 0;
}

void CMediaPackets::Note(const AVPacket& packet) {
    if (!i_tableB) return;
    MediaPacketRow row;
    row.sizeL = static_cast<std::uint32_t>(packet.size);
    row.toldL = static_cast<std::uint32_t>(std::clamp<std::int64_t>(packet.duration, 0, INT32_MAX));
    NotePlace(packet, row);
    if (row.placeL < 0 && !Hold(packet, row)) return DropTable();
    if (i_tableB && i_rows.size() >= kMediaPackets_MostRows) return DropTable();
    if (i_tableB) i_rows.push_back(std::move(row));
}

/** Sets `placeL` where the packet lies there; drops the table when the row before is nowhere. */
void CMediaPackets::NotePlace(const AVPacket& packet, MediaPacketRow& row) {
    if (i_placesB && (packet.pos < 0 || (i_rows.size() < kMedia_PlacesChecked && !LiesThere(packet))))
        i_placesB = false;
    bool thereB = i_placesB && packet.side_data_elems == 0;   // what stands beside the bytes is in no place of the file
    const std::shared_ptr<AVPacket> beforeP = std::exchange(i_lastP, nullptr);
    if (i_placesB && i_withoutGapsB) {
        i_lastP = Clone(packet);
        if (beforeP && packet.pos != beforeP->pos + beforeP->size) {   // a parser has left something out, but where?
            thereB = thereB && LiesThere(packet);
            if (!LiesThere(*beforeP) && !i_rows.back().heldP && !Hold(*beforeP, i_rows.back())) return DropTable();
        }
    }
    if (thereB) row.placeL = packet.pos;
}

bool CMediaPackets::Hold(const AVPacket& packet, MediaPacketRow& row) {
    row.placeL = -1;
    row.heldP = Clone(packet);
    i_heldL += row.sizeL + kMedia_PacketOverhead;
    return row.heldP != nullptr && i_heldL <= kMediaPackets_MostHeld;
}

void CMediaPackets::DropTable() {
    i_tableB = false;
    i_rows = {};
    i_lastP = nullptr;
}

OSErr CMediaPackets::ReadFromTable(const MediaPacketRow& row, AVPacket& packet) {
    if (row.heldP) return av_packet_ref(&packet, row.heldP.get()) < 0 ? memFullErr : noErr;
    if (av_new_packet(&packet, static_cast<int>(row.sizeL)) < 0) return memFullErr;
    packet.duration = row.toldL;
    const OSErr err = i_format.Bytes().ReadAt(static_cast<std::uint64_t>(row.placeL),
                                              std::as_writable_bytes(std::span(packet.data, row.sizeL)));
    if (Failed(err)) av_packet_unref(&packet);
    return err;
}

const AVCodecParameters& CMediaPackets::Parameters() const { return *i_format.Stream()->codecpar; }
AVRational CMediaPackets::TimeBase() const { return i_format.Stream()->time_base; }
