#include "Audio/CMediaPackets.h"

#include <algorithm>
#include <array>
#include <cstring>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

/** Containers where a packet is one piece of the file (checked on the first few). Not in ADTS, where a tag may lie
 * between. */
constexpr std::array<std::string_view, 8> kMedia_InOnePiece = {"ac3", "aiff", "amr", "flac", "mov,mp4,m4a,3gp,3g2,mj2",
                                                               "mp3", "w64",  "wav"};
constexpr std::size_t kMedia_PlacesChecked = 4;
constexpr std::size_t kMedia_PacketOverhead = 640;   // what a held packet takes beside its bytes

}   // namespace

OSErr CMediaPackets::Open(CByteSource& source, std::string_view extension) {
    return Begin(i_format.Open(source, extension));
}

OSErr CMediaPackets::Restart() {
    i_rows.clear();
    i_positionL = i_heldL = 0;
    return Begin(i_format.Restart());
}

OSErr CMediaPackets::Begin(OSErr opened) {
    i_placesB = !Failed(opened) && std::ranges::find(kMedia_InOnePiece, Container()) != kMedia_InOnePiece.end();
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

bool CMediaPackets::LiesThere(const AVPacket& packet) {
    if (packet.pos < 0) return false;
    std::vector<std::byte> there(static_cast<std::size_t>(packet.size));
    if (Failed(i_format.Bytes().ReadAt(static_cast<std::uint64_t>(packet.pos), there))) return false;
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
    const OSErr err = i_format.Bytes().ReadAt(static_cast<std::uint64_t>(row.placeL),
                                              std::as_writable_bytes(std::span(packet.data, row.sizeL)));
    if (Failed(err)) av_packet_unref(&packet);
    return err;
}

const AVCodecParameters& CMediaPackets::Parameters() const { return *i_format.Stream()->codecpar; }
AVRational CMediaPackets::TimeBase() const { return i_format.Stream()->time_base; }
