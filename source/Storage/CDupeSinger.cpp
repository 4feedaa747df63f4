#include "Storage/CDupeSinger.h"

#include "Core/CLog.h"
#include "Library/CSongDatabase.h"

void CDupeSinger::Report(CSongDatabaseHost& host, SingerID id, const SuperString& first, const SuperString& second,
                         const CFileRef& folder) {
    LogF("Duplicate Singer: %d, %s, %s", Number(id), first.CString(), second.CString());
    host.Notify("Duplicate Singer",
                "You have two singers with the same ID.  The second one was not loaded, and his files stay as they "
                "are.  The two singers are “" +
                    first.UTF8() + "” and “" + second.UTF8() + "”.",
                "Reveal", [&host, folder] { host.Reveal(folder); });
}
