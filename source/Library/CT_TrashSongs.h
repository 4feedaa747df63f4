#pragma once
#include "Core/FSrTrash.h"
#include "Library/CT_OnSongs.h"

/** Moves the owned files of songs to the trash, and takes the songs out of the library: all files of a song, or none,
    and then the song stays. A song that plays when its turn comes, or began to while the task ran, stays with all of
   its files (opWrErr). Referenced files are not touched. */
class CT_TrashSongs final : public CT_OnSongs {
public:
    /** Main thread; abortErr when there is no thread. */
    static OSErr Start(CSongDatabase& database, std::vector<SongID> songs, Done done = {});

private:
    CT_TrashSongs(CSongDatabase& database, std::vector<SongID> songs, Done done);
    OSErr OnSong(CSongFiles& files) override;
    OSErr AtEnd(OSErr err) override;

    struct Trashed {
        SongID song;
        std::vector<std::pair<TrashedFile, CFileRef>> files;   // and where they lay
    };
    static void Restore(const Trashed& trashed);

    std::vector<Trashed> i_trashed;
    OSErr i_firstErr = noErr;
};
