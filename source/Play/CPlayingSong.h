#pragma once
#include "Platform/OSErr.h"

/** What the application asks of the song that plays now.
    Threads  main, with the holder of the current song locked. */
class CPlayingSong {
public:
    virtual ~CPlayingSong() = default;
    [[nodiscard]] virtual bool IsPlaying() const = 0;
    /** Draws what has fallen due; `forcedB` also when the window would not ask for it. */
    virtual void VideoIdle(bool forcedB) = 0;
    virtual void Stop() = 0;
};
