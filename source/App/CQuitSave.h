#pragma once
#include <string>

#include "Files/CFileRef.h"

class CApp;
class CAppLibrary;

/** The last save of the evening, of an application that has a library. A file that cannot be written is asked about:
    try again, write a copy elsewhere, or quit, which leaves a copy beside the log or where else one can be written;
    that is what happens where nobody answers, too.
    Threads  main; pumps while workers write.
    Errors   told in the log; what was left beside the log, on the error stream as well. */
class CQuitSave {
public:
    explicit CQuitSave(CApp& app) : i_app(app) {}
    void Run();

private:
    enum class Wish : unsigned char { kTryAgain, kElsewhere, kQuit };

    /** noErr when nothing is left to be written. */
    [[nodiscard]] OSErr SaveOnce();
    [[nodiscard]] CAppLibrary& Library() const;
    [[nodiscard]] Wish Ask(OSErr err);
    /** False when there is no copy: the user changed his mind, or is told why by the next question. */
    [[nodiscard]] bool CopyElsewhere();
    /** Beside the log, in the user's home or among temporary files, the first that can be written. False: nowhere, and
        the next question says so. */
    [[nodiscard]] bool CopyAnywhere();
    [[nodiscard]] OSErr CopyInto(const CFileRef& folder);
    static void Tell(const std::string& words);
    [[nodiscard]] CFileRef NewFolderIn(const CFileRef& parent) const;

    CApp& i_app;
    std::string i_copyFailure;
    bool i_noCopyB = false;   // it could be written nowhere, and the user knows
};
