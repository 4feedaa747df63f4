#pragma once
#include <functional>
#include <string>

#include "Storage/LibraryImage.h"

/** The walk of a library's root: reads every property list below it. Names that begin with "~" are passed over, as are
    files that the songs' store reads, and those that were set aside.
    Threads  any; reads the disc, touches no database.
    Errors   a file that cannot be read stands in `unread`, and the walk goes on; fnfErr when there is no root. */
class SDB_ForEach_LoadLibrary {
public:
    explicit SDB_ForEach_LoadLibrary(CFileRef root) : i_root(std::move(root)) {}
    OSErr Run(LibraryImage& image);

private:
    using Work = std::function<void(const std::string& name, const CFileRef& ref, bool folderB)>;
    /** Of what a folder holds; links count as what they point to. A file that the disc keeps back is Unread, one that
        has gone since its name was read is nothing. */
    OSErr ForEachIn(const CFileRef& folder, const Work& work);
    void LoadPlaylistFile(const CFileRef& file, LibraryImage& image);
    /** All lists of a folder; `singerFile` is none. */
    void LoadLists(const CFileRef& folder, std::vector<PlaylistFile>& lists, std::string_view singerFile = {});
    void LoadVenue(const CFileRef& folder, VenueFolder& venue);
    void LoadSinger(const CFileRef& folder, SingerFolder& singer);
    void Unread(const CFileRef& file, OSErr err);

    const CFileRef i_root;
    std::vector<UnreadFile> i_unread;
};
