#include "Media/MediaLength.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "Media/MP3Length.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

constexpr double kUnits_Second = 300;
constexpr double kLongest_T = 24 * 3600;
constexpr double kFewestBytes_Second = 100;              // less than any codec, silence too
constexpr std::uint64_t kPacketWalk_Most = 256U << 20;   // bytes of a stream that is gone through
constexpr std::size_t kWalk_Proof = 4;                   // packets at its front without a gap
constexpr std::array<std::string_view, 7> kWithoutContainer = {"aac", "ac3", "eac3", "dts", "amr", "amrnb", "amrwb"};

constexpr std::size_t kPacket_Bytes = 24, kPackets_Looked = 4096;
constexpr unsigned kCommand_CDG = 9, kCommand_Mask = 0x3F;

OSErr ToUnits(double seconds, std::uint64_t bytesL, std::uint32_t& length300) {
    const double units = std::round(seconds * kUnits_Second);
    if (!(units >= 1) || seconds > kLongest_T || seconds * kFewestBytes_Second > static_cast<double>(bytesL))
        return paramErr;
    length300 = static_cast<std::uint32_t>(units);
    return noErr;
}

/** The packets of a file that is nothing but packets: they lie one behind the other, or it is no such file. */
OSErr CountPackets(CMediaFormat& format, double& seconds) {
    struct FreePacket {
        void operator()(AVPacket* packetP) const { av_packet_free(&packetP); }
    };
    const std::unique_ptr<AVPacket, FreePacket> packetP(av_packet_alloc());
    if (!packetP) return memFullErr;
    if (format.Bytes().Size() > kPacketWalk_Most) return paramErr;
    std::int64_t durationL = 0, nextL = -1;
    std::size_t packetsL = 0;
    std::uint64_t gapsL = 0;
    OSErr err = noErr;
    while (!Failed(err = format.Next(*packetP))) {
        if (nextL >= 0 && packetP->pos != nextL) ++gapsL;
        nextL = packetP->pos < 0 ? -1 : packetP->pos + packetP->size;
        durationL += packetP->duration;
        ++packetsL;
        av_packet_unref(packetP.get());
        if (packetsL <= kWalk_Proof && gapsL > 0) return paramErr;
    }
    if (err != eofErr) return err;
    if (packetsL < 2 || gapsL > packetsL / 8) return paramErr;
    seconds = static_cast<double>(durationL) * av_q2d(format.Stream()->time_base);
    return noErr;
}

OSErr LengthOfMP3(CByteSource& source, std::uint32_t& length300) {
    MP3Length mp3;
    const OSErr err = MP3Length::Find(source, mp3);
    return Failed(err) ? err : ToUnits(static_cast<double>(mp3.samplesL) / mp3.rateL, source.Size(), length300);
}

OSErr LengthInContainer(CByteSource& source, std::string_view extension, MediaKind kind, std::uint32_t& length300) {
    CMediaFormat format(kind, MediaUse::kLength);
    if (const OSErr err = format.Open(source, extension); Failed(err)) return err;
    if (!format.EndOpening()) return paramErr;
    if (format.TellsSeconds()) return ToUnits(format.Seconds(), source.Size(), length300);
    if (std::ranges::find(kWithoutContainer, format.Container()) == kWithoutContainer.end()) return paramErr;
    double seconds = 0;
    if (const OSErr err = CountPackets(format, seconds); Failed(err)) return err;
    return ToUnits(seconds, source.Size(), length300);
}

}   // namespace

OSErr FindMediaLength(CByteSource& source, std::string_view extension, MediaKind kind, std::uint32_t& length300) {
    if (kind == MediaKind::kPicture) return LengthInContainer(source, extension, kind, length300);
    // Each is tried, the likelier one first: names lie.
    const bool mp3B = extension == "mp3" || extension == "mp2";
    const OSErr first = mp3B ? LengthOfMP3(source, length300) : LengthInContainer(source, extension, kind, length300);
    if (first != paramErr) return first;
    if (const OSErr err = source.Seek(0); Failed(err)) return err;
    return mp3B ? LengthInContainer(source, extension, kind, length300) : LengthOfMP3(source, length300);
}

OSErr FindGraphicsLength(CByteSource& source, std::uint32_t& length300) {
    std::vector<std::byte> bytes(std::min<std::uint64_t>(source.Size(), kPackets_Looked * kPacket_Bytes));
    std::size_t gotL = 0;
    if (const OSErr err = source.Read(bytes, gotL); Failed(err) && err != eofErr) return err;
    std::size_t packetsL = 0, knownL = 0;
    for (std::size_t at = 0; at + kPacket_Bytes <= gotL; at += kPacket_Bytes, ++packetsL) {
        const unsigned command = std::to_integer<unsigned>(bytes[at]) & kCommand_Mask;
        if (command == 0 || command == kCommand_CDG) ++knownL;
    }
    if (packetsL == 0 || knownL < packetsL / 2) return paramErr;
    return ToUnits(static_cast<double>(source.Size() / kPacket_Bytes) / kUnits_Second, source.Size(), length300);
}
