#pragma once
#include <string>
#include <vector>

#include "Files/CFileRef.h"

/** Dated copies of the library's files, so that no fault of a save, of this program or of the user's costs a library:
    one zip before the first write of a run, the last ten of them, in a folder that the loading of the library passes
    over.
    Holds    "Songs.vlb" and every property list of the library root, its lists, venues and stores (BackupNames); not
             the SQL store, which has journals of its own.
    Threads  one at a time, a worker: the time is that of packing the files.
    Errors   statuses, logged. A copy that could not be made leaves none behind, and is told by one alert; the save goes
             on without it, since what is damaged is set aside by itself. */
class CLibraryBackup {
public:
    explicit CLibraryBackup(CFileRef root) : i_root(std::move(root)) {}

    /** Makes the copy, the first time it is called; then nothing until the next object. After a failure it tries again.
        A library without files has no copy; a file that cannot be opened is left out, which is told. */
    OSErr KeepOnce();
    /** The copies, the newest first. */
    OSErr List(std::vector<CFileRef>& backups) const;
    /** Puts the files of a copy in the place of the present ones, of which a copy is made before: all or none
        (CLibraryRestore). Files that are not in the copy stay. permErr when a present file cannot be copied. */
    OSErr Restore(const CFileRef& backup);

    static constexpr std::size_t kKeep_Most = 10;
    static constexpr const char* kFolder_Name = "~Backups";

private:
    OSErr Pack(std::vector<CFileRef::Path>& leftOut);
    OSErr Prune() const;
    [[nodiscard]] CFileRef Folder() const { return CFileRef(i_root, kFolder_Name); }

    CFileRef i_root;
    bool i_keptB = false, i_toldB = false;
};
