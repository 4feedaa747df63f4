#pragma once
#include "Graphics/CPlayWindowRule.h"
#include "Platform/OSErr.h"

class CGraphicsPorts;
class CSongPlay;

/** Whom a song that plays tells how it goes. Main thread; the song may be let go from within. */
class CSongPlayOwner {
public:
    virtual ~CSongPlayOwner() = default;
    /** The pre-roll is over; Begin is next, or Stop. */
    virtual void PreRollDone(CSongPlay& play, OSErr err) = 0;
    /** It has been sung, picture and sound. */
    virtual void SongEnded(CSongPlay& play) = 0;
    /** It cannot go on. */
    virtual void SongFailed(CSongPlay& play, OSErr err) = 0;
    /** Where the picture is shown; outlives the play. */
    [[nodiscard]] virtual CGraphicsPorts& Ports() = 0;
    /** How the video windows follow play and pause, by the preferences of now. */
    [[nodiscard]] virtual CPlayWindowRule WindowRule() const = 0;
};
