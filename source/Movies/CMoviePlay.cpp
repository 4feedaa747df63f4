#include "Movies/CMoviePlay.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "Core/CLog.h"
#include "Platform/CClock.h"

extern "C" {
#include <libavutil/frame.h>
}

namespace {

constexpr double kMovie_StaleT = 0.25;   // a late picture is better than none for so long
constexpr double kMovie_HurryT = 0.2, kMovie_CalmT = 0.0;
constexpr double kMovie_FarT = 3.0;   // so late it jumps ahead, by as much as a jump may take
constexpr double kMovie_LeapT = 0.5;
constexpr int kMovie_SmallestSide = 16;

std::uint64_t Packed(const PictureSize& size) {
    return static_cast<std::uint64_t>(std::max(size.width, 0)) << 32 |
           static_cast<std::uint32_t>(std::max(size.height, 0));
}

}   // namespace

OSErr CMoviePlay::Open(std::string_view extension, bool hardwareB) {
    if (!i_sourceP) return paramErr;
    if (const OSErr err = i_reader.Open(*i_sourceP, extension, hardwareB); Failed(err)) return err;
    i_facts = i_reader.Facts();
    i_painterP = std::make_unique<CMoviePainter>(OrientationOf(i_reader.File().DisplayMatrix()));
    return noErr;
}

void CMoviePlay::Stop() {
    i_reader.Abort();
    i_pictures.Stop();
}

void CMoviePlay::SetNeeded(const PictureSize& size) { i_needed.store(Packed(size), std::memory_order_relaxed); }

PictureSize CMoviePlay::PaintedSize(const PictureSize& shown) const {
    const std::uint64_t packed = i_needed.load(std::memory_order_relaxed);
    PictureSize size = shown;
    if (packed != 0) {
        size.width =
            std::clamp(static_cast<int>(packed >> 32), std::min(kMovie_SmallestSide, shown.width), shown.width);
        size.height = std::clamp(static_cast<int>(packed & 0xFFFFFFFF), std::min(kMovie_SmallestSide, shown.height),
                                 shown.height);
    }
    const double pixels = static_cast<double>(size.width) * size.height;
    if (pixels > CMoviePictures::kMost_Pixels) {
        const double shrink = std::sqrt(CMoviePictures::kMost_Pixels / pixels);
        size = {std::max(1, static_cast<int>(size.width * shrink)),
                std::max(1, static_cast<int>(size.height * shrink))};
    }
    return size;
}

void CMoviePlay::Run() {
    while (!i_pictures.IsStopped()) {
        if (MovieSeek seek; i_pictures.TakeSeek(seek)) GoTo(seek);
        if (i_endB) {
            i_pictures.WaitForWork();
            continue;
        }
        MovieFrame frame;
        const OSErr err = i_reader.Next(frame);
        i_damagedL.store(i_reader.Damaged(), std::memory_order_relaxed);
        if (Failed(err)) {
            End(err);
            continue;
        }
        i_decodedL.fetch_add(1, std::memory_order_relaxed);
        Take(frame);
    }
}

/** Ends early when a seek or the end comes. */
void CMoviePlay::Take(MovieFrame& frame) {
    const bool arrivedB = i_arrivedB;
    const bool lateB = !arrivedB && IsTooLate(frame);
    if (!lateB) {
        // The one before was late by its own word, but nothing takes its place until this one's turn.
        if (i_passed.frameP && frame.timeT > i_time.PictureT() && !Paint(std::exchange(i_passed, {}), Place::kInTurn))
            return;
        if (!Paint(frame, i_firstB ? Place::kFirst : Place::kInTurn)) return;
        i_firstB = i_arrivedB = false;
    }
    i_lastEndT = frame.endT;
    PassOver(lateB ? std::move(frame) : MovieFrame{});
    if (!arrivedB) JumpAhead();   // the picture of a place may be an old one, which stands for long
}

/** The one that was passed over before has had its time now. */
void CMoviePlay::PassOver(MovieFrame frame) {
    // The time of another place: asked after the time was read, it is known by now.
    if (i_passed.frameP && !i_pictures.IsSeekWanted()) i_skippedL.fetch_add(1, std::memory_order_relaxed);
    i_passed = std::move(frame);
}

void CMoviePlay::GoTo(const MovieSeek& seek) {
    i_place = seek;
    i_firstB = i_arrivedB = true;
    i_endB = i_hurryB = false;
    i_passed = {};
    i_lastEndT = seek.seconds;
    const OSErr err = i_reader.Seek(
        seek.seconds, [this] { return i_pictures.IsSeekWanted(); },
        [this](const MovieFrame& key) { static_cast<void>(Paint(key, Place::kPreview)); });
    if (Failed(err) && err != abortErr) End(err);   // given up for another place: that comes next
}

void CMoviePlay::End(OSErr err) {
    if (i_passed.frameP && !Paint(std::exchange(i_passed, {}), Place::kInTurn)) return;   // it stays the last
    i_endB = true;
    if (i_pictures.IsStopped()) return;
    if (err != eofErr && err != abortErr && !Failed(i_result.exchange(err)))
        static_cast<void>(LogStep(err, "movie: the pictures end here"));
    i_pictures.SetEnd(i_lastEndT, i_place.turn);
}

bool CMoviePlay::IsTooLate(const MovieFrame& frame) {
    const double frameT = i_facts.frameRate > 0 ? 1 / i_facts.frameRate : 0;
    const double gapT = frame.timeT - i_lastEndT;
    if (i_hurryB && frameT > 0 && gapT > frameT / 2)   // what the decoder left out
        i_skippedL.fetch_add(static_cast<std::uint64_t>(std::lround(gapT / frameT)), std::memory_order_relaxed);

    const double lateT = i_time.PictureT() - frame.endT;
    if (i_hurryB ? lateT < kMovie_CalmT : lateT > kMovie_HurryT) {
        i_hurryB = !i_hurryB;
        i_reader.SetHurry(i_hurryB ? MovieHurry::kSkipUnreferenced : MovieHurry::kNone);
    }
    return lateT > 0 && CClock::Get().SteadyT() - i_paintedT <= kMovie_StaleT;
}

/** Decoding will not make up for it. */
void CMoviePlay::JumpAhead() {
    const double nowT = i_time.PictureT();
    if (nowT - i_lastEndT < kMovie_FarT || i_time.Rate() == 0) return;
    const double beforeT = i_lastEndT;
    if (Failed(i_reader.Seek(nowT + kMovie_LeapT, [this] { return i_pictures.IsSeekWanted(); }))) return;
    i_hurryB = false;
    i_arrivedB = true;
    PassOver({});
    i_lastEndT = nowT + kMovie_LeapT;
    i_skippedL.fetch_add(static_cast<std::uint64_t>(std::max(0.0, (i_lastEndT - beforeT) * i_facts.frameRate)),
                         std::memory_order_relaxed);
}

/** False: a seek or the end came instead. */
bool CMoviePlay::Paint(const MovieFrame& frame, Place place) {
    const bool atOnceB = place != Place::kInTurn;
    const AVFrame& picture = *frame.frameP;
    const PictureSize shown =
        ShownSize(picture.width, picture.height, i_reader.File().PixelShape(picture), i_painterP->Orientation());
    const PictureSize size = PaintedSize(shown);
    const auto bytesL = static_cast<std::size_t>(size.width) * static_cast<std::size_t>(size.height) * sizeof(Pixel32);
    MoviePicturePtr pictureP = i_pictures.Borrow(bytesL);
    if (!pictureP) return false;
    if (const OSErr err = i_painterP->Paint(picture, size, pictureP->pixels); Failed(err)) {
        i_pictures.GiveBack(std::move(pictureP));
        i_skippedL.fetch_add(1, std::memory_order_relaxed);   // the next one may be of a better form
        return true;
    }
    pictureP->timeT = frame.timeT;
    pictureP->endT = frame.endT;
    pictureP->fromT = atOnceB ? std::min(frame.timeT, i_place.seconds) : frame.timeT;
    pictureP->shown = shown;
    pictureP->turn = i_place.turn;
    pictureP->previewB = place == Place::kPreview;
    pictureP->atOnceB = atOnceB;
    i_pictures.Put(std::move(pictureP));
    i_paintedT = CClock::Get().SteadyT();
    return true;
}
