#pragma once
#include "Library/CT_OnSongs.h"

/** Moves the owned files of songs to the trash, and takes the songs out of the library: all files of a song, or none,
   and then the song stays. Referenced files are not touched. */
class CT_TrashSongs final : public CT_OnSongs {
public:
    /** Main thread; abortErr when there is no thread. */
    static OSErr Start(CSongDatabase& database, std::vector<SongID> songs, Done done = {});

private:
    CT_TrashSongs(CSongDatabase& database, std::vector<SongID> songs, Done done);
    OSErr OnSong(CSongFiles& files) override;
    OSErr AtEnd(OSErr err) override;

    std::vector<SongID> i_gone;
    OSErr i_firstErr = noErr;
};
