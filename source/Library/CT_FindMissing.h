#pragma once
#include "Library/CT_OnSongs.h"

/** Looks whether the files of these songs can be reached, and marks those that cannot ("Msng"). A file that is found in
    another place gets its song's place corrected. A disc that does not answer holds up nobody but this task. */
class CT_FindMissing final : public CT_OnSongs {
public:
    /** All songs when `songs` is empty. Main thread; abortErr when there is no thread. */
    static OSErr Start(CSongDatabase& database, std::vector<SongID> songs = {}, Done done = {});

private:
    CT_FindMissing(CSongDatabase& database, std::vector<SongID> songs, Done done);
    OSErr OnSong(CSongFiles& files) override;
    OSErr AtEnd(OSErr err) override;
    /** Tells the songs at once what was seen. */
    OSErr Tell();

    struct Seen {
        CSongFiles files;
        bool missingB;
    };
    std::vector<Seen> i_seen;   // what differs from what the songs said at the start of their block
};
