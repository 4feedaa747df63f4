#include "Files/FSrCopy.h"

#include <cerrno>

#include "Core/CLog.h"
#include "Files/CDataFork.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"

namespace {

constexpr std::string_view kInWork_Front = ".vopla-";
constexpr std::string_view kInWork_End = ".copying";
constexpr std::size_t kCopy_Step = 256 * 1024;

/** The copy while it grows: a hidden file in the destination folder, gone again unless it was put in place. */
class CopyInWork {
public:
    ~CopyInWork() {
        if (!i_heldB) return;   // else unlinked while the lock is ours: after it the name may be another's
        if (const int err = CFileCalls::Get().Unlink(i_file.GetPath()); err != 0)
            static_cast<void>(LogStep(FSError(err, "unlink", i_file.GetPath()), "CopyFileToFolder: clean up"));
    }
    OSErr FindOrCreate(const CFileRef& folder, std::string_view name) {
        i_file = CFileRef(folder, CopyInWorkName(name));
        bool existsB = false;   // left by a crash, or being written by another: the lock tells
        return FSrObjectExists(i_file, existsB);
    }
    OSErr Open() {
        if (const OSErr err = i_fork.Open(i_file, FileAccess::kCreate); Failed(err)) return err;
        // A volume without locks cannot tell; then the copy goes on, as it would without this look.
        if (const OSErr err = i_fork.Lock(); err == opWrErr) return err;
        // The one who had it may have put the file in place between our opening and our lock: that is no work file now.
        FileInfo open, named;
        if (const OSErr err = i_fork.Look(open); Failed(err)) return err;
        if (const int err = CFileCalls::Get().Look(i_file.GetPath(), false, named); err != 0)
            return err == ENOENT ? opWrErr : FSError(err, "stat", i_file.GetPath());
        i_heldB = FileIdentity::Of(open).Is(FileIdentity::Of(named)) && open.deviceL == named.deviceL;
        return i_heldB ? noErr : opWrErr;
    }
    CDataFork& Fork() { return i_fork; }
    OSErr PutInPlace(const CFileRef::Path& to) {
        const int err = CFileCalls::Get().Rename(i_file.GetPath(), to);
        if (err == 0) i_heldB = false;
        return FSError(err, "rename", to);
    }

private:
    CFileRef i_file;
    CDataFork i_fork;
    bool i_heldB = false;
};

OSErr CopyBytes(CDataFork& from, CDataFork& to) {
    std::vector<std::byte> buffer(kCopy_Step);
    for (;;) {
        std::size_t got = 0;
        const OSErr read = from.Read(buffer, got);
        if (Failed(read) && read != eofErr) return LogStep(read, "CopyFileToFolder: Read Src");
        if (const OSErr err = to.Write(std::span{buffer}.first(got)); Failed(err))
            return LogStep(err, "CopyFileToFolder: Write Dst");
        if (read == eofErr) return noErr;
    }
}

OSErr CopyLink(const CFileRef::Path& from, const CFileRef::Path& to) {
    CFileRef::Path target;
    if (const int err = CFileCalls::Get().ReadLink(from, target); err != 0) return FSError(err, "readlink", from);
    return FSError(CFileCalls::Get().MakeLink(target, to), "symlink", to);
}

/** The insides of one folder into another that is there. */
OSErr CopyTree(const CFileRef& from, const CFileRef& to, int depth) {
    if (depth == kFolder_DepthMost) return FSError(ELOOP, "mkdir", to.GetPath());
    std::vector<std::string> names;
    if (const OSErr err = FSrList(from, names); Failed(err))
        return LogStep(err, "CopyToFolder: GetCatInfoBulk", from.GetPath());
    for (const std::string& name : names) {
        const CFileRef item(from, name);
        FileInfo info;
        CFileRef copy;
        OSErr err = noErr;
        if (const int looked = CFileCalls::Get().Look(item.GetPath(), false, info); looked != 0)
            return LogStep(FSError(looked, "stat", item.GetPath()), "CopyToFolder: GetCatInfoBulk", item.GetPath());
        switch (info.kind) {
            case FileKind::kFile:
                err = CopyFileToFolder(item, to, copy);
                break;
            case FileKind::kLink:
                err = CopyLink(item.GetPath(), to.GetPath() / name);
                break;
            case FileKind::kOther:
                LogF("CopyToFolder: passed over: <%s>", item.GetPath().c_str());
                break;
            case FileKind::kFolder:
                err = FSrCreateFolder(to, name, copy);
                if (!Failed(err)) err = CopyTree(item, copy, depth + 1);
                break;
        }
        if (Failed(err)) return err;
    }
    return noErr;
}

}   // namespace

std::string CopyInWorkName(std::string_view name) {
    constexpr std::size_t kRoom = 200;   // of 255; long names that share their start take turns by the lock
    std::string made(kInWork_Front);
    made += name.substr(0, kRoom);
    made += kInWork_End;
    return made;
}

bool IsCopyInWorkName(std::string_view name) {
    return name.size() > kInWork_Front.size() + kInWork_End.size() && name.starts_with(kInWork_Front) &&
           name.ends_with(kInWork_End);
}

OSErr CopyFileToFolder(const CFileRef& file, const CFileRef& folder, CFileRef& copy, std::string_view newName) {
    const std::string name = newName.empty() ? file.GetName() : std::string(newName);
    if (const OSErr err = LogStep(FSrCheckName(name), "CopyFileToFolder: GetName", file.GetPath()); Failed(err))
        return err;
    const CFileRef made(folder, name);
    FileInfo source, old;
    OSErr err = FSrCheckFile(file, source);
    const int looked = CFileCalls::Get().Look(made.GetPath(), true, old);
    if (looked == 0 && !Failed(err)) {
        if (FileIdentity::Of(source).Is(FileIdentity::Of(old))) err = paramErr;
        if (old.kind != FileKind::kFile) err = dupFNErr;
    } else if (looked != 0 && looked != ENOENT && !Failed(err)) {
        err = FSError(looked, "stat", made.GetPath());
    }
    if (Failed(LogStep(err, "CopyFileToFolder: Exists", made.GetPath()))) return err;

    CopyInWork work;
    if (err = LogStep(work.FindOrCreate(folder, name), "CopyFileToFolder: FindOrCreate", folder.GetPath()); Failed(err))
        return err;
    CDataFork from;
    if (err = LogStep(from.Open(file, FileAccess::kRead), "CopyFileToFolder: Open Src", file.GetPath()); Failed(err))
        return err;
    std::uint64_t sizeL = 0, spaceL = 0;
    if (err = LogStep(from.GetEOF(sizeL), "CopyFileToFolder: GetEOF", file.GetPath()); Failed(err)) return err;
    // Told before a volume is filled to its last byte; one that does not tell its space is simply tried.
    if (CFileCalls::Get().SpaceLeft(folder.GetPath(), spaceL) == 0 && spaceL < sizeL)
        return LogStep(dskFulErr, "CopyFileToFolder: Write Dst", made.GetPath());
    if (err = LogStep(work.Open(), "CopyFileToFolder: Open Dst", made.GetPath()); Failed(err)) return err;
    CDataFork& to = work.Fork();
    if (err = LogStep(to.SetEOF(CDataFork::PosMode::kFromStart, 0), "setting EOF to zero", made.GetPath()); Failed(err))
        return err;
    if (err = CopyBytes(from, to); Failed(err)) return err;
    if (err = LogStep(to.SetMode(source.mode & 0777U), "CopyFileToFolder: mode", made.GetPath()); Failed(err))
        Log("CopyFileToFolder: the copy has other permissions");   // as on a memory stick; the bytes count
    if (err = LogStep(to.SetModified(source.modifiedL), "CopyFileToFolder: time", made.GetPath()); Failed(err))
        Log("CopyFileToFolder: the copy has another time");
    if (err = LogStep(to.Sync(), "CopyFileToFolder: Write Dst", made.GetPath()); Failed(err)) return err;
    if (err = LogStep(work.PutInPlace(made.GetPath()), "CopyFileToFolder: Write Dst", made.GetPath()); Failed(err))
        return err;
    copy = made;
    return noErr;
}

OSErr CopyToFolder(const CFileRef& source, const CFileRef& folder, CFileRef& copy, std::string_view newName) {
    FileInfo info;
    if (const int err = CFileCalls::Get().Look(source.GetPath(), true, info); err != 0)
        return LogStep(FSError(err, "stat", source.GetPath()), "CopyToFolder: GetName", source.GetPath());
    if (info.kind != FileKind::kFolder) return CopyFileToFolder(source, folder, copy, newName);
    CFileRef::Path real, realFolder;
    int err = CFileCalls::Get().RealPath(source.GetPath(), real);
    if (err == 0) err = CFileCalls::Get().RealPath(folder.GetPath(), realFolder);
    if (err != 0) return LogStep(FSError(err, "realpath", folder.GetPath()), "CopyToFolder: GetPath", folder.GetPath());
    if (IsInside(realFolder, real)) return LogStep(paramErr, "CopyToFolder: into itself", folder.GetPath());
    const std::string name = newName.empty() ? source.GetName() : std::string(newName);
    CFileRef made;
    if (const OSErr status = FSrCreateFolder(folder, name, made); Failed(status))
        return LogStep(status, "CopyToFolder: FindOrCreate", folder.GetPath());
    if (const OSErr status = CopyTree(source, made, 0); Failed(status)) {
        static_cast<void>(LogStep(FSrDelete(made), "CopyToFolder: clean up", made.GetPath()));
        return status;
    }
    copy = made;
    return noErr;
}
