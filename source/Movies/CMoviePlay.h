#pragma once
#include <atomic>
#include <memory>
#include <string_view>

#include "Files/CByteSource.h"
#include "Movies/CMoviePainter.h"
#include "Movies/CMoviePictures.h"
#include "Movies/CMovieReader.h"
#include "Movies/CMovieTime.h"

/** Makes the pictures of one movie, a few ahead of the time: reads, decodes, scales to the size that is looked at. What
    is late already is not scaled, and when that does not help not decoded whole; far behind, it jumps ahead.
    Threads  Open on any, before Run; Run keeps its thread busy until Stop. Pictures and Time as they say; the rest any.
    Owner    shared by the movie and the thread that runs it, so that nobody waits for that thread.
    Errors   Open's statuses are CMovieReader's. A fault that ends the pictures early is kept (Result). */
class CMoviePlay {
public:
    explicit CMoviePlay(std::unique_ptr<CByteSource> source) : i_sourceP(std::move(source)) {}
    CMoviePlay(const CMoviePlay&) = delete;
    CMoviePlay& operator=(const CMoviePlay&) = delete;

    OSErr Open(std::string_view extension, bool hardwareB);
    void Run();
    /** Soon after, Open and Run are over. */
    void Stop();

    /** The largest place in which the picture is shown, in pixels of the screen. Pictures are made no larger than this,
        nor than they are in the file. None: the file's size. */
    void SetNeeded(const PictureSize& size);
    /** Pixels that a picture made now would have. */
    [[nodiscard]] PictureSize PaintedSize(const PictureSize& shown) const;

    [[nodiscard]] const MovieFacts& Facts() const noexcept { return i_facts; }
    [[nodiscard]] CMoviePictures& Pictures() noexcept { return i_pictures; }
    [[nodiscard]] CMovieTime& Time() noexcept { return i_time; }
    OSErr Result() const noexcept { return i_result.load(); }
    /** Pictures that were too late to be made. */
    [[nodiscard]] std::uint64_t Skipped() const noexcept { return i_skippedL.load(std::memory_order_relaxed); }
    [[nodiscard]] std::uint64_t Decoded() const noexcept { return i_decodedL.load(std::memory_order_relaxed); }
    [[nodiscard]] std::uint64_t Damaged() const noexcept { return i_damagedL.load(std::memory_order_relaxed); }

private:
    void GoTo(const MovieSeek& seek);
    void JumpAhead();
    void Take(MovieFrame& frame);
    [[nodiscard]] bool IsTooLate(const MovieFrame& frame);
    void PassOver(MovieFrame frame);
    enum class Place { kInTurn, kFirst, kPreview };
    bool Paint(const MovieFrame& frame, Place place);
    void End(OSErr err);

    const std::unique_ptr<CByteSource> i_sourceP;
    CMoviePictures i_pictures;
    CMovieTime i_time;
    MovieFacts i_facts;                       // fixed after Open
    std::atomic<std::uint64_t> i_needed{0};   // width in the upper half
    std::atomic<OSErr> i_result{noErr};
    std::atomic<std::uint64_t> i_skippedL{0}, i_decodedL{0}, i_damagedL{0};

    // The maker's.
    CMovieReader i_reader;
    std::unique_ptr<CMoviePainter> i_painterP;
    MovieSeek i_place;        // the seek that is carried out
    bool i_firstB = true;     // no picture of this seek was made yet
    bool i_arrivedB = true;   // the next frame is the one that is shown at the place of a jump, however old it is
    bool i_hurryB = false, i_endB = false;
    MovieFrame i_passed;     // the frame before, if it was passed over as too late
    double i_lastEndT = 0;   // of the frame before
    double i_paintedT = 0;   // steady time of the last picture
};
