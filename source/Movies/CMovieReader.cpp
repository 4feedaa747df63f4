#include "Movies/CMovieReader.h"

#include <array>
#include <cmath>
#include <limits>

#include "Movies/MovieOrientation.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/frame.h>
}

namespace {

constexpr double kMovie_DefaultFrameT = 1.0 / 25;
/** Pictures that are needed after a key picture before all come out right where later ones are referred to: as many as
    a decoder may hold back. */
constexpr int kMovie_RunIn = 16;
/** How far ahead of the place a second, third ... try begins. */
constexpr std::array kMovie_StepsBackT = {0.0, 1.0, 10.0, 60.0};
constexpr double kMovie_NearT = 1.0;   // so far ahead it is decoded through, without a jump
constexpr double kMovie_PreviewT = 0.5;
/** What is gathered of a stretch without a key picture before it is decoded through. */
constexpr std::size_t kMovie_MostGathered = 4096, kMovie_MostGatheredBytes = 16U << 20;
constexpr double kMovie_MostStillT = 24 * 3600;
/** Of Decode, and nobody's else: the hardware has failed, and the decoder that took over must begin at a key picture. */
constexpr OSErr kMovie_BeginAgain = queueNotDoneErr;

bool IsKey(const AVPacket& packet) { return (packet.flags & AV_PKT_FLAG_KEY) != 0; }

}   // namespace

CMovieReader::CMovieReader() = default;

OSErr CMovieReader::OpenDecoder(bool hardwareB) {
    return i_decoder.Open(i_file.Parameters(), i_file.TimeBase(), hardwareB);
}

OSErr CMovieReader::Open(CByteSource& source, std::string_view extension, bool hardwareB) {
    if (const OSErr err = i_file.Open(source, extension); Failed(err)) return err;
    if (const OSErr err = OpenDecoder(hardwareB); Failed(err)) return err;
    const double rate = i_file.FrameRate();
    i_frameT = rate > 0 ? 1 / rate : kMovie_DefaultFrameT;
    Forget();
    MovieFrame first;
    OSErr err = Decode(first);
    if (err == kMovie_BeginAgain) err = Resume(first);
    i_file.EndOpening();
    if (Failed(err)) return err == eofErr ? paramErr : err;

    const AVFrame& frame = *first.frameP;
    const PictureSize shown =
        ShownSize(frame.width, frame.height, i_file.PixelShape(frame), OrientationOf(i_file.DisplayMatrix()));
    i_facts = {.container = i_file.Container(),
               .codec = avcodec_get_name(i_file.Parameters().codec_id),
               .width = shown.width,
               .height = shown.height,
               .frameRate = rate,
               .seconds = i_file.Seconds(),
               .soundB = i_file.HasSound(),
               .hardwareB = i_decoder.IsHardware()};
    i_ready.push_back(std::move(first));
    return noErr;
}

void CMovieReader::Forget() {
    i_packets.clear();
    i_ready.clear();
    i_lastT = i_fedT = kMovie_NoTime;
    i_drainedB = false;
    i_endErr = eofErr;
}

OSErr CMovieReader::Next(MovieFrame& frame) {
    const OSErr err = NextDecoded(frame);
    return err == kMovie_BeginAgain ? Resume(frame) : err;
}

OSErr CMovieReader::NextDecoded(MovieFrame& frame) {
    if (i_ready.empty()) return Decode(frame);
    frame = std::move(i_ready.front());
    i_ready.pop_front();
    return noErr;
}

/** The hardware has failed: the other decoder goes the way from the key picture before, and on from the last picture
    that came out, so that none is lost. */
OSErr CMovieReader::Resume(MovieFrame& frame) {
    const double lastT = i_lastT;
    if (std::isnan(lastT)) {   // before the first one
        if (const OSErr err = i_file.Restart(); Failed(err)) return err;
        Forget();
        i_decoder.Flush();
        return Decode(frame);
    }
    const MovieHurry hurry = i_hurry;
    i_lastT = kMovie_NoTime;   // the place where it stands is none for this decoder
    if (const OSErr err = Seek(lastT); Failed(err)) return err;
    SetHurry(hurry);
    for (;;) {
        if (const OSErr err = NextDecoded(frame); Failed(err)) return err;
        if (frame.timeT > lastT) return noErr;
    }
}

OSErr CMovieReader::FetchPacket(AVPacketPtr& packetP) {
    packetP.reset(av_packet_alloc());
    return packetP ? i_file.Next(*packetP) : memFullErr;
}

/** One packet into the decoder. At the end of the file: the word that no more will come. */
OSErr CMovieReader::Feed() {
    if (i_packets.empty()) {
        AVPacketPtr packetP;
        const OSErr err = FetchPacket(packetP);
        if (err == abortErr || err == memFullErr) return err;
        if (Failed(err)) {
            if (i_drainedB) return eofErr;
            i_endErr = err;
            i_drainedB = i_decoder.Send(nullptr);
            return noErr;
        }
        i_packets.push_back(std::move(packetP));
    }
    const AVPacket& packet = *i_packets.front();
    const bool hastyB = i_hurry == MovieHurry::kSkipUnreferenced || i_file.TimeOf(packet.pts) < i_keepT;
    i_decoder.SetHurry(hastyB ? MovieHurry::kSkipUnreferenced : MovieHurry::kNone);
    if (std::isnan(i_fedT) && IsKey(packet)) i_fedT = i_file.TimeOf(packet);
    if (i_decoder.Send(&packet)) i_packets.pop_front();
    return noErr;
}

/** On the way to `seconds` only the picture that is shown there counts, and what it is made from. Its time stands in
    the packets, where the file tells times of showing. */
void CMovieReader::KeepFrom(double seconds) {
    double keepT = -HUGE_VAL;
    for (const AVPacketPtr& packetP : i_packets) {
        const double timeT = i_file.TimeOf(packetP->pts);
        if (std::isnan(timeT)) return;
        if (timeT <= seconds) keepT = std::max(keepT, timeT);
    }
    i_keepT = keepT;
}

void CMovieReader::Stamp(MovieFrame& frame) {
    const AVFrame& picture = *frame.frameP;
    const std::int64_t stamp =
        picture.best_effort_timestamp != AV_NOPTS_VALUE ? picture.best_effort_timestamp : picture.pkt_dts;
    double timeT = i_file.TimeOf(stamp);
    // Two pictures at one time, or a step back, are damage: each picture has its turn.
    if (std::isnan(timeT)) timeT = !std::isnan(i_lastT) ? i_lastT + i_frameT : std::isnan(i_fedT) ? 0 : i_fedT;
    if (timeT <= i_lastT) timeT = i_lastT + i_frameT;
    frame.timeT = i_lastT = timeT;
    const double lengthT = i_file.SecondsOf(picture.pkt_duration);
    frame.endT = timeT + (lengthT > 0 && lengthT < kMovie_MostStillT ? lengthT : i_frameT);
}

OSErr CMovieReader::Decode(MovieFrame& frame) {
    for (;;) {
        if (IsAborted()) return abortErr;
        const OSErr err = i_decoder.Receive(frame.frameP);
        if (!Failed(err)) {
            if (frame.frameP->width <= 0 || frame.frameP->height <= 0) continue;
            Stamp(frame);
            return noErr;
        }
        if (err == eofErr) return i_endErr;
        if (err == ioErr) {   // the hardware; the other decoder must begin at a key picture: the caller's part
            if (const OSErr again = OpenDecoder(false); Failed(again)) return again;
            i_facts.hardwareB = false;
            return kMovie_BeginAgain;
        }
        if (err != queueNotDoneErr) return err;
        if (const OSErr fed = Feed(); Failed(fed)) return fed;
    }
}

OSErr CMovieReader::Begin(double fromT) {
    OSErr err = i_file.GoTo(fromT);
    i_atStartB = false;
    if (err == paramErr) {   // no way there: from the start
        err = i_file.Restart();
        i_atStartB = true;
    }
    Forget();
    i_decoder.Flush();
    return err;
}

/** Reads up to `seconds` and forgets what lies before the last key packet up to `keyT`. */
OSErr CMovieReader::GatherTo(double seconds, double keyT, const Cancelled& cancelled) {
    std::size_t bytesL = 0;
    for (;;) {
        if (cancelled && cancelled()) return abortErr;
        AVPacketPtr packetP;
        const OSErr err = FetchPacket(packetP);
        if (err == abortErr || err == memFullErr) return err;
        if (Failed(err)) return noErr;   // the end is told again
        const double timeT = i_file.TimeOf(*packetP);
        if (IsKey(*packetP) && timeT <= keyT && !i_packets.empty()) {
            i_packets.clear();
            i_fedT = kMovie_NoTime;
            i_decoder.Flush();   // it must not take what follows for the continuation of what it has
            bytesL = 0;
            i_atStartB = false;
        }
        bytesL += static_cast<std::size_t>(packetP->size);
        const double decodedT = i_file.TimeOf(packetP->dts);
        i_packets.push_back(std::move(packetP));
        if (std::isnan(decodedT) ? timeT > seconds : decodedT > seconds) return noErr;
        if (i_packets.size() >= kMovie_MostGathered || bytesL >= kMovie_MostGatheredBytes) return noErr;
    }
}

/** Decodes up to the picture at `seconds`, which is the first of i_ready then. eofErr: the way began behind it. */
OSErr CMovieReader::DecodeTo(double seconds, double keyT, const Cancelled& cancelled, const Preview& preview) {
    MovieFrame before;
    for (bool firstB = true;; firstB = false) {
        if (cancelled && cancelled()) return abortErr;
        if (i_ready.empty() && i_packets.empty()) {   // a key picture may come closer on the way
            if (const OSErr err = GatherTo(seconds, keyT, cancelled); Failed(err)) return err;
            KeepFrom(seconds);
        }
        MovieFrame frame;
        const OSErr err = NextDecoded(frame);
        if (err == abortErr || err == memFullErr || err == kMovie_BeginAgain) return err;
        const bool behindB = !Failed(err) && frame.timeT > seconds;
        if (Failed(err) || behindB) {
            if (!before.frameP && !i_atStartB) return eofErr;
            if (behindB) i_ready.push_front(std::move(frame));
            if (before.frameP) i_ready.push_front(std::move(before));   // at the end of the file: what was last stays
            return noErr;
        }
        if (firstB && preview && seconds - frame.timeT > kMovie_PreviewT) preview(frame);
        before = std::move(frame);
    }
}

OSErr CMovieReader::Seek(double seconds, const Cancelled& cancelled, const Preview& preview) {
    SetHurry(MovieHurry::kNone);
    const OSErr err = GoAndDecode(seconds, cancelled, preview);
    i_keepT = -HUGE_VAL;
    return err;
}

OSErr CMovieReader::GoAndDecodeFrom(double fromT, double seconds, const Cancelled& cancelled, const Preview& preview) {
    const OSErr err = Begin(fromT);
    return Failed(err) ? err : DecodeTo(seconds, fromT, cancelled, preview);
}

/** It came to the end of the file before the place: where two recordings were joined, times may have begun anew. */
bool CMovieReader::EndsTooSoon(double seconds) const {
    return i_drainedB && i_ready.size() == 1 && i_ready.front().timeT + kMovie_NearT < seconds && i_file.MayBeJoined();
}

OSErr CMovieReader::GoAndDecode(double seconds, const Cancelled& cancelled, const Preview& preview) {
    OSErr err = eofErr;
    // A way back may have failed with the disc, which may have come back.
    if (!i_file.IsOpen()) {
        if (err = i_file.Restart(); Failed(err)) return err;
        Forget();
        i_decoder.Flush();
    }
    const double hereT = i_ready.empty() ? i_lastT : i_ready.front().timeT;
    if (hereT <= seconds && seconds - hereT < kMovie_NearT && !i_drainedB) {
        i_atStartB = false;
        err = DecodeTo(seconds, hereT, cancelled, {});
        if (err != eofErr && err != kMovie_BeginAgain) return err;
    }
    const double runInT = i_file.Parameters().video_delay > 0 ? kMovie_RunIn * i_frameT : 0;
    for (const double stepT : kMovie_StepsBackT) {
        const double keyT = std::max(0.0, seconds - stepT - runInT);
        err = GoAndDecodeFrom(keyT, seconds, cancelled, preview);
        if (err == kMovie_BeginAgain)
            err = GoAndDecodeFrom(keyT, seconds, cancelled, preview);   // by the other decoder
        if (!Failed(err) && EndsTooSoon(seconds)) break;
        if (err != eofErr) return err;
        if (keyT == 0) break;
    }
    do {
        if (err = i_file.Restart(); Failed(err)) return err;
        Forget();
        i_decoder.Flush();
        i_atStartB = true;
        err = DecodeTo(seconds, seconds - kMovie_StepsBackT.back() - runInT, cancelled, preview);
    } while (err == kMovie_BeginAgain);   // the other decoder does not say so
    return err;
}
