#pragma once
#include <cmath>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

#include "Graphics/COffscreen.h"
#include "Movies/MovieOrientation.h"

/** A picture ready to be shown. Times are seconds of the song. */
struct MoviePicture {
    COffscreen pixels;
    double timeT = 0, endT = 0;
    PictureSize shown;        // as it is meant to be seen
    std::uint32_t turn = 0;   // of the seek that it belongs to
    bool previewB = false;    // the key picture on the way to the place of a seek
    bool atOnceB = false;     // the first after a seek: shown whatever the time
    double fromT = 0;         // right from here on: of the first, the place of the seek where that lies ahead of it
};
using MoviePicturePtr = std::unique_ptr<MoviePicture>;

/** A place that the reader is sent to. */
struct MovieSeek {
    double seconds = 0;
    std::uint32_t turn = 0;
};

/** The pictures between the thread that makes them and the main thread that shows them: a few, since each is large. A
    seek empties it and gives the maker its new place; what was made for another place is not taken any more.
    Memory   kMost_Bytes of pixels in all, those that are shown and painted included, or kFewest pictures.
    Threads  Borrow, GiveBack, Put, SetEnd, TakeSeek, WaitForWork: the maker. Choose, Seek: main. The rest any.
    Owner    CMoviePlay. No lock is held over anything that waits, but for the maker's own sleep. */
class CMoviePictures {
public:
    static constexpr std::size_t kMost_Bytes = 48U << 20;
    static constexpr std::size_t kFewest = 4, kMost = 8;
    /** A larger picture than this is left for the window to scale up: 4 of them are 64 MB. */
    static constexpr int kMost_Pixels = 4 << 20;

    /** An empty one, once there is room for another of `bytes`; null when a seek or the end came instead. */
    [[nodiscard]] MoviePicturePtr Borrow(std::size_t bytes);
    void GiveBack(MoviePicturePtr pictureP);
    /** Adds it behind the others; one of an older turn goes back. */
    void Put(MoviePicturePtr pictureP);
    /** There is nothing behind `endT` in this turn. */
    void SetEnd(double endT, std::uint32_t turn);
    /** The seek that is wanted; false when there is none. */
    [[nodiscard]] bool TakeSeek(MovieSeek& seek);
    /** Until a seek or the end comes. */
    void WaitForWork();
    [[nodiscard]] bool IsSeekWanted() const;

    /** The last picture that begins at `nowT` or before, or the first of a seek; the one shown before is given back.
        `droppedL` rises by those that had no turn. False: nothing new. */
    bool Choose(double nowT, MoviePicturePtr& shownP, std::uint64_t& droppedL);
    /** `alongside` runs before the maker hears of it, under the lock: short, no waits. */
    std::uint32_t Seek(double seconds, const std::function<void()>& alongside = {});
    /** Seconds of song from which the next picture is due; nothing while there is none. A picture of a seek: at once. */
    [[nodiscard]] bool NextTime(double& timeT) const;
    /** Everything of this turn was shown: nothing comes any more. */
    [[nodiscard]] bool IsOver() const;
    /** That, and `nowT` is behind it; or whatever comes yet is more than `mostT` seconds away. */
    [[nodiscard]] bool IsEnded(double nowT, double mostT = HUGE_VAL) const;
    [[nodiscard]] std::uint32_t Turn() const;
    /** Lets the maker go; from now on it is given nothing. */
    void Stop();
    [[nodiscard]] bool IsStopped() const;

private:
    void Recycle(MoviePicturePtr pictureP);

    mutable std::mutex i_lock;   // guards all below
    std::condition_variable i_changed;
    std::deque<MoviePicturePtr> i_ready;
    std::vector<MoviePicturePtr> i_spare;
    std::size_t i_madeL = 0;   // pictures that live, wherever they are
    MovieSeek i_seek;
    bool i_seekB = false, i_stopB = false, i_endB = false;
    bool i_lookedB = false;   // somebody looks: until then one picture is enough of a song that only lies ready
    double i_endT = 0;
};
