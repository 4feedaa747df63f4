#pragma once

/** Who shows what plays: the desktop's transport, a phone's page. Main thread, with nothing locked; a watcher may ask
    CPlayControl, and give it orders, from within.
    Owner    whoever made it; it takes itself out before it goes. */
class CPlayWatcher {
public:
    virtual ~CPlayWatcher() = default;
    /** State, song, row or pause are others now. */
    virtual void PlayChanged() {}
    /** Pitch, tempo, volume, mute, vocal mode or the device. */
    virtual void SettingsChanged() {}
    /** A song that was cut off by hand can be had back (CPlayControl::InterruptedSong), or another one, or none. */
    virtual void GoBackChanged() {}
};
