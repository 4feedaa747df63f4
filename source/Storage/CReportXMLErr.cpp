#include "Storage/CReportXMLErr.h"

#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Library/CSongDatabase.h"

void CReportXMLErr::Report(CSongDatabaseHost& host, const CFileRef& file, OSErr err) {
    host.Notify(Localize("Error loading XML file"), FaultText(err, file.GetPath()), Localize("Reveal"),
                [&host, file] { host.Reveal(file); });
}
