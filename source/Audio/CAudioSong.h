#pragma once
#include <string>

#include "Audio/CAS_AudioRing.h"

/** What the player needs of the song that it plays.
    Threads  any, unless told otherwise; a call must not wait for the main thread. */
class CAudioSong {
public:
    virtual ~CAudioSong() = default;
    [[nodiscard]] virtual std::string Name() const = 0;
    /** The ring that is filled for it; null before. The song closes it. */
    [[nodiscard]] virtual Ref<CAS_AudioRing> AudioSpool() const = 0;
    /** 300ths; 0: none was set. */
    [[nodiscard]] virtual long TrimStart() const = 0;
    /** Filled by a cooperative task, which only goes on while the main thread yields. */
    [[nodiscard]] virtual bool IsCooperative() const = 0;
    /** 0 idle, 1 starting, 2 playing. */
    [[nodiscard]] virtual long PlayState() const = 0;
    /** Why it cannot be played on; noErr while it can. */
    virtual OSErr PlayErr() const = 0;
    /** May end when its sound is used up; read by the render thread, so an atomic. */
    [[nodiscard]] virtual bool MayEnd() const noexcept { return true; }
    /** Of the whole song, picture and sound, 0 to 1. Main thread. */
    virtual OSErr Seek(double position) = 0;
    /** Says that it is being sought, or not; answers what was. */
    virtual bool ExchangeSeeking(bool seekingB) = 0;
};
