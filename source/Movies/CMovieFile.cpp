#include "Movies/CMovieFile.h"

#include <cmath>
#include <limits>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/common.h>
#include <libavutil/display.h>
}

namespace {

constexpr double kMovie_MostRate = 1000;   // pictures a second; more is a damaged header
constexpr double kMovie_MostShape = 10;
constexpr double kMovie_JointBackT = 1, kMovie_JointAheadT = 10;
/** Fewer bytes than any sound takes: where pictures pause and the sound goes on, more lies between them. */
constexpr double kMovie_SparseBytesPerSecond = 1000;

double StartOf(const AVStream& stream) {
    return stream.start_time == AV_NOPTS_VALUE ? kMovie_NoTime
                                               : static_cast<double>(stream.start_time) * av_q2d(stream.time_base);
}

bool CanBeJoined(const CMediaFormat& format) {
    return format.Format() != nullptr && (format.Format()->iformat->flags & AVFMT_TS_DISCONT) != 0;
}

}   // namespace

void AVFrameFree::operator()(AVFrame* frameP) const noexcept { av_frame_free(&frameP); }
void AVPacketFree::operator()(AVPacket* packetP) const noexcept { av_packet_free(&packetP); }

OSErr CMovieFile::Open(CByteSource& source, std::string_view extension) {
    if (const OSErr err = i_format.Open(source, extension); Failed(err)) return err;
    // The very stream that the song's sound is read from.
    i_soundB = av_find_best_stream(i_format.Format(), AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0) >= 0;
    double originT = i_format.SoundStart();
    if (std::isnan(originT)) originT = StartOf(*i_format.Stream());
    i_originT = std::isnan(originT) ? 0 : originT;
    return noErr;
}

OSErr CMovieFile::Next(AVPacket& packet) {
    const OSErr err = i_format.Next(packet);
    if (err == eofErr && i_fromStartB) i_readThroughB = true;
    if (Failed(err)) return err;
    FindJoint(packet);
    if (i_shift == 0) return noErr;
    for (std::int64_t* const timeP : {&packet.pts, &packet.dts})
        if (*timeP != AV_NOPTS_VALUE) *timeP = av_sat_add64(*timeP, i_shift);
    return noErr;
}

void CMovieFile::FindJoint(const AVPacket& packet) {
    if (packet.dts == AV_NOPTS_VALUE || !CanBeJoined(i_format)) return;
    const bool knownB = i_lastPlace >= 0 && packet.pos >= 0;
    const double stepT = SecondsOf(1) * static_cast<double>(av_sat_sub64(packet.dts, i_lastDecodeTime));
    const double bytes = static_cast<double>(packet.pos - i_lastPlace);
    const bool aheadB = i_soundB && stepT > kMovie_JointAheadT && bytes < stepT * kMovie_SparseBytesPerSecond;
    if (knownB && (aheadB || stepT < -kMovie_JointBackT)) {
        const double rate = FrameRate();
        const auto frame = static_cast<std::int64_t>(std::llround((rate > 0 ? 1 / rate : 0.04) / SecondsOf(1)));
        i_shift = av_sat_add64(i_shift, av_sat_sub64(av_sat_add64(i_lastDecodeTime, frame), packet.dts));
        i_joinedB = true;
    }
    i_lastDecodeTime = packet.dts;
    if (packet.pos >= 0) i_lastPlace = packet.pos;
}

bool CMovieFile::MayBeJoined() const { return !i_joinedB && !i_readThroughB && CanBeJoined(i_format); }

OSErr CMovieFile::Restart() {
    i_fromStartB = true;
    i_shift = 0;
    i_lastPlace = -1;
    return i_format.Restart();
}

OSErr CMovieFile::GoTo(double seconds) {
    if (i_joinedB) return paramErr;
    i_fromStartB = false;
    i_lastPlace = -1;
    i_format.ForgetEnd();
    const AVRational base = TimeBase();
    const double stamp = (seconds + i_originT) * base.den / base.num;
    if (!(std::abs(stamp) < 1e18)) return paramErr;
    const int result = av_seek_frame(i_format.Format(), i_format.Stream()->index, std::llround(std::floor(stamp)),
                                     AVSEEK_FLAG_BACKWARD);
    if (IsAborted()) return abortErr;
    return result < 0 ? paramErr : noErr;
}

double CMovieFile::TimeOf(std::int64_t stamp) const {
    return stamp == AV_NOPTS_VALUE ? kMovie_NoTime : static_cast<double>(stamp) * av_q2d(TimeBase()) - i_originT;
}

double CMovieFile::TimeOf(const AVPacket& packet) const {
    return TimeOf(packet.pts != AV_NOPTS_VALUE ? packet.pts : packet.dts);
}

double CMovieFile::SecondsOf(std::int64_t duration) const {
    return duration > 0 ? static_cast<double>(duration) * av_q2d(TimeBase()) : 0;
}

const AVCodecParameters& CMovieFile::Parameters() const { return *i_format.Stream()->codecpar; }
AVRational CMovieFile::TimeBase() const { return i_format.Stream()->time_base; }

double CMovieFile::FrameRate() const {
    for (const AVRational rate : {i_format.Stream()->avg_frame_rate, i_format.Stream()->r_frame_rate})
        if (rate.num > 0 && rate.den > 0 && av_q2d(rate) < kMovie_MostRate) return av_q2d(rate);
    return 0;
}

double CMovieFile::Seconds() const {
    const double lengthT = i_format.Seconds();
    if (!(lengthT > 0)) return 0;
    const double startT = StartOf(*i_format.Stream());
    return std::max(0.0, lengthT + (std::isnan(startT) ? 0 : startT - i_originT));
}

double CMovieFile::PixelShape(const AVFrame& frame) {
    // The library only reads the frame.
    const AVRational shape =
        av_guess_sample_aspect_ratio(i_format.Format(), i_format.Stream(), const_cast<AVFrame*>(&frame));
    const double ratio = shape.num > 0 && shape.den > 0 ? av_q2d(shape) : 1;
    return ratio > kMovie_MostShape || ratio < 1 / kMovie_MostShape ? 1 : ratio;
}

const std::int32_t* CMovieFile::DisplayMatrix() const {
    std::size_t bytesL = 0;
    const std::uint8_t* dataP = av_stream_get_side_data(i_format.Stream(), AV_PKT_DATA_DISPLAYMATRIX, &bytesL);
    return dataP != nullptr && bytesL >= 9 * sizeof(std::int32_t) ? reinterpret_cast<const std::int32_t*>(dataP)
                                                                  : nullptr;
}
