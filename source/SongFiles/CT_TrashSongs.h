#pragma once
#include "Files/FSrTrash.h"
#include "SongFiles/CSongFileKeeper.h"
#include "SongFiles/CT_OnSongs.h"

/** Moves the owned files of songs to the trash, and takes the songs out of the library: all files of a song, or none,
    and then the song stays. A song that plays when its turn comes, or began to while the task ran, stays with all of
   its files (opWrErr). Referenced files are not touched, and a file that other songs name goes with the last of them. */
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
        std::vector<CFileRef::Path> left;                      // what other songs name
    };
    static void Restore(const Trashed& trashed);
    void KeepPlaying(SongID playing);

    const std::shared_ptr<CSongFileKeeper> i_keeperRef;
    std::vector<Trashed> i_trashed;
    std::vector<SongID> i_gone;   // the songs of i_trashed
    OSErr i_firstErr = noErr;
};
