#pragma once
#include "Play/CSongMovie.h"
#include "Threads/CHandle.h"
#include "Threads/CT_Timer.h"

/** Looks at a movie whenever a picture of it is due. It ends itself when the song has gone. */
class CT_MovieLook final : public CT_Timer {
public:
    explicit CT_MovieLook(CHandle<CSongMovie> movieRef)
        : CT_Timer("movie look", 0.01), i_movieRef(std::move(movieRef)) {}
    OSErr Timer() override {
        CSongMovie* const movieP = i_movieRef.Get();
        if (movieP == nullptr) return timerDisposeErr;
        SetFireInterval(movieP->Look());
        return timerKeepErr;
    }

private:
    const CHandle<CSongMovie> i_movieRef;
};
