#pragma once
#include <cmath>
#include <deque>
#include <functional>

#include "Movies/CMovieDecoder.h"
#include "Movies/CMovieFile.h"

/** The pictures of a movie in the order of their times, and the exact way to any of them. Where a file's index, or a
    demuxer's guess, comes out too late, the way begins earlier, at the very start if need be; the way itself goes by
    packets, of which only those since the last key picture are decoded.
    Units    seconds of the song (CMovieFile).
    Threads  one at a time; Abort any.
    Owner    CMoviePlay. The source outlives it.
    Errors   statuses. paramErr: no picture that can be read. Damaged packets are left out. */
class CMovieReader {
public:
    /** Asked now and then during a Seek: true gives it up. */
    using Cancelled = std::function<bool()>;
    /** The key picture from which the way to the place begins, for a quick look. */
    using Preview = std::function<void(const MovieFrame&)>;

    CMovieReader();
    CMovieReader(const CMovieReader&) = delete;
    CMovieReader& operator=(const CMovieReader&) = delete;

    /** Once. Decodes the first picture, as the proof that there is one. */
    OSErr Open(CByteSource& source, std::string_view extension, bool hardwareB = true);
    /** eofErr after the last one. */
    OSErr Next(MovieFrame& frame);
    /** The next Next gives what is shown at `seconds`: the last picture that begins then or before, or the first one.
        abortErr: it was given up, and the place is any. */
    OSErr Seek(double seconds, const Cancelled& cancelled = {}, const Preview& preview = {});
    void SetHurry(MovieHurry hurry) noexcept { i_hurry = hurry; }

    [[nodiscard]] const MovieFacts& Facts() const noexcept { return i_facts; }
    [[nodiscard]] CMovieFile& File() noexcept { return i_file; }
    [[nodiscard]] std::uint64_t Damaged() const noexcept { return i_decoder.Damaged(); }
    /** CMovieDecoder::SetFault; before Open. */
    void SetFault(std::function<bool()> failsB) { i_decoder.SetFault(std::move(failsB)); }
    void Abort() noexcept { i_file.Abort(); }
    [[nodiscard]] bool IsAborted() const noexcept { return i_file.IsAborted(); }

private:
    OSErr OpenDecoder(bool hardwareB);
    OSErr Decode(MovieFrame& frame);
    OSErr NextDecoded(MovieFrame& frame);
    OSErr Resume(MovieFrame& frame);
    OSErr GoAndDecodeFrom(double fromT, double seconds, const Cancelled& cancelled, const Preview& preview);
    OSErr Feed();
    [[nodiscard]] bool EndsTooSoon(double seconds) const;
    void KeepFrom(double seconds);
    OSErr GoAndDecode(double seconds, const Cancelled& cancelled, const Preview& preview);
    OSErr FetchPacket(AVPacketPtr& packetP);
    void Stamp(MovieFrame& frame);
    OSErr Begin(double fromT);
    OSErr GatherTo(double seconds, double keyT, const Cancelled& cancelled);
    OSErr DecodeTo(double seconds, double keyT, const Cancelled& cancelled, const Preview& preview);
    void Forget();

    CMovieFile i_file;
    CMovieDecoder i_decoder;
    MovieFacts i_facts;
    std::deque<AVPacketPtr> i_packets;   // read ahead of the decoder
    std::deque<MovieFrame> i_ready;      // decoded ahead of Next
    double i_lastT = 0;                  // of the last frame decoded; NaN after a jump
    double i_fedT = 0;                   // of the first key packet that the decoder was given since then; NaN: none
    double i_keepT = -HUGE_VAL;          // pictures before it that no other refers to are left out
    MovieHurry i_hurry = MovieHurry::kNone;
    double i_frameT = 0;       // what a picture takes when nothing tells
    bool i_atStartB = false;   // of a seek: the way begins with the first packet
    bool i_drainedB = false;   // the decoder knows that no packet comes
    OSErr i_endErr = eofErr;
};
