#pragma once
#include <string>
#include <vector>

#include "Storage/CKeptSongs.h"
#include "Storage/CLibraryHost.h"
#include "Storage/CSingerLoader.h"
#include "Storage/CSongStore.h"

/** How a load ended. */
struct LibraryReport {
    std::vector<std::string> problems;   // what was damaged, missing or there twice, one a line
    std::vector<CFileRef> damaged;       // files that are never written over: set aside first
    OSErr err = noErr;                   // the first reason why something could not be read; fnfErr: no songs' file
    std::string dirtyReason;             // why the library must be saved; empty: it is as its files have it
    bool tooNewB = false;                // of a later program: it is never saved
    bool emptyB = false;                 // there was no library
    bool wholeB = true;                  // every song of the files was read
    std::shared_ptr<const CKeptSongs> keptRef;   // a copy that knows songs which were not brought back from it
    bool storesB = false;                        // there is a folder of music stores
};

/** Loads a library into an empty database: songs, then all lists and singers that a walk of the root finds, which runs
    beside the reading of the songs.
    Threads  main, before anybody saves; shows its progress by the host.
    Errors   userCanceledErr: the library is of a later program, and the user would rather quit. A file of the songs
             that its disc or a permission keeps back: its status, once the user has tried often enough. A damaged
             file is told by an alert and stands in the report; all that could be read is there. */
class CLibraryLoader {
public:
    CLibraryLoader(CSongDatabase& database, CSongStore& songs, const LibraryPlaces& places, CLibraryHost& host)
        : i_database(database), i_host(host), i_songs(songs), i_places(places) {}
    OSErr Load(LibraryFileMap& files, LibraryReport& report);

private:
    OSErr WaitUntilReadable();
    OSErr TellKeptBack(const CFileRef& file, OSErr err, bool againB, bool& tryB);
    OSErr Read(LibraryImage& image);
    OSErr AskIfTooNew(const LibraryImage& image);
    void MendSongs();
    void NoteIDs(const LibraryImage& image);
    void LoadIndex(LibraryImage& image);
    void LoadLists(LibraryImage& image, CPlaylistLoader& loader, LibraryFileMap& files);
    void Verify(const LibraryImage& image, const CPlaylistLoader& loader, bool changedB);
    void Problem(std::string words);

    CSongDatabase& i_database;
    CLibraryHost& i_host;
    CSongStore& i_songs;
    const LibraryPlaces& i_places;
    OSErr i_songsErr = noErr;
    bool i_changedB = false;   // something is not as the files have it
    LibraryReport* i_reportP = nullptr;
};
