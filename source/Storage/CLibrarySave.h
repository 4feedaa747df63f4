#pragma once
#include <atomic>
#include <functional>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Library/LibraryIDs.h"
#include "Storage/CPlaylistWriter.h"
#include "Storage/CSongStore.h"

/** One list to be written: into its file, or into a new one of its name in `folder`. */
struct ListSave {
    CPlaylistWriter list;
    PlaylistID id;
    std::string name;
    CFileRef folder, file;
    std::uint32_t revisionL;
    bool writtenB = false;
};

/** One singer to be written: into his folder, or into a new one of his name in `venue`. */
struct SingerSave {
    SingerRecord record;
    SingerID id{0};
    std::string name;
    CFileRef venue, folder;
    std::uint32_t revisionL = 0;
    bool recordB = false;   // "Singer.xml" too, not his lists alone
    bool writtenB = false;
    std::vector<ListSave> lists;
};

/** "Library.xml": the library's own list whole, the others by name. */
struct IndexSave {
    LibraryIndex index;
    CPlaylistWriter library;
    std::uint32_t libraryRevisionL;
    bool writtenB = false;
};

/** One save of a library: what is to be written, gathered on the main thread, and the writing of it. Songs, then lists
    and singers, "Library.xml" at last, so that its counter of ids is never ahead of what it counts; then the files of
    lists that are no more go.
    Threads  filled on the main thread, then given to one worker at a time; read on the main thread when it is done.
    Errors   the first failure and its file are kept. A failure of the songs ends the save, one of a list leaves the
             others to be written. Every file is the old or the new one. Nothing is shown. */
class CLibrarySave {
public:
    CLibrarySave(std::shared_ptr<CSongStore> songs, CFileRef root)
        : i_songs(std::move(songs)), i_root(std::move(root)) {}

    // What to write.
    bool songsB = false;
    std::uint32_t songsRevisionL = 0;
    std::vector<ListSave> lists;
    std::vector<SingerSave> singers;
    std::optional<IndexSave> index;
    std::vector<CFileRef> gone;         // files of lists that are no more
    std::set<CFileRef::Path> damaged;   // never written over: set aside first
    std::set<std::string> taken;        // files of lists and singers, in small letters
    std::function<OSErr()> checkRoot;   // is the library's folder still the one that it was?

    /** Something has no file yet: `taken` must be known. */
    [[nodiscard]] bool NeedsNames() const;
    void RunSongs();
    void RunLists();
    [[nodiscard]] OSErr Err() const noexcept { return i_err; }
    /** The file that could not be written; the songs' when the save failed before. */
    [[nodiscard]] const CFileRef& FailedFile() const noexcept { return i_failed; }
    /** All was written; it is the file of a list that is no more which could not be deleted. */
    [[nodiscard]] bool FailedToDelete() const noexcept { return i_failedToDeleteB; }
    [[nodiscard]] bool SongsWritten() const noexcept { return i_songsWrittenB; }
    /** True while a worker writes. Any thread. */
    std::atomic<bool> runningB{false};

private:
    void WriteList(ListSave& list);
    void WriteSinger(SingerSave& singer);
    OSErr MakeSingerFolder(SingerSave& singer);
    OSErr NewName(const CFileRef& folder, const std::string& title, std::string_view extension, CFileRef& file);
    OSErr Write(const CFileRef& file, const std::function<OSErr()>& write);
    void Note(OSErr err, const CFileRef& file);

    const std::shared_ptr<CSongStore> i_songs;
    const CFileRef i_root;
    OSErr i_err = noErr;
    CFileRef i_failed;
    bool i_songsWrittenB = false, i_failedToDeleteB = false;
};
