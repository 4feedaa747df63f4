#pragma once
#include <memory>
#include <vector>

#include "Library/CSongFiles.h"
#include "Threads/CHandle.h"
#include "Threads/CS_MainThread_AbortProc.h"

/** What the zip of a song tells the main thread: asks whether the song still stands as it was packed, and puts into its
    places what has become of its files. The work on the disc is the worker's.
    Threads  made on the worker, which waits for it.
    Errors   fnfErr: the song has gone; opWrErr: its sound or graphics are other files now; abortErr without a
             database. */
class CSong_ZipCompletion final : public CS_MainThread_AbortProc {
public:
    struct Place {
        SDB_SongFile type;
        CFileRef file;   // empty: the place is emptied
    };
    CSong_ZipCompletion(CHandle<CSongDatabase> databaseRef, const CSongFiles& packed, std::vector<Place> places = {});

protected:
    OSErr Operate() override;

private:
    const CHandle<CSongDatabase> i_databaseRef;
    const CSongFiles& i_packed;
    const std::vector<Place> i_places;
};
