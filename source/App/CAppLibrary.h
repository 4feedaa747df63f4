#pragma once
#include "App/CAppPart.h"
#include "Library/CSongDatabase.h"
#include "Platform/CMountTable.h"
#include "SongFiles/CLibraryCommands.h"
#include "SongFiles/CSongFileWork.h"
#include "Storage/CLibraryHost.h"
#include "Storage/CLibraryLock.h"
#include "Storage/CLibraryStore.h"
#include "Values/CPreferences.h"

class CApp;

/** The library as the application has it: owns the database, answers what it asks of those above it, loads it and saves
    it. */
class CAppLibrary final : public CAppPart, public CSongDatabaseHost, public CLibraryHost {
public:
    explicit CAppLibrary(CApp& app);
    ~CAppLibrary() override;

    [[nodiscard]] CSongDatabase& Database() noexcept { return i_database; }
    /** Finds the music folder, with the user's help, and loads its library. The reason why it is refused is told, and
        kept. */
    void Load();
    /** False when the load was refused: no window is shown then, and nothing is ever saved. */
    [[nodiscard]] bool IsLoaded() const noexcept { return i_loadedB; }
    /** Why it was refused, in one line. */
    [[nodiscard]] const std::string& Refusal() const noexcept { return i_refusal; }
    /** The order by slot, which others fall back on, is made on a worker before somebody waits for it. */
    void Sort();

    // At the quit.
    /** The last purge of the cache, when nobody waits for a song of it. */
    void BeginPurge();
    void WaitForPurge();
    /** What adds, looks and zips ends. */
    void AbortTasks();
    /** Its queue has a thread: it goes while there is somebody to end it. */
    void EndZipper();

    /** What a user may want of the library. */
    [[nodiscard]] CLibraryCommands& Commands() noexcept { return i_commands; }
    /** Null before Load. */
    [[nodiscard]] CLibraryStore* Store() noexcept { return i_store.get(); }
    /** Changes that the load made become dirty. */
    void Ready() override;
    /** A disc that came or went makes songs found or missing, and so do files that are back. */
    void Idle() override;
    [[nodiscard]] bool IsDirty() const override { return i_store != nullptr && i_database.IsDirty(); }
    OSErr Save() override;
    /** The database asks the same. */
    [[nodiscard]] bool IsSaving() const override { return i_store != nullptr && i_store->IsSaving(); }
    [[nodiscard]] bool IsAddingToLibrary() const { return i_database.IsAddingToLibrary(); }

    // What the database asks.
    [[nodiscard]] bool IsReady() const override;
    void DirtyChanged(bool dirtyB) override;
    OSErr RenameListFile(const CPlayList& list, const SuperString& newName) override;
    void StopPlayback() override;
    [[nodiscard]] bool IsPlaying(PlaylistID list, PLItemID item) override;
    void SongCached() override;
    Answer Ask(const Question& question) override;
    void Notify(std::string_view words, std::string_view detail, std::string_view label,
                std::function<void()> act) override;
    void ShowProgress(std::string_view words) override;
    void ShowSteps(std::size_t doneL, std::size_t totalL) override;
    void Reveal(const CFileRef& file) override;
    void SongsLost(long countL) override { i_lostL += countL; }
    [[nodiscard]] std::string_view WhySaveAnew() const override;
    [[nodiscard]] bool IsDateAddedReal() const override;
    void StopWarning(BoolPref preference) override;

private:
    [[nodiscard]] bool FindMusicFolder(CFileRef& root);
    OSErr LoadFrom(LibraryPlaces places);
    void LookForMarked();

    CApp& i_app;
    CLibraryLock i_lock;
    CSongDatabase i_database;
    CSongFileWork i_files;
    CLibraryCommands i_commands;
    std::unique_ptr<CLibraryStore> i_store;   // null before Load; goes before the database
    std::unique_ptr<CPrefFollower> i_follower;
    CMountTable i_mounts;
    bool i_loadedB = false;
    std::string i_refusal;
    long i_lostL = 0;        // rows whose song the load did not find
    bool i_looksB = false;   // whether what is missing is back,
    double i_lookAtT = 0;    // and when again
    bool i_purgesB = false, i_purgeAgainB = false;
    const std::shared_ptr<bool> i_lastPurgeRef = std::make_shared<bool>(false);   // the task may outlive the quit
};
