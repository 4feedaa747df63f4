#pragma once
#include "SongFiles/CSongFileKeeper.h"
#include "SongFiles/CT_OnSongs.h"

/** Renames the owned files of songs after their songs, by the preference "Conform song name template". A name with
    unknown values leaves its song's files alone; a song that plays gets its name when it has ceased to; one that cannot
    be renamed goes to the list of those. */
class CT_ConformNames final : public CT_OnSongs {
public:
    /** Does nothing while "Conform Song Names" is off. Main thread; abortErr when there is no thread. */
    static OSErr Start(CSongDatabase& database, std::vector<SongID> songs, Done done = {});

private:
    CT_ConformNames(CSongDatabase& database, std::vector<SongID> songs, Done done);
    OSErr OnSong(CSongFiles& files) override;

    const std::shared_ptr<CSongFileKeeper> i_keeperRef;
};
