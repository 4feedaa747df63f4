#pragma once
#include "Files/CDataFork.h"

/** Says that this process changes the library of a folder: two would write over each other's changes. A lock on the
    file
    "~In Use" in the folder, which the system takes back when the process ends, however that comes.
    Threads  one at a time.
    Owner    whoever has the library loaded to change it: the application, or a command.
    Errors   opWrErr: another process has it. A disc that knows no locks, or cannot be written, is no reason to refuse
    the library: noErr, and a log line. */
class CLibraryLock {
public:
    /** Tries at once; once it is had it stays. */
    OSErr Take(const CFileRef& root);
    [[nodiscard]] bool IsTaken() const { return i_fork.IsOpen(); }

    static constexpr const char* kFile_Name = "~In Use";

private:
    CDataFork i_fork;
};
