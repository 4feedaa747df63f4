#pragma once
#include <filesystem>

#include "Storage/CLibraryBackup.h"
#include "Storage/CLibraryHost.h"
#include "Storage/CSongRecordMeta.h"
#include "Storage/LibraryFiles.h"

class CKeptSongs;
class CSong;
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
    CSongStore(CSongDatabase& database, LibraryPlaces places, CLibraryHost& host = CLibraryHost::Nobody());

    /** Ends a restore that a crash cut short, before the first file is read. By Load too. */
    OSErr FinishRestore();
    /** Whether the library's files open and give their first bytes; `file` is the first that does not. A file that a
        disc or a permission keeps back is whole, and comes back with it: nothing may take its place. */
    OSErr CanRead(CFileRef& file) const;
    /** Makes the songs, from "Songs.vlb", else from "Songs.xml". fnfErr: there is no library here. Any other failure: the
        songs that could be read are there; see IsTooNew. A song whose id is taken gets a new one. */
    OSErr Load();
    /** A songs' file that could not be read whole: what a copy has and the database has not. How many songs that were. */
    std::size_t LoadMissing(const CKeptSongs& kept);
    /** A song of a copy, under its id. Null when that is taken. */
    CSong* MakeLost(const SongRecord& record);
    [[nodiscard]] bool AreSongsDamaged() const noexcept { return i_songsDamagedB && !IsTooNew(); }
    /** A file was kept back by its disc or its permissions: nothing is saved. */
    [[nodiscard]] bool IsKeptBack() const noexcept { return i_keptBackB; }
    /** The file is a later program's: the user chooses whether to quit (TooNewText). */
    [[nodiscard]] bool IsTooNew() const noexcept { return !i_tooNew.Empty(); }
    [[nodiscard]] const SuperString& TooNewText() const noexcept { return i_tooNew; }

    /** The file is an older program's. */
    [[nodiscard]] bool IsOlder() const noexcept { return i_olderB; }
    /** Every song of the files was read, so that one that is not there is gone. */
    [[nodiscard]] bool IsWhole() const noexcept { return i_wholeB; }

    /** Before the first file of the library is written: a copy of all of them, and what is damaged gets another name.
        Once; opWrErr for a later program's library, for one that was kept back, and when a restore that a crash cut
        short could not be ended. */
    OSErr Prepare();
    /** Writes all songs, after Prepare. Songs that come or go meanwhile may be in the file or not: their change makes the
        database dirty for the next save. */
    OSErr Save();

private:
    OSErr LoadRecords(SongDictionaries& meta);
    OSErr LoadXML(SongDictionaries& meta);
    void LoadRest(std::uint32_t id, SongDictionaries& meta, CMeta& song);
    OSErr SetAside();
    OSErr WriteRecords(SongDictionaries& meta);

    CSongDatabase& i_database;
    CLibraryHost& i_host;
    const LibraryPlaces i_places;
    CSongRecordMeta i_forms;
    CLibraryBackup i_backup;
    SongDictionaries i_restOfLost;   // what "Songs Meta.xml" has of songs that were not read
    SuperString i_tooNew;
    std::uint8_t i_flags = 0;   // of the header: kept
    bool i_songsDamagedB = false, i_metaDamagedB = false, i_olderB = false, i_wholeB = false;
    bool i_betweenB = false;   // the files are half of one library, half of another
    bool i_keptBackB = false;
};
