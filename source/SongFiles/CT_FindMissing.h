#pragma once
#include "SongFiles/CSongFileKeeper.h"
#include "SongFiles/CT_OnSongs.h"

/** Looks whether the files of these songs can be reached, and marks those that cannot ("Msng"). A file that is found in
    another place gets its song's place corrected. A disc that does not answer holds up nobody but this task. */
class CT_FindMissing final : public CT_OnSongs {
public:
    /** All songs when `songs` is empty. Main thread; abortErr when there is no thread. */
    static OSErr Start(CSongDatabase& database, std::vector<SongID> songs = {}, Done done = {});
    /** A volume came or went at these folders: looks at the songs that have a file below one of them, and at those that
        are missing. As Start. */
    static OSErr StartBelow(CSongDatabase& database, std::vector<CFileRef::Path> folders, Done done = {});
    /** Looks whether songs that are marked as missing are back; shown to nobody. As Start. */
    static OSErr StartMarked(CSongDatabase& database, Done done);

private:
    CT_FindMissing(CSongDatabase& database, std::vector<SongID> songs, Done done);
    [[nodiscard]] bool IsConcerned(const CSongFiles& files) const;
    [[nodiscard]] bool HasBorrowedSound(const CSongFiles& files);
    OSErr OnSong(CSongFiles& files) override;
    OSErr AtEnd(OSErr err) override;
    /** Tells the songs at once what was seen. */
    OSErr Tell();

    struct Seen {
        CSongFiles files;
        bool missingB, borrowedB;
    };
    const std::shared_ptr<CSongFileKeeper> i_keeperRef;
    std::vector<CFileRef::Path> i_below;   // none: everywhere
    std::vector<Seen> i_seen;              // what differs from what the songs said at the start of their block
};
