#include "Movies/CAS_QuickTimeVideo.h"

#include <algorithm>
#include <cmath>

#include "Core/CLog.h"
#include "Movies/CMoviePlay.h"
#include "Movies/CT_MovieDecode.h"

namespace {

constexpr double kMovie_MostShowT = 0.05, kMovie_LeastShowT = 0.001, kMovie_PollT = 0.01;
constexpr double kMovie_MostWaitT = 10;
constexpr double kMovie_JumpBackT = 0.25;   // the smooth time never goes back so far by itself
constexpr double kMovie_Longest = 1e6;      // seconds

SpoolTraits MovieTraits() {
    SpoolTraits traits;
    traits.name = "QuickTime Video";
    traits.type = SpoolType::kVideo;
    traits.unitBytes = kSpool_GraphicsUnitBytes;
    traits.ownPositionB = true;
    return traits;
}

std::uint64_t UnitsOf(const MovieFacts& facts) {
    const double seconds = std::clamp(facts.seconds, 0.0, kMovie_Longest);
    return static_cast<std::uint64_t>(std::llround(seconds * 300)) * kSpool_UnitsPerPacket;
}

}   // namespace

CAS_QuickTimeVideo::CAS_QuickTimeVideo(SongBytes bytes) : CSpooler(MovieTraits()), i_bytes(std::move(bytes)) {}

CAS_QuickTimeVideo::~CAS_QuickTimeVideo() {
    if (const auto playP = i_playP.Exchange(nullptr)) playP->Stop();
}

OSErr CAS_QuickTimeVideo::Begin(std::shared_ptr<CMoviePlay>& playP) {
    std::unique_ptr<CByteSource> sourceP;
    if (const OSErr err = i_bytes.make(sourceP); Failed(err)) return err;
    playP = std::make_shared<CMoviePlay>(std::move(sourceP));
    i_playP.Set(playP);   // from now on an abort reaches it
    if (const OSErr err = Err(); Failed(err)) return err;
    return LogStep(playP->Open(i_bytes.extension, true), "opening the picture of a movie");
}

OSErr CAS_QuickTimeVideo::Open_i(bool writeB, std::uint64_t& sizeL) {
    if (writeB) return paramErr;
    std::shared_ptr<CMoviePlay> playP;
    OSErr err = Begin(playP);
    if (!Failed(err) && CT_Preemptive::Start(std::make_unique<CT_MovieDecode>(playP)) == 0) err = memFullErr;
    if (Failed(err)) {
        i_playP.Set(nullptr);
        return err;
    }
    const MovieFacts& facts = playP->Facts();
    sizeL = UnitsOf(facts);
    LogF("movie: %d x %d, %.3f pictures/s, %.1f s, %s in %s%s", facts.width, facts.height, facts.frameRate,
         facts.seconds, facts.codec.c_str(), facts.container.c_str(), facts.hardwareB ? ", by hardware" : "");
    return noErr;
}

OSErr CAS_QuickTimeVideo::Close_i(bool) {
    if (const auto playP = i_playP.Exchange(nullptr)) playP->Stop();
    return noErr;
}

OSErr CAS_QuickTimeVideo::GetEOF(std::uint64_t& sizeL) {
    if (const auto playP = i_playP.Get()) {
        sizeL = UnitsOf(playP->Facts());
        return noErr;
    }
    std::unique_ptr<CByteSource> sourceP;
    if (const OSErr err = i_bytes.make(sourceP); Failed(err)) return err;
    CMoviePlay play(std::move(sourceP));
    const OSErr err = play.Open(i_bytes.extension, false);
    if (!Failed(err)) sizeL = UnitsOf(play.Facts());
    return err;
}

OSErr CAS_QuickTimeVideo::Read_i(std::span<std::byte>, std::size_t& gotL) {
    gotL = 0;
    return eofErr;
}

OSErr CAS_QuickTimeVideo::Seek_i(std::uint64_t positionL) {
    const auto playP = i_playP.Get();
    if (!playP) return eofErr;
    const double seconds = static_cast<double>(positionL) / static_cast<double>(300 * kSpool_UnitsPerPacket);
    playP->Pictures().Seek(seconds);
    return noErr;
}

void CAS_QuickTimeVideo::Abort_i() {
    if (const auto playP = i_playP.Get()) playP->Stop();
}

void CAS_QuickTimeVideo::SeekTo(double seconds) {
    const auto playP = i_playP.Get();
    if (!playP) return;
    seconds = std::clamp(seconds, 0.0, kMovie_Longest);
    // The time jumps too, also by a small step, which the sound would be followed to slowly.
    playP->Pictures().Seek(seconds - static_cast<double>(i_delayL) / 1000, [&] { playP->Time().Jump(seconds); });
}

void CAS_QuickTimeVideo::SetPictureDelay(long milliseconds) {
    i_delayL = std::clamp(milliseconds, -CMovieTime::kMost_Delay, CMovieTime::kMost_Delay);
}

void CAS_QuickTimeVideo::SetNeededSize(int width, int height) {
    const auto playP = i_playP.Get();
    const PictureSize needed{width, height};
    if (needed == i_needed && playP == nullptr) return;
    i_needed = needed;
    if (!playP) return;
    playP->SetNeeded(needed);
    // Nothing comes by itself while the time stands, nor at the end: the picture is made again in its new size.
    if (!i_shownP || IsSeeking() || (playP->Time().Rate() != 0 && !playP->Pictures().IsOver())) return;
    const PictureSize wanted = playP->PaintedSize(i_shownP->shown);
    const Rect& bounds = i_shownP->pixels.bounds();
    if (wanted != PictureSize{bounds.Width(), bounds.Height()}) playP->Pictures().Seek(i_shownP->timeT);
}

/** What the picture is to show now. */
double CAS_QuickTimeVideo::Follow(CMoviePlay& play) {
    CMovieTime& time = play.Time();
    time.SetDelay(i_delayL);
    if (i_leader) {
        const MovieLead lead = i_leader();
        i_leadEndedB = lead.endedB;
        return time.Follow(lead.seconds, lead.runningB, lead.rate);
    }
    i_leadEndedB = true;
    // Without sound nothing is lost when the time waits for the picture of a seek.
    return time.Run(!i_pausedB && i_shownP && !IsSeeking(), i_tempo);
}

/** The leader was sent back without a word. Ahead, the maker sees by itself that it is late. */
void CAS_QuickTimeVideo::FollowJumps(CMoviePlay& play, double pictureT) {
    if (i_shownP && !IsSeeking() && pictureT < i_shownP->fromT - kMovie_JumpBackT)
        play.Pictures().Seek(std::max(0.0, pictureT));
}

bool CAS_QuickTimeVideo::Show() {
    const auto playP = i_playP.Get();
    if (!playP) return false;
    const double pictureT = Follow(*playP);
    const bool newB = playP->Pictures().Choose(pictureT, i_shownP, i_droppedL);
    if (newB) ++i_shownL;
    FollowJumps(*playP, pictureT);
    return newB;
}

double CAS_QuickTimeVideo::NextShowIn() const {
    const auto playP = i_playP.Get();
    if (!playP) return kMovie_MostShowT;
    double dueT = 0;
    if (!playP->Pictures().NextTime(dueT)) return playP->Pictures().IsOver() ? kMovie_MostShowT : kMovie_PollT;
    const double rate = playP->Time().Rate();
    const double aheadT = dueT - playP->Time().PictureT();
    if (aheadT <= 0) return kMovie_LeastShowT;
    return rate > 0 ? std::clamp(aheadT / rate, kMovie_LeastShowT, kMovie_MostShowT) : kMovie_MostShowT;
}

Rect CAS_QuickTimeVideo::Frame() const {
    return i_shownP ? MakeRect(0, 0, i_shownP->shown.width, i_shownP->shown.height) : Rect{};
}

bool CAS_QuickTimeVideo::IsEnded() const {
    const auto playP = i_playP.Get();
    if (!playP) return true;
    // Damaged times must not keep the next song waiting once this one was heard.
    const double mostT = i_leader ? kMovie_MostWaitT : HUGE_VAL;
    return i_leadEndedB && playP->Pictures().IsEnded(playP->Time().PictureT(), mostT);
}

bool CAS_QuickTimeVideo::IsSeeking() const {
    const auto playP = i_playP.Get();
    return playP && (!i_shownP || i_shownP->previewB || i_shownP->turn != playP->Pictures().Turn());
}

double CAS_QuickTimeVideo::CurTime() const {
    const auto playP = i_playP.Get();
    return playP ? playP->Time().Now() : 0;
}

MovieCounts CAS_QuickTimeVideo::Counts() const {
    MovieCounts counts{.shownL = i_shownL, .droppedL = i_droppedL};
    if (const auto playP = i_playP.Get()) {
        counts.decodedL = playP->Decoded();
        counts.droppedL += playP->Skipped();
        counts.damagedL = playP->Damaged();
    }
    return counts;
}

MovieFacts CAS_QuickTimeVideo::Facts() const {
    const auto playP = i_playP.Get();
    return playP ? playP->Facts() : MovieFacts{};
}

long CAS_QuickTimeVideo::Length300() const { return static_cast<long>(UnitsOf(Facts()) / kSpool_UnitsPerPacket); }

OSErr CAS_QuickTimeVideo::Result() const {
    const auto playP = i_playP.Get();
    return playP ? playP->Result() : noErr;
}

OSErr MakeSongMovie(const CFileRef& file, Ref<CAS_QuickTimeVideo>& movieP) {
    movieP = nullptr;
    SongBytes found;
    if (const OSErr err = FindSongBytes(file, MediaKind::kPicture, found); Failed(err)) return err;
    movieP = MakeRef<CAS_QuickTimeVideo>(std::move(found));
    return noErr;
}
