#include "Files/FSrMove.h"

#include <cerrno>

#include "Core/CLog.h"
#include "Files/FSError.h"
#include "Files/FSrCopy.h"
#include "Files/FSrObjects.h"
#include "Files/FSrTrash.h"

namespace {

OSErr MoveAcross(CFileRef& file, const CFileRef& folder, std::string_view name) {
    CFileRef copy;
    if (const OSErr err = CopyToFolder(file, folder, copy, name); Failed(err))
        return LogStep(err, "MoveFile: copy to folder", file.GetPath());
    // The new name must be on the disc before the old file goes.
    if (const OSErr err = FSrSyncFolder(folder); Failed(err))
        return LogStep(err, "MoveFile: copy to folder", folder.GetPath());
    if (const OSErr err = FSrDelete(file); Failed(err)) return LogStep(err, "MoveFile: delete file", file.GetPath());
    file = copy;
    return noErr;
}

/** `taken` is what lies at the destination. */
OSErr MoveOver(CFileRef& file, const CFileRef& taken) {
    TrashedFile trashed;
    if (const OSErr err = FSrMoveToTrash(taken, &trashed); Failed(err))
        return LogStep(err, "MoveFile: move to trash", taken.GetPath());
    if (const int err = CFileCalls::Get().RenameNew(file.GetPath(), taken.GetPath()); err != 0) {
        const OSErr status = FSError(err, "rename", file.GetPath());
        static_cast<void>(LogStep(status, "MoveFile: moving to destination", taken.GetPath()));
        static_cast<void>(LogStep(FSrRestoreTrashed(trashed, taken), "MoveFile: restore", taken.GetPath()));
        return status;
    }
    file.SetPath(taken.GetPath());
    // The move is done, and what stays in the trash is in nobody's way.
    static_cast<void>(LogStep(FSrDeleteTrashed(trashed), "MoveFile: delete trashed file", trashed.file.GetPath()));
    return noErr;
}

}   // namespace

OSErr FSrMoveFile(CFileRef& file, const CFileRef& folder, std::string_view newName) {
    const std::string name = newName.empty() ? file.GetName() : std::string(newName);
    if (const OSErr err = LogStep(FSrCheckName(name), "MoveFile: GetName", file.GetPath()); Failed(err)) return err;
    const CFileRef destination(folder, name);
    FileInfo source, there;
    if (const int err = CFileCalls::Get().Look(file.GetPath(), false, source); err != 0)
        return LogStep(FSError(err, "stat", file.GetPath()), "MoveFile: On same volume", file.GetPath());
    // By the source's own number, not by that of its folder: the source may be a mounted volume.
    std::uint64_t volume = 0;
    if (const OSErr err = FSrVolume(folder.GetPath(), volume); Failed(err))
        return LogStep(err, "MoveFile: On same volume", folder.GetPath());
    const int found = CFileCalls::Get().Look(destination.GetPath(), false, there);
    if (found != 0 && found != ENOENT)
        return LogStep(FSError(found, "stat", destination.GetPath()), "MoveFile: does file exist", file.GetPath());
    if (found == 0) {
        if (FileIdentity::Of(source).Is(FileIdentity::Of(there)) && source.deviceL == there.deviceL) {
            // The same file by another road; but two hard links to it are two names, and one of them stays.
            CFileRef::Path one, other;
            if (CFileCalls::Get().RealPath(file.GetPath(), one) == 0 &&
                CFileCalls::Get().RealPath(destination.GetPath(), other) == 0 && one == other) {
                file.SetPath(destination.GetPath());
                return noErr;
            }
        }
        if (there.kind == FileKind::kFolder)
            return LogStep(dupFNErr, "MoveFile: does file exist", destination.GetPath());
    }
    if (source.deviceL != volume) return MoveAcross(file, folder, name);
    if (found == 0) return MoveOver(file, destination);
    const int err = CFileCalls::Get().RenameNew(file.GetPath(), destination.GetPath());
    if (err == EXDEV) return MoveAcross(file, folder, name);   // one volume, mounted at two places
    if (err == EEXIST)
        return LogStep(dupFNErr, "FSrMoveFile: rename should have already been unique", destination.GetPath());
    if (err != 0)
        return LogStep(FSError(err, "rename", file.GetPath()),
                       name == file.GetName() ? "MoveFile: moving to destination" : "MoveFile: FSrRename",
                       destination.GetPath());
    file.SetPath(destination.GetPath());
    return noErr;
}
