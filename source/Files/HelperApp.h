#pragma once
#include <string>
#include <vector>

#include "Files/CFileRef.h"

/** Runs a helper application and waits for its end, at most `seconds`. A time-out shows "Timeout running helper
    application “name”" and is alreadyReportedErr; one that cannot be started gives its status; `exitCode` is the
    helper's.
    Threads  any but the main one, which must not stand still. */
OSErr RunHelperApplication(const CFileRef& helper, const std::vector<std::string>& arguments, double seconds,
                           int& exitCode);

/** Shows the file's folder in the desktop's file manager. Does not wait for it.
    Threads  any. */
OSErr RevealFile(const CFileRef& file);
