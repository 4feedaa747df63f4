#pragma once
#include <cstdint>

#include "Graphics/MovieFrame.h"
#include "Platform/OSErr.h"

struct AVBufferRef;
struct AVCodec;
struct AVCodecContext;
struct AVCodecParameters;
struct AVRational;

/** How much of the work a decoder that is late leaves out. */
enum class MovieHurry { kNone, kSkipUnreferenced };

/** Decodes a movie's packets: by the machine's video hardware where there is some that can, else on two to four
    threads. Hardware that fails gives way without a word.
    Threads  one at a time; the library's own threads work inside.
    Owner    CMovieReader.
    Errors   paramErr: no decoder for it. A damaged packet is counted and left out. */
class CMovieDecoder {
public:
    CMovieDecoder() = default;
    ~CMovieDecoder();
    CMovieDecoder(const CMovieDecoder&) = delete;
    CMovieDecoder& operator=(const CMovieDecoder&) = delete;

    OSErr Open(const AVCodecParameters& parameters, const AVRational& timeBase, bool hardwareB);
    /** Null: no more will come, until a Flush. False when it takes none before a Receive; the caller keeps it. */
    [[nodiscard]] bool Send(const AVPacket* packetP);
    /** The next frame, in memory. queueNotDoneErr: it wants a packet; eofErr: all came out after a null packet; ioErr:
        the hardware failed, and the decoder wants to be opened without it. */
    OSErr Receive(AVFramePtr& frameP);
    /** Forgets what it was given. */
    void Flush();
    void SetHurry(MovieHurry hurry);

    /** Known once a frame came. */
    [[nodiscard]] bool IsHardware() const noexcept { return i_hardwareB; }
    [[nodiscard]] std::uint64_t Damaged() const noexcept { return i_damagedL; }

private:
    bool OpenHardware(const AVCodec& codec);
    void Close();

    AVCodecContext* i_codecP = nullptr;
    AVBufferRef* i_deviceP = nullptr;
    bool i_hardwareB = false;
    std::uint64_t i_damagedL = 0;
};
