#pragma once
#include <cstdint>
#include <functional>

#include "Movies/MovieFrame.h"
#include "Platform/OSErr.h"

struct AVBufferRef;
struct AVCodec;
struct AVCodecContext;
struct AVCodecParameters;
struct AVRational;

/** How much of the work a decoder that is late leaves out. */
enum class MovieHurry { kNone, kSkipUnreferenced };

/** Decodes a movie's packets: by the machine's video hardware where there is some that can, else on two to four
    threads. Hardware that fails is told (ioErr), so that the caller goes back to where it can go on without.
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
    /** Takes the part of hardware that fails, on machines without any: asked before each Receive while the decoder was
        opened for hardware; true fails. */
    void SetFault(std::function<bool()> failsB) { i_faultB = std::move(failsB); }

private:
    /** Counts what went wrong, or knows that the hardware did. */
    void NoteError(int result);
    bool OpenHardware(const AVCodec& codec);
    void Close();

    AVCodecContext* i_codecP = nullptr;
    AVBufferRef* i_deviceP = nullptr;
    bool i_hardwareB = false;
    bool i_askedB = false;    // opened for hardware
    bool i_failedB = false;   // which gave up
    int i_streakL = 0;        // errors of the hardware without a frame between
    std::function<bool()> i_faultB;
    std::uint64_t i_damagedL = 0;
};
