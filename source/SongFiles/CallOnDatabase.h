#pragma once
#include <functional>
#include <memory>

#include "Platform/OSErr.h"
#include "Threads/CHandle.h"

class CSongDatabase;

/** Runs `work` on the main thread with the database, and waits for it. Any thread, without a lock.
    abortErr when the database has gone, or there is no main thread any more. */
OSErr CallOnDatabase(const char* nameZ, const CHandle<CSongDatabase>& databaseRef,
                     const std::function<OSErr(CSongDatabase& database)>& work);
