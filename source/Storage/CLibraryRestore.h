#pragma once
#include <set>
#include <vector>

#include "Files/CFileRef.h"

/** Brings the files of a kept copy back: all of them, or none. They are unpacked into a folder beside the library; when
    that stands whole on the disc it gets the name "~Restore", and from then on the restore counts: a crash in the
    middle is carried to its end before the library is read again. A move that fails is taken back with those before it.
    Threads  one at a time, with nobody else in the library's files.
    Errors   statuses, logged; nothing is shown. */
class CLibraryRestore {
public:
    explicit CLibraryRestore(CFileRef root) : i_root(std::move(root)) {}

    /** Checks the whole zip and unpacks it; the library's own files are not touched. ioErr or paramErr for a zip that
        is damaged or no copy of a library, fLckdErr when a file that would be replaced is locked. */
    OSErr Prepare(const CFileRef& zip);
    /** Gives up what was prepared. */
    OSErr Drop();
    /** Puts what was unpacked in the place of the present files. */
    OSErr Carry();
    /** Ends what a crash cut short, if there is any such thing. Before the library is read or written. */
    OSErr FinishEarlier();

private:
    struct Move {
        CFileRef::Path file;
        bool hadOldB = false;
    };
    OSErr Unpack(const CFileRef& zip);
    OSErr MoveAll();
    OSErr MoveIn(Move& move) const;
    /** False when even that failed: the folder must stay, for the next start. */
    [[nodiscard]] bool TakeBack(const std::vector<Move>& moves) const;
    [[nodiscard]] CFileRef::Path In(const char* folderZ) const { return i_root.GetPath() / folderZ; }

    CFileRef i_root;
};
