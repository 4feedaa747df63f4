#pragma once
#include <cmath>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>

#include "Media/CMediaBytes.h"

struct AVFormatContext;
struct AVPacket;
struct AVStream;

/** Which stream of a media file is read. */
enum class MediaKind { kSound, kPicture };
/** What a media file is opened for: to be decoded, or for its length alone, which wants less of the file. */
enum class MediaUse { kPlay, kLength };

/** A media file of any container, opened by FFmpeg's demuxer in a cage: only formats that hold their own streams, no
    second file, no URL, no more than a bounded part read before it is known.
    Threads  one at a time; Abort any.
    Owner    CMediaPackets for the sound, CMovieFile for the picture. The source is not owned and outlives it.
    Errors   statuses. paramErr: no stream of that kind in it. */
class CMediaFormat {
public:
    explicit CMediaFormat(MediaKind kind, MediaUse use = MediaUse::kPlay);
    ~CMediaFormat();
    CMediaFormat(const CMediaFormat&) = delete;
    CMediaFormat& operator=(const CMediaFormat&) = delete;

    /** FFmpeg tells each damaged frame; the KJ's log keeps our own line a file. Any thread. */
    static void QuietLibrary();

    /** Once. `extension` without its dot helps where the contents are no sure sign; "pcm" and "raw" are 16-bit stereo.
        The bytes read until EndOpening are bounded. */
    OSErr Open(CByteSource& source, std::string_view extension);
    /** False when the bound was met: what looked like the end was none. */
    bool EndOpening() noexcept;
    /** Reads the file anew from its first packet. */
    OSErr Restart();
    /** The next packet of the stream. eofErr after the last one, also of a file that was cut off; ioErr, abortErr. What
        ended the file is answered from then on, until a Restart or ForgetEnd. */
    OSErr Next(AVPacket& packet);
    /** After the demuxer was sent to another place. */
    void ForgetEnd() noexcept;
    /** The whole file was met. */
    [[nodiscard]] bool IsAtEnd() const noexcept { return i_endB; }

    /** Null before an Open that succeeded. */
    [[nodiscard]] AVFormatContext* Format() const noexcept { return i_formatP; }
    [[nodiscard]] AVStream* Stream() const noexcept { return i_streamP; }
    [[nodiscard]] CMediaBytes& Bytes() noexcept { return i_bytes; }
    [[nodiscard]] const CMediaBytes& Bytes() const noexcept { return i_bytes; }
    [[nodiscard]] const std::string& Container() const noexcept { return i_container; }
    /** Of the stream, or of the file; 0 when nothing tells. */
    [[nodiscard]] double Seconds() const;
    /** Of a picture that is to be played: where its sound begins, in seconds of the file's own times; NaN without
        sound. */
    [[nodiscard]] double SoundStart() const noexcept { return i_soundStartT; }
    /** They are told by the container, or follow from a size that is fixed; not guessed from a bit rate. */
    [[nodiscard]] bool TellsSeconds() const;

    void Abort() noexcept { i_bytes.Abort(); }
    [[nodiscard]] bool IsAborted() const noexcept { return i_bytes.IsAborted(); }

private:
    OSErr OpenFormat();
    OSErr OpenAndAnalyze();
    void Rewind();
    [[nodiscard]] bool MayHideSound() const;
    void FindSoundStart();
    void Quiet();
    [[nodiscard]] int BestStream() const;
    /** The head of the file says all that its length wants. */
    [[nodiscard]] bool IsToldByHead() const;

    struct FreePacket {
        void operator()(AVPacket* packetP) const noexcept;
    };
    using HeldPacket = std::unique_ptr<AVPacket, FreePacket>;

    const MediaKind i_kind;
    const MediaUse i_use;
    CMediaBytes i_bytes;
    AVFormatContext* i_formatP = nullptr;
    AVStream* i_streamP = nullptr;
    std::string i_extension, i_container;
    bool i_deepB = false;            // more of the file than of others must be looked at to find its sound
    std::deque<HeldPacket> i_held;   // of the stream; read already, and to be given first
    double i_soundStartT = NAN;
    bool i_endB = false;
    OSErr i_endErr = eofErr;   // what ended the file
};
