#pragma once
#include <functional>
#include <memory>
#include <set>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "Core/CWatchers.h"
#include "Files/CFileRef.h"
#include "Library/CListWatcher.h"
#include "Library/CMutex_ItemMap.h"
#include "Library/CPlayList.h"
#include "Library/CRowValues.h"
#include "Library/CSong.h"
#include "Library/CSongFollower.h"
#include "Library/LibrarySettings.h"
#include "Platform/CUserInterface.h"
#include "Threads/CHandle.h"
#include "Threads/CMutex.h"
#include "Values/PrefTypes.h"

class CSinger;
enum class SingerList : std::uint8_t;
using CMutex_SingerMap = CMutex_ItemMap<SingerID, CSinger>;

/** What the library asks of those above it. Main thread; outlives the database. */
class CSongDatabaseHost {
public:
    virtual ~CSongDatabaseHost() = default;
    /** Off while the application starts and ends: nothing becomes dirty then. */
    [[nodiscard]] virtual bool IsReady() const { return true; }
    /** In the middle of saves: throws nothing. */
    virtual void DirtyChanged(bool /*dirtyB*/) {}
    /** Renames the file, or folder, of a list whose name is still the old one. */
    virtual OSErr RenameListFile(const CPlayList& /*list*/, const SuperString& /*newName*/) { return noErr; }
    /** The singer who says that this list is his; SDB_kUninitializedID when nobody does. */
    [[nodiscard]] virtual SingerID FindListOwner(PlaylistID /*list*/) { return SingerID{SDB_kUninitializedID}; }
    virtual void StopPlayback() {}
    /** That row plays: not another one of its song. */
    [[nodiscard]] virtual bool IsPlaying(PlaylistID /*list*/, PLItemID /*item*/) { return false; }
    /** A file came into the cache, which may be above its limits now. */
    virtual void SongCached() {}
    /** A save runs: what it names must not go from the disc meanwhile. */
    [[nodiscard]] virtual bool IsSaving() const { return false; }
    /** May this song go? It plays, perhaps; the host asks, and stops it. */
    virtual bool MayDelete(SongID /*song*/) { return true; }
    /** A message that only tells, for when the user has time to read it. What he can do about it then is `act`, on
        the main thread, behind a button of that label; while the host lives, and as often as he likes. */
    virtual void Notify(std::string_view words, std::string_view detail, std::string_view label = {},
                        std::function<void()> act = {});
    /** The user wants no warning of this preference any more. */
    virtual void StopWarning(BoolPref preference);
    /** Shows the folder of a file. */
    virtual void Reveal(const CFileRef& /*file*/) {}
    /** The preference "Date Added Field *really* Updated". */
    [[nodiscard]] virtual bool IsDateAddedReal() const { return false; }
};

/** What "Library.xml" keeps beside the lists. */
struct LibraryFacts {
    SuperString currentVenue;
    std::vector<SuperString> searchPaths;   // folders watched for songs
    CCFDictionary otherKeys;                // what this program does not know
    friend bool operator==(const LibraryFacts&, const LibraryFacts&) = default;
};

/** All songs, lists and singers of the library, the counter of ids, and what must be saved.
    Threads  main, but for what says "any thread": those forward to the main thread and wait, or look up under a lock.
             A caller holds no lock.
    Owner    CApp. Destroyed on the main thread; sorts that still run find nothing any more. */
class CSongDatabase {
public:
    explicit CSongDatabase(CSongDatabaseHost& host);
    ~CSongDatabase();
    CSongDatabase(const CSongDatabase&) = delete;
    CSongDatabase& operator=(const CSongDatabase&) = delete;

    [[nodiscard]] CSongDatabaseHost& Host() const noexcept { return i_host; }
    /** Empties itself when the database goes. Lock it on the main thread alone. */
    [[nodiscard]] CHandle<CSongDatabase> Self() const noexcept { return i_self.Handle(); }

    // ---- Ids. Any thread. ----
    /** A number that nothing has yet. */
    [[nodiscard]] std::int32_t GetNextID();
    /** An id was met in a file: the next one is above it. */
    void NoteID(std::int32_t id);
    /** What the library's file keeps as "Next item ID (don't change this!!)". */
    [[nodiscard]] std::int32_t PeekNextID() const { return i_nextID.Get(); }

    // ---- Songs ----
    /** A song of its own id, or of the one that a file tells. Null, and logged, when that is taken or not over 0. */
    CSong* CreateSong(SongID id = SongID{SDB_kUninitializedID});
    /** Its row in the library's list; the one that it has when it is there already. */
    PLItemID AddSongToLibrary(CSong& song);
    std::vector<PLItemID> AddSongsToLibrary(std::span<const SongID> songs);
    /** Null when there is none. */
    [[nodiscard]] CSong* GetSong(SongID id) const;
    /** `work(song)` while the song cannot go; false without it. Any thread; short, no waits, no lock but a CMeta's. */
    template <class Work>
    bool WithSong(SongID id, Work&& work) const {
        return i_songsRef->With(id, std::forward<Work>(work));
    }
    [[nodiscard]] const std::shared_ptr<CMutex_SongMap>& Songs() const noexcept { return i_songsRef; }
    void SetSingerValues(std::shared_ptr<const CSingerValues> valuesRef) { i_singerValuesRef = std::move(valuesRef); }
    [[nodiscard]] const std::shared_ptr<const CSingerValues>& SingerValues() const noexcept {
        return i_singerValuesRef;
    }

    /** Who does what follows when songs change; null without. Set on the main thread. */
    void SetFollower(CSongFollower* followerP) noexcept { i_followerP.store(followerP); }
    [[nodiscard]] CSongFollower* Follower() const noexcept { return i_followerP.load(); }
    /** A place of the song names another file now. Any thread; under a CMeta's lock too. */
    void NoteFile(SongID song, const CMetaValue& file) const;

    /** The song's files are away, or back. Main thread. */
    void NoteMissing(SongID song, bool missingB);
    [[nodiscard]] std::vector<SongID> MissingSongs() const;

    /** What holds of the preferences now. Any thread; SetSettings main. */
    [[nodiscard]] std::shared_ptr<const LibrarySettings> Settings() const { return i_settings.Get(); }
    void SetSettings(LibrarySettings settings);
    /** The song that plays; 0 for none. Any thread; set on the main thread. */
    [[nodiscard]] SongID PlayingSong() const { return i_songP.Get(); }
    void SetPlayingSong(SongID song);
    /** While one lives, many songs change in one go: they mark nothing as dirty, whoever works does. Main thread. */
    class Batch {
    public:
        explicit Batch(CSongDatabase& database) : i_database(database) { ++database.i_batchesL; }
        ~Batch() { --i_database.i_batchesL; }
        Batch(const Batch&) = delete;
        Batch& operator=(const Batch&) = delete;

    private:
        CSongDatabase& i_database;
    };
    [[nodiscard]] bool IsInBatch() const noexcept { return i_batchesL > 0 || i_loadingB; }
    /** While one lives, files are being added, and a save can wait a moment; it may outlive the database. Main thread. */
    class Adding {
    public:
        explicit Adding(CSongDatabase& database) : i_databaseRef(database.Self()) { ++database.i_addingL; }
        ~Adding() {
            auto* const databaseP = i_databaseRef.Get();
            if (databaseP != nullptr) --databaseP->i_addingL;
        }
        Adding(const Adding&) = delete;
        Adding& operator=(const Adding&) = delete;

    private:
        CHandle<CSongDatabase> i_databaseRef;
    };
    [[nodiscard]] bool IsAddingToLibrary() const noexcept { return i_addingL > 0; }
    /** What the tasks on songs ask between two of them; true once the program ends. Shared, as a task may outlive the
        database. StopTasks main. */
    [[nodiscard]] std::shared_ptr<const std::atomic<bool>> Stopping() const noexcept { return i_stoppingRef; }
    void StopTasks() noexcept { i_stoppingRef->store(true, std::memory_order_relaxed); }

    // ---- Singers ----
    /** Of an id that a file tells, or of a new one. Null when the id is taken or is 0. */
    CSinger* AddSinger(PlaylistID venue, SingerID id = SingerID{SDB_kUninitializedID});
    /** A singer with his three lists and a row in the venue. */
    CSinger& NewSinger(PlaylistID venue, const SuperString& name = {});
    /** One of his lists; of an id that is taken as AddPlaylist does. */
    CPlayList& AddSingerList(CSinger& singer, SingerList which, PlaylistID id = kPlaylistID_New);
    [[nodiscard]] CSinger* GetSinger(SingerID id) const;
    [[nodiscard]] CSinger* GetSingerByName(const SuperString& name) const;
    /** In the order of their ids. */
    [[nodiscard]] std::vector<CSinger*> Singers() const;
    /** The singer who says that this list is his; SDB_kUninitializedID when nobody does. */
    [[nodiscard]] SingerID OwnerOf(PlaylistID list) const;

    // ---- Beside the lists ----
    [[nodiscard]] const LibraryFacts& Facts() const noexcept { return i_facts; }
    void SetFacts(LibraryFacts facts);

    // ---- Lists ----
    [[nodiscard]] CPlayList& Library() const noexcept { return *i_libraryP; }
    /** A new list. An id that another list has already is told in the log, and the list gets a new one; a singer's list
        whose singer cannot be found then becomes a user playlist. */
    CPlayList& AddPlaylist(SourceType type, const SuperString& name = {}, PlaylistID id = kPlaylistID_New);
    [[nodiscard]] CPlayList* GetPlayList(PlaylistID id) const;
    /** The first of its kind. */
    [[nodiscard]] CPlayList* GetPlayList(SourceType type) const;
    /** In the order of their ids. */
    [[nodiscard]] std::vector<CPlayList*> PlayLists() const;
    /** paramErr for the library and the head of the sources, fnfErr when there is none. */
    OSErr DeletePlaylist(PlaylistID id);

    // ---- Any thread: forwarded to the main thread and waited for. fnfErr when the list is gone. ----
    OSErr AddToList(PlaylistID list, std::vector<PLTarget> targets, RowIndex where, std::vector<PLItemID>& items);
    OSErr RemoveFromList(PlaylistID list, std::vector<PLItemID> items);
    OSErr MoveInList(PlaylistID list, std::vector<PLItemID> items, RowIndex to);
    OSErr GetSortedList(PlaylistID list, std::vector<PLRow>& rows);
    OSErr ForEachPLItem(PlaylistID list, const std::function<void(CPlayListItem&)>& proc);
    OSErr UpdateIndices(PlaylistID list);

    // ---- Commands ----
    /** The songs of these rows; a song that has several comes once. */
    [[nodiscard]] std::vector<SongID> SongsOf(const SDB_Selection& selection) const;
    /** Takes all references to these songs out of all lists, then the songs out of the library; files stay.
        userCanceledErr when one may not go, which is asked before anything is changed. */
    OSErr RemoveFromLibrary(std::span<const SongID> songs);
    /** Of these rows of the library's list those whose song has another row there. */
    [[nodiscard]] std::vector<PLItemID> DuplicatesIn(const SDB_Selection& selection) const;
    /** Takes them out: the songs stay where they are in other lists. */
    OSErr RemoveDuplicates(const SDB_Selection& selection);

    // ---- Changes ----
    /** Any thread. The first reason is logged. */
    void SetDirty(bool dirtyB, std::string_view reason = {});
    [[nodiscard]] bool IsDirty() const noexcept { return i_dirtyB; }
    /** Any thread; under a CMeta's lock too. Handed on 0.25 s after the first. */
    void QueueChange(SongID song, MetaKey key);
    /** Hands on what is queued now. */
    void FlushChanges();
    /** The places of these songs in the lists, and who watches them. */
    void UpdateItems(std::span<const SongID> songs, std::span<const MetaKey> keys);
    /** Any thread; under a CMeta's lock too. Singers count their changes themselves. */
    void QueueSingerChange();
    /** Grows with each change that the file of songs must hold. */
    [[nodiscard]] std::uint32_t SongsRevision() const noexcept { return i_songsRevisionL; }
    /** The library loads: nothing becomes dirty, songs queue nothing (CLoadingScope). */
    void SetLoading(bool loadingB) noexcept { i_loadingB.store(loadingB, std::memory_order_relaxed); }
    [[nodiscard]] bool IsLoading() const noexcept { return i_loadingB.load(std::memory_order_relaxed); }

    void AddWatcher(CListWatcher& watcher) { i_watchers.Add(watcher); }
    void RemoveWatcher(CListWatcher& watcher) { i_watchers.Remove(watcher); }
    template <class Say>
    void Tell(Say&& say) {
        i_watchers.Tell(std::forward<Say>(say));
    }
    // By the library's list.
    void SongsEnteredLibrary(CPlayList& library, std::span<const PLItemID> items);
    void SongsLeaveLibrary(CPlayList& library, std::span<const PLItemID> items);

private:
    /** `work` on the list, on the main thread; fnfErr when there is no such list any more. */
    [[nodiscard]] OSErr OnList(const char* nameZ, PlaylistID list, const std::function<OSErr(CPlayList& found)>& work);
    [[nodiscard]] std::vector<PLItemID> ItemsOf(const CPlayList& list, std::span<const SongID> songs) const;

    CSongDatabaseHost& i_host;
    CHandled<CSongDatabase> i_self{this};
    const std::shared_ptr<CMutex_SongMap> i_songsRef;
    const std::shared_ptr<CMutex_SingerMap> i_singersRef;
    std::shared_ptr<const CSingerValues> i_singerValuesRef;
    LibraryFacts i_facts;
    CMutex_ItemMap<PlaylistID, CPlayList> i_lists;
    CPlayList* i_libraryP = nullptr;
    std::size_t i_secondRowsL =
        0;   // rows of the library's list whose song has another one; too many rather than too few
    CMutexT<std::int32_t> i_nextID{Number(kPlaylistID_Library) + 1};
    CMutexT<std::shared_ptr<const LibrarySettings>> i_settings{std::make_shared<const LibrarySettings>()};
    std::atomic<CSongFollower*> i_followerP{nullptr};
    CMutexT<SongID> i_songP{SongID{0}};
    const std::shared_ptr<std::atomic<bool>> i_stoppingRef = std::make_shared<std::atomic<bool>>(false);
    std::atomic<long> i_batchesL{0};
    long i_addingL = 0;
    CMutexT<std::vector<SongChange>> i_changes;
    ForkID i_changesTimer = 0;
    std::atomic<bool> i_loadingB{false}, i_singersChangedB{false};
    std::uint32_t i_songsRevisionL = 0;
    bool i_dirtyB = false;
    bool i_reasonToldB = false;
    std::set<std::int32_t> i_missing;
    CWatchers<CListWatcher> i_watchers;
};
