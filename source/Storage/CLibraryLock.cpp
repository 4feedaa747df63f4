#include "Storage/CLibraryLock.h"

#include "Core/CLog.h"

OSErr CLibraryLock::Take(const CFileRef& root) {
    if (IsTaken()) return noErr;
    const CFileRef file(root, kFile_Name);
    OSErr err = i_fork.Open(file, FileAccess::kCreate);
    if (!Failed(err)) err = i_fork.Lock();
    if (!Failed(err)) return noErr;
    static_cast<void>(i_fork.Close());
    static_cast<void>(LogStep(err, "locking the library", file.GetPath()));
    return err == opWrErr ? err : noErr;
}
