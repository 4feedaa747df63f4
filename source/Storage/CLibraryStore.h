#pragma once
#include <map>
#include <memory>

#include "Core/CBackOff.h"
#include "Library/CListWatcher.h"
#include "Storage/CLibraryHost.h"
#include "Storage/CLibraryLoader.h"
#include "Storage/CLibrarySave.h"
#include "Threads/CHandle.h"

enum class SaveForce : bool {
    kDirty,   // what has changed since it was last written
    kAll      // everything
};

/** The library on the disc: loads it into a database at the start, and saves what has changed. Knows which file holds
    which list and singer, and at which revision; songs, lists and singers count their changes themselves.
    Threads  main; the writing runs on a worker, one save at a time.
    Owner    whoever owns the database, which outlives it. The folder must be there; it is never made here, so that a
             disc that went away is not written beside.
    Errors   a save that failed leaves the old files whole and the database dirty, is told by one alert until one
             succeeds, and is tried again as CBackOff says. */
class CLibraryStore final : private CListWatcher {
public:
    /** `backOffP`: who saves other things beside the library shares it; it outlives this. Null: one of its own. */
    CLibraryStore(CSongDatabase& database, LibraryPlaces places, CLibraryHost& host = CLibraryHost::Nobody(),
                  CBackOff* backOffP = nullptr);
    /** Waits for a save that runs. */
    ~CLibraryStore() override;
    CLibraryStore(const CLibraryStore&) = delete;
    CLibraryStore& operator=(const CLibraryStore&) = delete;

    /** Into an empty database, once. As CLibraryLoader for errors. */
    OSErr LoadLibrary();
    [[nodiscard]] const CFileRef& Root() const noexcept { return i_places.root; }
    [[nodiscard]] const LibraryReport& Report() const noexcept { return i_report; }
    /** Once dirty marks count: the load may have found what must be saved; songs that a damaged file lost are looked
        for in the music folder. */
    void AfterStart();

    /** Somebody is about to change the library: names of an old program, which some discs refuse, are changed, and a
        folder that cannot be written is told. Once, after AfterStart. */
    void BeginChanges();

    /** Starts a save. noErr: it runs, or there is nothing to write. queueNotDoneErr: not now, ask again (another one
        runs, or the last one failed a moment ago). opWrErr: the library is of a later program, or was not loaded. */
    OSErr SaveLibrary(SaveForce force);
    /** The same here and now; how it ended. For programs without a main loop, and tests. */
    OSErr SaveLibraryNow(SaveForce force);
    /** Writes all of it into `folder`, as a library of its own; on a worker, the main thread pumps. The library here and
        what is known of it stay as they are. */
    OSErr SaveCopy(const CFileRef& folder);
    [[nodiscard]] bool IsSaving() const noexcept { return i_saveRef != nullptr; }
    /** How the last save ended. */
    [[nodiscard]] OSErr LastSaveErr() const noexcept { return i_lastErr; }

    /** The file of a user playlist, or the folder of a venue, takes the list's new name. While a save runs it does so
        after it. */
    OSErr RenameListFile(const CPlayList& list, const SuperString& newName);
    [[nodiscard]] const LibraryFileMap& Files() const noexcept { return i_files; }

    // By the tasks, on the main thread.
    void SongsSaved(const std::shared_ptr<CLibrarySave>& saveRef);
    void Saved(const std::shared_ptr<CLibrarySave>& saveRef);

private:
    void ListRemoved(PlaylistID list) override;
    [[nodiscard]] std::shared_ptr<CLibrarySave> Gather(SaveForce force);
    void GatherLists(CLibrarySave& save, SaveForce force);
    void GatherSingers(CLibrarySave& save, SaveForce force);
    void GatherIndex(CLibrarySave& save, SaveForce force);
    [[nodiscard]] ListSave MakeListSave(const CPlayList& list, const CFileRef& folder) const;
    [[nodiscard]] CFileRef VenueFolder(PlaylistID venue) const;
    [[nodiscard]] OSErr CheckRoot() const;
    [[nodiscard]] OSErr MayWrite() const;
    void UpgradeNames();
    void UpgradeName(CFileRef& file);
    void Follow(const CFSPathModder& moved);
    [[nodiscard]] OSErr Refuse(SaveForce force) const;
    void NoteWritten(const CLibrarySave& save);
    void NoteFailure(const CLibrarySave& save);
    OSErr RenameNow(PlaylistID list, const SuperString& newName);
    void MarkAllWritten();
    class CT_SaveCopy;

    CSongDatabase& i_database;
    CLibraryHost& i_host;
    const LibraryPlaces i_places;
    CHandled<CLibraryStore> i_self{this};
    const std::shared_ptr<CSongStore> i_songs;
    FileIdentity i_rootIdentity;                   // of the folder as it was loaded
    bool i_rootKnownB = false, i_filesB = false;   // `i_filesB`: library files stand in it
    bool i_refusedB = false;                       // it was not loaded: nothing is saved over it
    LibraryReport i_report;
    LibraryFileMap i_files;

    // What the files hold.
    std::map<PlaylistID, std::uint32_t> i_listRevisions;
    std::map<SingerID, std::uint32_t> i_singerRevisions;
    std::optional<std::uint32_t> i_songsRevision, i_libraryRevision;
    std::optional<LibraryIndex> i_index;
    std::vector<CFileRef> i_gone;
    std::set<CFileRef::Path> i_damaged;

    std::shared_ptr<CLibrarySave> i_saveRef;                     // the one that runs
    std::vector<std::pair<PlaylistID, SuperString>> i_renames;   // after it
    bool i_againB = false;                                       // another one was asked for meanwhile
    OSErr i_lastErr = noErr;
    bool i_toldB = false;   // of the failures since the last success
    CBackOff i_ownBackOff;
    CBackOff& i_backOff;
};
