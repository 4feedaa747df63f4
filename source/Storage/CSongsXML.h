#pragma once
#include "Library/CSongStatus.h"
#include "Meta/CMeta.h"
#include "Storage/LibraryFiles.h"

class CSongDatabase;

/** The songs of "Songs.xml", the form in which old libraries keep them. It is read alone: what is saved is "Songs.vlb".
    Threads  main, within a CLoadingScope. */
class CSongsXML {
public:
    CSongsXML(CSongDatabase& database, CSongStatus status) : i_database(database), i_status(std::move(status)) {}
    /** Makes the songs; those of `meta` take their further values out of it. As ReadSongTable for errors: no song is
        made then. */
    OSErr Load(const CFileRef& file, const std::function<void(std::uint32_t id, CMeta& song)>& loadRest);

private:
    void LoadSong(const CCFDictionary& track, CMeta& song) const;

    CSongDatabase& i_database;
    CSongStatus i_status;
};
