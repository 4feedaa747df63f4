#pragma once
#include "Library/CSongDatabase.h"
#include "Storage/LibraryImage.h"

/** Makes lists out of their records. Within a CLoadingScope.
    Threads  main.
    Rows     a row whose song is nowhere keeps its place, and its song's id is not given out again; in the library's own
             list, or when `DropMissing` says that the songs are all there, it leaves. */
class CPlaylistLoader {
public:
    explicit CPlaylistLoader(CSongDatabase& database) : i_database(database) {}
    /** The songs' file was read whole: what is not there is gone. */
    void DropMissing(bool dropB) noexcept { i_dropB = dropB; }

    /** "Building Playlist: ". A list of kind `type` of this record; null, and logged, for one that this program does
        not make lists of. */
    CPlayList* Load(const PlaylistRecord& record, SourceType type);
    /** Its keys and rows into a list that is there. */
    void Fill(CPlayList& list, const PlaylistRecord& record);
    /** Rows that left, as their songs are gone. */
    [[nodiscard]] long Lost() const noexcept { return i_lostL; }

private:
    [[nodiscard]] bool MakeItem(const CPlayList& list, const PlaylistItemRecord& record, PLNewItem& item);

    CSongDatabase& i_database;
    bool i_dropB = false;
    long i_lostL = 0;
};

/** The id under which a list is made that has this number in its file; a new one for what is none. */
[[nodiscard]] PlaylistID PlaylistIDOf(std::uint32_t number);
