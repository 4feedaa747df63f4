#include "Play/CSongMovie.h"

#include <algorithm>
#include <cmath>

#include "Core/CLog.h"
#include "Graphics/CGraphics.h"
#include "Graphics/CGraphicsClock.h"
#include "Graphics/CGraphicsOverlay.h"
#include "Graphics/CGraphicsPort.h"
#include "Platform/CClock.h"
#include "Play/CPlayPace.h"
#include "Play/CT_MovieLook.h"

namespace {

constexpr double kLead_NearT = 0.25;         // so near the clock the sound is at its place: not on its way to a seek
constexpr double kLead_StandsT = 0.05;       // a clock that has not moved for so long stands
constexpr std::int64_t kLead_Step300 = 60;   // a longer step is a jump, no movement
constexpr double kLead_NeverT = -1e9;
constexpr double kSectors_PerSecond = 75;

}   // namespace

CSongMovie::CSongMovie(Ref<CAS_QuickTimeVideo> movieP, CGraphics& graphics, const CGraphicsClock& clock)
    : i_movieP(std::move(movieP)), i_graphics(graphics), i_clock(clock) {
    i_movieP->SetLeader([this] { return Told(); });
    static_cast<void>(new CT_MovieLook(i_self.Handle()));   // owned by the map of forks
}

CSongMovie::~CSongMovie() {
    i_movieP->SetLeader({});
    const MovieCounts counts = i_movieP->Counts();
    LogF("movie: %llu pictures decoded, %llu shown, %llu dropped, %llu packets damaged",
         static_cast<unsigned long long>(counts.decodedL), static_cast<unsigned long long>(counts.shownL),
         static_cast<unsigned long long>(counts.droppedL), static_cast<unsigned long long>(counts.damagedL));
}

void CSongMovie::Lead(std::shared_ptr<const CHeardSound> soundP, std::shared_ptr<const CPlayPace> paceP,
                      std::function<bool()> soundOver) {
    i_soundP = std::move(soundP);
    i_paceP = std::move(paceP);
    i_soundOver = std::move(soundOver);
    if (!i_soundP) i_movieP->SetLeader({});   // its own clock: it goes with SetPaused
    if (i_clock.Now() > 0) SeekTo300(static_cast<long>(i_clock.Now()));
}

/** The clock of the song goes by the machine's time, the device by its own: the picture keeps to what is heard. */
double CSongMovie::HeardT(double clockT) const {
    // While the clock stands or waits, what was heard last may be of another place.
    if (!i_soundP || !i_paceP || i_soundP->IsOver() || !i_paceP->IsRunning()) return clockT;
    const double heardT = i_soundP->PlaceOf(i_soundP->FramesPlayed()) / 300;
    return std::abs(heardT - clockT) < kLead_NearT ? heardT : clockT;
}

void CSongMovie::SeekTo300(long time300) {
    i_movieP->SeekTo(static_cast<double>(time300) / 300);
    i_clock300 = i_clock.Now();
    i_movedT = kLead_NeverT;
}

MovieLead CSongMovie::Told() {
    const std::int64_t clock300 = i_clock.Now();
    const double nowT = CClock::Get().SteadyT();
    if (clock300 != i_clock300)
        i_movedT = clock300 > i_clock300 && clock300 - i_clock300 < kLead_Step300 ? nowT : kLead_NeverT;
    i_clock300 = clock300;
    MovieLead lead{.seconds = HeardT(static_cast<double>(clock300) / 300)};
    if (i_paceP) lead.rate = Rate();
    lead.runningB = i_paceP != nullptr && nowT - i_movedT < kLead_StandsT;
    lead.endedB = i_soundOver && i_soundOver();
    return lead;
}

double CSongMovie::Rate() const { return 1e6 / (kSectors_PerSecond * static_cast<double>(i_paceP->Period())); }

void CSongMovie::TellSize() {
    PictureSize largest{1, 1};   // nobody looks
    for (const CGraphicsPort* const portP : i_graphics.Overlay()->Ports()) {
        const Rect place = portP->Place();
        largest.width = std::max(largest.width, place.Width());
        largest.height = std::max(largest.height, place.Height());
    }
    i_movieP->SetNeededSize(largest.width, largest.height);
}

double CSongMovie::Look() {
    TellSize();
    if (!i_soundP && i_paceP) i_movieP->SetTempo(Rate());
    if (i_movieP->Show()) i_graphics.MovieChanged();
    return i_movieP->NextShowIn();
}
