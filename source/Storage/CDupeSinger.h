#pragma once
#include "Core/SuperString.h"
#include "Files/CFileRef.h"
#include "Library/LibraryIDs.h"

class CSongDatabaseHost;

/** Tells the user, when he has time, of two singers with one id. "Reveal" shows the folder of the second, who was not
    loaded. Main thread; the host must stay until the answer. */
class CDupeSinger {
public:
    static void Report(CSongDatabaseHost& host, SingerID id, const SuperString& first, const SuperString& second,
                       const CFileRef& folder);
};
