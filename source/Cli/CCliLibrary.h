#pragma once
#include <memory>

#include "Cli/CCliHost.h"
#include "Cli/CliContext.h"
#include "Library/CLibraryLock.h"
#include "Library/CLibraryStore.h"
#include "Library/CMetaManager.h"
#include "Library/CSongDatabase.h"

/** The library that a command works on: where it is, the lock on it, and its database.
    Threads  main.
    Owner    the command, for its own length; one at a time.
    Errors   statuses; what a load could not read is told on the error stream, and does not stop a command. */
class CCliLibrary {
public:
    explicit CCliLibrary(const CliContext& context);

    [[nodiscard]] const LibraryPlaces& Places() const noexcept { return i_places; }
    /** fnfErr when there is no such folder. */
    [[nodiscard]] OSErr IsThere() const;
    /** Before anything is changed. opWrErr: a host has the library. */
    OSErr Take() { return i_lock.Take(i_places.root); }
    /** fnfErr when the folder holds no library; the database is an empty one then. */
    OSErr Load();
    [[nodiscard]] bool IsEmpty() const { return i_store == nullptr || i_store->Report().emptyB; }
    [[nodiscard]] CSongDatabase& Database() noexcept { return i_database; }
    /** What was changed, through the save of the application. */
    OSErr Save(SaveForce force = SaveForce::kDirty);

private:
    const CliContext& i_context;
    const LibraryPlaces i_places;
    CLibraryLock i_lock;
    CCliHost i_host;
    CMetaManager i_metas;
    CSongDatabaseHost i_above;
    CSongDatabase i_database;
    std::unique_ptr<CLibraryStore> i_store;   // goes before the database
};

/** Where the library of a command lies; nothing is made. */
[[nodiscard]] LibraryPlaces CliLibraryPlaces(const CliContext& context);
