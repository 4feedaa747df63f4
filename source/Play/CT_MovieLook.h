#pragma once
#include <memory>

#include "Threads/CT_Timer.h"
#include "Play/CSongMovie.h"

/** Looks at a movie whenever a picture of it is due. It ends itself when the song has gone. */
class CT_MovieLook final : public CT_Timer {
public:
    explicit CT_MovieLook(std::weak_ptr<CSongMovie*> movieRef)
        : CT_Timer("movie look", 0.01), i_movieRef(std::move(movieRef)) {}
    OSErr Timer() override {
        const auto movieRef = i_movieRef.lock();
        if (movieRef == nullptr) return timerDisposeErr;
        SetFireInterval((*movieRef)->Look());
        return timerKeepErr;
    }

private:
    const std::weak_ptr<CSongMovie*> i_movieRef;
};
