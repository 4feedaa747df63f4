#include "Media/CMediaAudio.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numeric>
#include <vector>

#include "Media/CMediaFrames.h"
#include "Media/CMediaPackets.h"
#include "Media/CMediaResampler.h"
#include "Media/SpoolUnits.h"

extern "C" {
#include <libavcodec/avcodec.h>
}

namespace {
constexpr std::uint64_t kMedia_FilterTaps = 64;   // more than the resampler's filter, at its own rate
constexpr std::uint64_t kMedia_Near = kSamplesPerSecond / 4;
}   // namespace

class CMediaAudio::Decoder {
public:
    OSErr Open(CByteSource& source, std::string_view extension) {
        if (const OSErr err = i_packets.Open(source, extension); Failed(err)) return err;
        if (const OSErr err = i_frames.Open(); Failed(err)) return err;
        const AVCodecContext& codec = i_frames.Codec();
        i_facts = {.container = i_packets.Container(),
                   .codec = codec.codec->name,
                   .channels = codec.ch_layout.nb_channels,
                   .rate = codec.sample_rate,
                   .seconds = i_packets.Seconds()};
        i_totalL = static_cast<std::uint64_t>(std::llround(std::clamp(i_facts.seconds, 0.0, 1e8) * kSamplesPerSecond));
        // The first sound is the proof that it can be played; it stays for the first Read.
        OSErr err = FillPending();
        if (!i_packets.EndOpening() && err == eofErr) err = paramErr;
        i_openB = !Failed(err) || err == eofErr;
        if (i_frames.Codec().sample_rate > 0) i_facts.rate = i_frames.Codec().sample_rate;
        return i_openB ? noErr : err;
    }

    OSErr Read(std::span<std::int16_t> to, std::size_t& gotL) {
        gotL = 0;
        if (!i_openB) return paramErr;
        if (i_packets.IsAborted()) return abortErr;
        to = to.first(to.size() / 2 * 2);
        while (gotL < to.size()) {
            if (i_pendingAtL == i_pending.size()) {
                const OSErr err = FillPending();
                if (err == abortErr || (Failed(err) && gotL == 0)) return err;
                if (Failed(err)) break;   // told by the next Read
                continue;
            }
            const std::size_t takeL = std::min(to.size() - gotL, i_pending.size() - i_pendingAtL);
            std::memcpy(to.data() + gotL, i_pending.data() + i_pendingAtL, takeL * sizeof(std::int16_t));
            i_pendingAtL += takeL;
            gotL += takeL;
            i_posL += takeL / 2;
        }
        return noErr;
    }

    OSErr Seek(std::uint64_t frame) {
        if (!i_openB) return paramErr;
        if (i_packets.IsAborted()) return abortErr;
        if (i_exactB) frame = std::min(frame, i_totalL);
        if (frame < i_posL || frame - i_posL > kMedia_Near) {
            if (const OSErr err = Jump(frame); Failed(err)) return err;
        }
        OSErr err = SkipTo(frame);
        if (!Failed(err) && !i_landedB && FillPending() == abortErr) return abortErr;   // the next Read tells the rest
        if (!Failed(err) && i_endB && !i_landedB && i_endErr == eofErr) {   // in damaged packets, which are no end
            i_packets.StopLanding();
            err = Jump(frame);
            if (!Failed(err)) err = SkipTo(frame);
            if (!Failed(err) && i_endB && !i_landedB) KnowTotal();   // there is no sound in it at all
        }
        return err;
    }

    [[nodiscard]] std::uint64_t Total() const noexcept { return std::max(i_totalL, i_posL); }

    CMediaPackets i_packets;
    CMediaFrames i_frames{i_packets};
    MediaFacts i_facts;
    std::uint64_t i_posL = 0;   // frames given to the caller
    bool i_exactB = false;

private:
    /** More of `i_pending`, which is used up. */
    OSErr FillPending() {
        i_pending.clear();
        i_pendingAtL = 0;
        while (i_pending.empty()) {
            if (i_endB) return i_endErr;
            MediaPiece piece;
            const OSErr err = i_frames.Next(piece);
            if (err == abortErr) return err;
            if (Failed(err)) {
                EndWith(err);
                continue;
            }
            if (!Convert(piece)) EndWith(paramErr);
        }
        return noErr;
    }

    void EndWith(OSErr err) {
        i_resampler.Flush(i_pending);
        i_endB = true;
        i_endErr = err;
        if (err == eofErr && i_landedB) KnowTotal();
    }
    void KnowTotal() {
        i_totalL = i_posL + i_pending.size() / 2;
        i_exactB = true;
    }

    bool Convert(const MediaPiece& piece) {
        i_landedB = true;
        // Where a place begins in damaged packets, no frame has told the form yet.
        if (piece.frameP == nullptr && i_resampler.Rate() == 0 && i_resampler.Configure(i_frames.Codec()))
            i_rate = i_resampler.Rate();
        if (piece.frameP == nullptr) return i_resampler.ConvertSilence(piece.countL, i_pending);
        if (!i_resampler.Fits(*piece.frameP)) {
            const int rateBefore = i_resampler.Rate();
            i_resampler.Flush(i_pending);
            if (!i_resampler.Configure(*piece.frameP)) return false;
            // The places of packets count samples of one rate, and a joint moves the filter's grid.
            const int rate = i_resampler.Rate();
            if ((i_rate != 0 && i_rate != rate) || (rateBefore != 0 && rate != static_cast<int>(kSamplesPerSecond)))
                i_packets.DropTable();
            i_rate = rate;
        }
        return i_resampler.Convert(*piece.frameP, piece.fromL, piece.countL, i_pending);
    }

    /** Puts the decoder near `frame`, not after it, where that is better than to read on. */
    OSErr Jump(std::uint64_t frame) {
        const bool hadTableB = i_packets.HasTable();   // Reach may drop it, and then it has read packets ahead
        std::uint64_t sampleL = 0, atL = 0;
        if (hadTableB && i_rate > 0) {
            // The filter's grid comes round every `stepIn` samples: from there on it gives what a straight reading
            // gives.
            const auto rate = static_cast<std::uint64_t>(i_rate);
            const std::uint64_t common = std::gcd(rate, std::uint64_t{kSamplesPerSecond});
            const std::uint64_t stepIn = rate / common, stepOut = kSamplesPerSecond / common;
            const std::uint64_t warmL =
                rate == kSamplesPerSecond ? 0 : kMedia_FilterTaps * (1 + rate / kSamplesPerSecond) + stepIn;
            const auto grid = [&](std::uint64_t sample) { return sample > warmL ? (sample - warmL) / stepIn : 0; };
            std::uint64_t stepL =
                grid(frame / kSamplesPerSecond * rate + frame % kSamplesPerSecond * rate / kSamplesPerSecond);
            std::uint64_t reachL = i_frames.Reach(stepL * stepIn);
            if (grid(reachL) < stepL) {   // at the end, too, the filter wants its run
                stepL = grid(reachL);
                reachL = i_frames.Reach(stepL * stepIn);   // which may begin before the table does
            }
            if (i_packets.IsAborted()) return abortErr;
            sampleL = stepL * stepIn;
            atL = stepL * stepOut;
        }
        const bool aheadB = !hadTableB && frame >= i_posL;
        if (aheadB) return noErr;
        i_resampler.Reset();
        i_pending.clear();
        i_pendingAtL = 0;
        i_endB = i_landedB = false;
        i_posL = atL;
        if (!i_packets.HasTable()) i_rate = 0;
        return i_packets.HasTable() ? i_frames.GoTo(sampleL) : i_frames.Restart();
    }

    OSErr SkipTo(std::uint64_t frame) {
        while (i_posL < frame) {
            if (i_pendingAtL == i_pending.size()) {
                const OSErr err = FillPending();
                if (err == eofErr) return noErr;   // the end: the next Read tells
                if (Failed(err)) return err;
                continue;
            }
            const std::size_t takeL = std::min<std::uint64_t>((frame - i_posL) * 2, i_pending.size() - i_pendingAtL);
            i_pendingAtL += takeL;
            i_posL += takeL / 2;
        }
        return noErr;
    }

    CMediaResampler i_resampler;
    std::vector<std::int16_t> i_pending;   // decoded, not given yet, from i_pendingAtL on
    std::size_t i_pendingAtL = 0;
    std::uint64_t i_totalL = 0;
    int i_rate = 0;   // of the file, once something was decoded
    bool i_openB = false, i_endB = false;
    bool i_landedB = true;   // something was decoded since the last jump
    OSErr i_endErr = eofErr;
};

CMediaAudio::CMediaAudio() : i_decoderP(std::make_unique<Decoder>()) {}
CMediaAudio::~CMediaAudio() = default;

OSErr CMediaAudio::Open(CByteSource& source, std::string_view extension) { return i_decoderP->Open(source, extension); }
OSErr CMediaAudio::Read(std::span<std::int16_t> to, std::size_t& gotL) { return i_decoderP->Read(to, gotL); }
OSErr CMediaAudio::Seek(std::uint64_t frame) { return i_decoderP->Seek(frame); }
std::uint64_t CMediaAudio::Position() const noexcept { return i_decoderP->i_posL; }
std::uint64_t CMediaAudio::TotalFrames() const noexcept { return i_decoderP->Total(); }
bool CMediaAudio::IsTotalExact() const noexcept { return i_decoderP->i_exactB; }
const MediaFacts& CMediaAudio::Facts() const noexcept { return i_decoderP->i_facts; }
std::uint64_t CMediaAudio::DamagedPackets() const noexcept { return i_decoderP->i_frames.DamagedPackets(); }
void CMediaAudio::Abort() noexcept { i_decoderP->i_packets.Abort(); }
