#include "Storage/CDupeSinger.h"

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Library/CSongDatabase.h"

void CDupeSinger::Report(CSongDatabaseHost& host, SingerID id, const SuperString& first, const SuperString& second,
                         const CFileRef& folder) {
    LogF("Duplicate Singer: %d, %s, %s", Number(id), first.CString(), second.CString());
    host.Notify(Localize("Duplicate Singer"),
                Localize("You have two singers with the same ID.  The second one was not loaded, and his files stay as "
                         "they are.  The two singers are “%1” and “%2”.",
                         {first.UTF8(), second.UTF8()}),
                Localize("Reveal"), [&host, folder] { host.Reveal(folder); });
}
