#pragma once
#include <limits>
#include <string_view>

#include "Media/CMediaFormat.h"
#include "Movies/MovieFrame.h"

struct AVCodecParameters;
struct AVRational;

/** The time of what tells none; ask by std::isnan. */
inline constexpr double kMovie_NoTime = std::numeric_limits<double>::quiet_NaN();

/** The packets of a movie's picture, with their times, and the way to another place.
    Units    seconds of the song: 0 is the first sample that is heard of its sound, which is where CMediaAudio counts
             from; in a movie without sound, its first picture.
    Threads  one at a time; Abort any.
    Owner    CMovieReader. The source outlives it.
    Errors   statuses. paramErr: no picture that plays (a cover does not). */
class CMovieFile {
public:
    /** Once. `extension` as CMediaFormat; what is read until EndOpening is bounded. */
    OSErr Open(CByteSource& source, std::string_view extension);
    void EndOpening() noexcept { i_format.EndOpening(); }
    /** eofErr after the last one, also where the file was cut off. Where two recordings were joined, and times jump or
        begin anew, the packet's are moved so that they go on; a file in which that was seen is only read from its
        start. */
    OSErr Next(AVPacket& packet);
    /** To a key packet at or before `seconds`, as far as the file's index, or the demuxer's guess, is right: the caller
        looks where it came out. A failure leaves the place undefined: Restart. */
    OSErr GoTo(double seconds);
    /** False after a Restart that failed: until one succeeds, nothing but that and Close may be asked. */
    [[nodiscard]] bool IsOpen() const noexcept { return i_format.Stream() != nullptr; }
    /** To the first packet. */
    OSErr Restart();
    /** Times may begin anew somewhere in it: the format allows it, and nobody has read it through. */
    [[nodiscard]] bool MayBeJoined() const;

    /** Of a time stamp; NaN when there is none. */
    [[nodiscard]] double TimeOf(std::int64_t stamp) const;
    /** When a packet is shown or, where the file does not tell, decoded; NaN when neither is told. */
    [[nodiscard]] double TimeOf(const AVPacket& packet) const;
    [[nodiscard]] double SecondsOf(std::int64_t duration) const;

    [[nodiscard]] const AVCodecParameters& Parameters() const;
    [[nodiscard]] AVRational TimeBase() const;
    /** Pictures a second, the mean; 0 when nothing tells. */
    [[nodiscard]] double FrameRate() const;
    /** Of the song, up to the end of the picture; 0 when nothing tells. */
    [[nodiscard]] double Seconds() const;
    [[nodiscard]] bool HasSound() const noexcept { return i_soundB; }
    [[nodiscard]] const std::string& Container() const noexcept { return i_format.Container(); }
    /** The shape of a pixel, width to height: the container's word before the stream's. */
    [[nodiscard]] double PixelShape(const AVFrame& frame);
    /** The matrix of nine numbers by which a camera says how it was held; null for none. */
    [[nodiscard]] const std::int32_t* DisplayMatrix() const;

    void Abort() noexcept { i_format.Abort(); }
    [[nodiscard]] bool IsAborted() const noexcept { return i_format.IsAborted(); }

private:
    /** What the times of a packet are to be moved by. */
    void FindJoint(const AVPacket& packet);

    CMediaFormat i_format{MediaKind::kPicture};
    double i_originT = 0;   // of the file's own times
    bool i_soundB = false;
    bool i_joinedB = false;        // a joint was met
    bool i_fromStartB = true;      // every packet since the first one was read
    bool i_readThroughB = false;   // once
    // Of this way through the file.
    std::int64_t i_shift = 0;                              // what the times are moved by, in units of the time base
    std::int64_t i_lastDecodeTime = 0, i_lastPlace = -1;   // of the packet before, as the file has them; -1: none
};
