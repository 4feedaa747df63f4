#include "Movies/CMoviePictures.h"

#include <algorithm>
#include <utility>

MoviePicturePtr CMoviePictures::Borrow(std::size_t bytes) {
    const std::size_t mostL = std::clamp(kMost_Bytes / std::max<std::size_t>(bytes, 1), kFewest, kMost);
    std::unique_lock guard(i_lock);
    for (;;) {
        if (i_stopB || i_seekB) return nullptr;
        if (!i_lookedB && i_madeL > 0 && i_spare.empty()) {
            i_changed.wait(guard);
            continue;
        }
        while (i_madeL > mostL && !i_spare.empty()) {   // the pictures have grown
            i_spare.pop_back();
            --i_madeL;
        }
        if (!i_spare.empty() && i_madeL <= mostL) {
            MoviePicturePtr pictureP = std::move(i_spare.back());
            i_spare.pop_back();
            return pictureP;
        }
        if (i_madeL < mostL) {
            ++i_madeL;
            return std::make_unique<MoviePicture>();
        }
        i_changed.wait(guard);
    }
}

void CMoviePictures::Recycle(MoviePicturePtr pictureP) {
    if (pictureP) i_spare.push_back(std::move(pictureP));
    i_changed.notify_all();
}

void CMoviePictures::GiveBack(MoviePicturePtr pictureP) {
    const std::scoped_lock guard(i_lock);
    Recycle(std::move(pictureP));
}

void CMoviePictures::Put(MoviePicturePtr pictureP) {
    const std::scoped_lock guard(i_lock);
    if (pictureP->turn != i_seek.turn || i_stopB)
        Recycle(std::move(pictureP));
    else
        i_ready.push_back(std::move(pictureP));
}

void CMoviePictures::SetEnd(double endT, std::uint32_t turn) {
    const std::scoped_lock guard(i_lock);
    if (turn != i_seek.turn) return;
    i_endB = true;
    i_endT = endT;
}

bool CMoviePictures::TakeSeek(MovieSeek& seek) {
    const std::scoped_lock guard(i_lock);
    if (!i_seekB) return false;
    i_seekB = false;
    seek = i_seek;
    return true;
}

void CMoviePictures::WaitForWork() {
    std::unique_lock guard(i_lock);
    i_changed.wait(guard, [this] { return i_seekB || i_stopB; });
}

bool CMoviePictures::IsSeekWanted() const {
    const std::scoped_lock guard(i_lock);
    return i_seekB || i_stopB;
}

bool CMoviePictures::Choose(double nowT, MoviePicturePtr& shownP, std::uint64_t& droppedL) {
    const std::scoped_lock guard(i_lock);
    if (!std::exchange(i_lookedB, true)) i_changed.notify_all();
    std::size_t takeL = 0;
    while (takeL < i_ready.size() && (i_ready[takeL]->timeT <= nowT || i_ready[takeL]->atOnceB)) ++takeL;
    if (takeL == 0) return false;
    for (; takeL > 1; --takeL) {
        if (!i_ready.front()->atOnceB) ++droppedL;
        Recycle(std::move(i_ready.front()));
        i_ready.pop_front();
    }
    if (shownP) Recycle(std::move(shownP));
    shownP = std::move(i_ready.front());
    i_ready.pop_front();
    return true;
}

std::uint32_t CMoviePictures::Seek(double seconds, const std::function<void()>& alongside) {
    const std::scoped_lock guard(i_lock);
    if (alongside) alongside();
    i_seek = {seconds, i_seek.turn + 1};
    i_seekB = true;
    i_endB = false;
    while (!i_ready.empty()) {
        Recycle(std::move(i_ready.front()));
        i_ready.pop_front();
    }
    i_changed.notify_all();
    return i_seek.turn;
}

bool CMoviePictures::NextTime(double& timeT) const {
    const std::scoped_lock guard(i_lock);
    if (i_ready.empty()) return false;
    timeT = i_ready.front()->atOnceB ? 0 : i_ready.front()->timeT;
    return true;
}

bool CMoviePictures::IsOver() const {
    const std::scoped_lock guard(i_lock);
    return i_endB && i_ready.empty();
}

bool CMoviePictures::IsEnded(double nowT, double mostT) const {
    const std::scoped_lock guard(i_lock);
    if (!i_ready.empty()) return !i_ready.front()->atOnceB && i_ready.front()->timeT - nowT > mostT;
    return i_endB && (nowT >= i_endT || i_endT - nowT > mostT);
}

std::uint32_t CMoviePictures::Turn() const {
    const std::scoped_lock guard(i_lock);
    return i_seek.turn;
}

void CMoviePictures::Stop() {
    const std::scoped_lock guard(i_lock);
    i_stopB = true;
    i_changed.notify_all();
}

bool CMoviePictures::IsStopped() const {
    const std::scoped_lock guard(i_lock);
    return i_stopB;
}
