#pragma once
#include <filesystem>

#include "Library/CLibraryBackup.h"
#include "Library/CSongRecordMeta.h"
#include "Library/LibraryFiles.h"

class CSongDatabase;

/** Where a library lies, and what its songs' files are measured by. */
struct LibraryPlaces {
    CFileRef root;
    std::filesystem::path musicFolder, cacheFolder;
};

/** The songs of a database in "Songs.vlb" and "Songs Meta.xml".
    Threads  Load on the main thread, before anybody saves; Save on one worker at a time.
    Errors   statuses, logged. A file that could not be read whole is set aside before the first save; one of a later
             program is never written over. */
class CSongStore {
public:
    CSongStore(CSongDatabase& database, LibraryPlaces places);

    /** Makes the songs. fnfErr: there is no library here. Any other failure: the songs that could be read are there;
        see IsTooNew. A song whose id is taken gets a new one. */
    OSErr Load();
    /** The file is a later program's: the user chooses whether to quit (TooNewText). */
    [[nodiscard]] bool IsTooNew() const noexcept { return !i_tooNew.Empty(); }
    [[nodiscard]] const SuperString& TooNewText() const noexcept { return i_tooNew; }

    /** Writes all songs, after a copy of the files the first time. opWrErr for a later program's file, and when a
       restore that a crash cut short could not be ended. abortErr: a song went meanwhile; the old file stands, the
       database is dirty again, save later. */
    OSErr Save();

private:
    OSErr LoadRecords(SongDictionaries& meta);
    OSErr SetAside();
    OSErr WriteRecords(SongDictionaries& meta);

    CSongDatabase& i_database;
    const LibraryPlaces i_places;
    CSongRecordMeta i_forms;
    CLibraryBackup i_backup;
    SuperString i_tooNew;
    bool i_songsDamagedB = false, i_metaDamagedB = false;
    bool i_betweenB = false;   // the files are half of one library, half of another
};
