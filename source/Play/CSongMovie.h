#pragma once
#include <functional>
#include <memory>

#include "Movies/CAS_QuickTimeVideo.h"
#include "Threads/CHandle.h"

class CGraphics;
class CGraphicsClock;
class CHeardSound;
class CPlayPace;

/** The movie of one play of a video song: led by what is heard, or by the song's clock where no sound tells; looked at
    when its next picture is due, and made no larger than the largest place that shows it.
    Threads  main.
    Owner    CSongPicture; clock and graphics outlive it. The movie itself is the song's. */
class CSongMovie final {
public:
    CSongMovie(Ref<CAS_QuickTimeVideo> movieP, CGraphics& graphics, const CGraphicsClock& clock);
    ~CSongMovie();
    CSongMovie(const CSongMovie&) = delete;
    CSongMovie& operator=(const CSongMovie&) = delete;

    /** The clock runs: null for a song without sound. `soundOver`: all of the sound was heard, or there is none. */
    void Lead(std::shared_ptr<const CHeardSound> soundP, std::shared_ptr<const CPlayPace> paceP,
              std::function<bool()> soundOver);
    /** The clock of the song is there already. */
    void SeekTo300(long time300);
    [[nodiscard]] CAS_QuickTimeVideo& Movie() const noexcept { return *i_movieP; }
    /** Shows what is due; the seconds until it is worth another look. */
    double Look();

private:
    [[nodiscard]] MovieLead Told();
    [[nodiscard]] double HeardT(double clockT) const;
    /** Seconds of song a second. */
    [[nodiscard]] double Rate() const;
    void TellSize();

    const Ref<CAS_QuickTimeVideo> i_movieP;
    CGraphics& i_graphics;
    const CGraphicsClock& i_clock;
    std::shared_ptr<const CHeardSound> i_soundP;
    std::shared_ptr<const CPlayPace> i_paceP;
    std::function<bool()> i_soundOver;
    std::int64_t i_clock300 = -1;        // as it was seen last
    double i_movedT = -1e9;              // steady time at which it last moved
    CHandled<CSongMovie> i_self{this};   // for the timer, which may outlive this
};
