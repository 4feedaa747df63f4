#pragma once
#include "Files/CFileRef.h"
#include "Platform/OSErr.h"

class CSongDatabaseHost;

/** Tells the user, when he has time, that a file of the library could not be read. "Reveal" shows its folder. Main
    thread; the host must stay until the answer. */
class CReportXMLErr {
public:
    static void Report(CSongDatabaseHost& host, const CFileRef& file, OSErr err);
};
