#pragma once
#include "App/CSaveTarget.h"
#include "Core/CBackOff.h"
#include "Library/CSongDatabase.h"
#include "Platform/CMountTable.h"
#include "SongFiles/CLibraryCommands.h"
#include "SongFiles/CSongFileWork.h"
#include "Storage/CLibraryHost.h"
#include "Storage/CLibraryLock.h"
#include "Storage/CLibraryStore.h"

class CApp;

/** The library as the application has it: owns the database, answers what it asks of those above it, and is what the
    save timer and the quit save.
    Threads  main.
    Owner    CApp. */
class CAppLibrary final : public CSongDatabaseHost, public CLibraryHost, public CSaveTarget {
public:
    explicit CAppLibrary(CApp& app);
    ~CAppLibrary() override;

    [[nodiscard]] CSongDatabase& Database() noexcept { return i_database; }
    /** Loads the library of this root. userCanceledErr when the user would rather quit; opWrErr, told, when another
        program changes it. */
    OSErr Load(LibraryPlaces places);
    /** What a user may want of the library. */
    [[nodiscard]] CLibraryCommands& Commands() noexcept { return i_commands; }
    /** Null before Load. */
    [[nodiscard]] CLibraryStore* Store() noexcept { return i_store.get(); }
    /** The application is ready, and the library was loaded: what the load found to be saved becomes dirty. */
    void AfterStart();
    /** Twice a second: a disc that came or went makes songs found or missing, and so do files that are back. */
    void Idle();

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
    void SongsLost(long countL) override;
    [[nodiscard]] std::string_view WhySaveAnew() const override;
    [[nodiscard]] bool IsDateAddedReal() const override;
    void StopWarning(std::string_view preference) override;

    // What the save timer and the quit ask.
    [[nodiscard]] bool IsDirty() const override { return i_database.IsDirty() || i_othersDirtyB; }
    [[nodiscard]] bool IsAddingToLibrary() const override { return i_database.IsAddingToLibrary(); }
    void SetDirty(bool dirtyB) override { i_othersDirtyB = dirtyB; }
    /** The database asks the same. */
    [[nodiscard]] bool IsSaving() const override { return i_store != nullptr && i_store->IsSaving(); }
    OSErr Save(bool lastB) override;
    /** After a save that failed, of the library or of what is saved beside it. */
    [[nodiscard]] CBackOff& BackOff() noexcept { return i_backOff; }

private:
    CApp& i_app;
    CLibraryLock i_lock;
    CSongDatabase i_database;
    CSongFileWork i_files;
    CLibraryCommands i_commands;
    CBackOff i_backOff;
    std::unique_ptr<CLibraryStore> i_store;   // before the database goes
    bool i_othersDirtyB = false;              // what is saved beside the library: the preferences
    CMountTable i_mounts;
    void LookForMarked();

    bool i_looksB = false;   // whether what is missing is back,
    double i_lookAtT = 0;    // and when again
    bool i_purgesB = false, i_purgeAgainB = false;
};
