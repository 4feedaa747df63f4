#pragma once
#include <memory>

#include "Cli/CCliHost.h"
#include "Cli/CliContext.h"
#include "Library/CSongDatabase.h"
#include "Meta/CMetaManager.h"
#include "SongFiles/CSongFileWork.h"
#include "Storage/CLibraryLock.h"
#include "Storage/CLibraryStore.h"

/** The library that a command works on: where it is, the lock on it, and its database.
    Threads  main.
    Owner    the command, for its own length; one at a time.
    Errors   statuses; what a load could not read is told on the error stream. */
class CCliLibrary {
public:
    explicit CCliLibrary(const CliContext& context);

    [[nodiscard]] const LibraryPlaces& Places() const noexcept { return i_places; }
    /** To look at it: what can be read is there. The exit status, told: 1 without a library. */
    int LoadToRead();
    /** After an answer from what could be read: the exit status, 1, told, when that was not all. */
    [[nodiscard]] int TellUnread() const;
    /** To change it: the exit status, told. 1 while a host has it, and when it cannot be read whole, since a save would
        leave out the rest. */
    int TakeWhole();
    /** To mend it, whatever it is like: 1, told, only while a host has it or when no folder can be made. */
    int TakeToMend();
    /** Looks at the disc, and marks the songs whose files are not there ("Msng"). */
    void MarkMissing(std::span<const SongID> songs);

    [[nodiscard]] bool IsEmpty() const { return i_store == nullptr || i_store->Report().emptyB; }
    [[nodiscard]] CSongDatabase& Database() noexcept { return i_database; }
    [[nodiscard]] CSongFileWork& Files() noexcept { return i_files; }
    /** What was changed, through the save of the application. */
    OSErr Save(SaveForce force = SaveForce::kDirty);

private:
    int Take();
    /** fnfErr when the folder holds no library; the database is an empty one then. */
    OSErr Load();
    int CannotLoad(OSErr err) const;

    const CliContext& i_context;
    const LibraryPlaces i_places;
    CLibraryLock i_lock;
    CCliHost i_host;
    CMetaManager i_metas;
    CSongDatabaseHost i_above;
    CSongDatabase i_database;
    CSongFileWork i_files{i_database};
    std::unique_ptr<CLibraryStore> i_store;   // goes before the database
};

/** The exit status: a host has the library. */
int CliInUse(const CliContext& context, OSErr err);
[[nodiscard]] bool HoldsLibrary(const std::filesystem::path& folder);
/** Where the library of a command lies; nothing is made. */
[[nodiscard]] LibraryPlaces CliLibraryPlaces(const CliContext& context);
