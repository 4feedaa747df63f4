#include "Files/CSafeSave.h"

#include <cerrno>
#include <map>
#include <mutex>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Files/FSError.h"
#include "Files/FSrCopy.h"
#include "Files/FSrFolders.h"
#include "Files/FSrObjects.h"

namespace {

/** What the last failed replacement of each file left, so that repeated failures do not fill the disc. */
struct KeptFiles {
    std::mutex lock;
    std::map<CFileRef::Path, CFileRef> folders;   // by the original; guarded by lock
};
KeptFiles& Kept() {
    static KeptFiles s_kept;
    return s_kept;
}

void ForgetKept(const CFileRef::Path& original) {
    CFileRef folder;
    {
        const std::scoped_lock guard(Kept().lock);
        const auto it = Kept().folders.find(original);
        if (it == Kept().folders.end()) return;
        folder = it->second;
        Kept().folders.erase(it);
    }
    bool thereB = false;
    if (!Failed(FSrObjectExists(folder, thereB)) && thereB) static_cast<void>(FSrPurge(folder, PurgePlace::kTemp));
}

}   // namespace

CSafeSave::~CSafeSave() {
    if (!i_activeB) return;
    Cleanup();
    i_file = i_origFile;
}

OSErr CSafeSave::Start(SaveMode mode) {
    if (i_activeB) return opWrErr;
    const OSErr err = StartIn(mode);
    if (Failed(err)) {
        Log("SafeSaveStart");
        static_cast<void>(i_parent.Delete());
    }
    return err;
}

OSErr CSafeSave::StartIn(SaveMode mode) {
    LogF("SafeSaveStart: orig path: <%s>", i_file.GetPath().c_str());
    i_origFile = i_file;
    i_copyB = mode == SaveMode::kCopy;
    if (const OSErr err = LookAtOriginal(mode); Failed(err)) return err;
    LogF("SafeSave name: <<%s>>\n", i_name.c_str());
    if (IsInTemp(i_origFile.GetPath())) {
        Log("file is in temp folder");
        i_safeFile = i_origFile;
        return noErr;
    }
    i_tempName = i_copyB ? "temp" + i_name : i_name;
    if (i_tempName.size() > 255) i_tempName.resize(255);   // a name of full length; it lives in a folder of its own
    if (const OSErr err = MakeSafeFile(mode); Failed(err)) return err;
    LogF("SafeSaveStart: safe file: <%s>", i_safeFile.GetPath().c_str());
    i_file = i_safeFile;
    i_activeB = true;
    return noErr;
}

OSErr CSafeSave::LookAtOriginal(SaveMode mode) {
    i_name = i_origFile.GetName();
    if (const OSErr err = FSrCheckName(i_name); Failed(err)) {
        if (i_name.empty()) Log("empty name");
        return LogStep(err, "SafeSaveStart: name", i_origFile.GetPath());
    }
    // Through a link: what it points to is replaced, not the link.
    FileInfo info;
    CFileRef::Path real;
    int err = CFileCalls::Get().Look(i_origFile.GetPath(), false, info);
    if (err == 0 && info.kind == FileKind::kLink) {
        err = CFileCalls::Get().RealPath(i_origFile.GetPath(), real);
        if (err == 0) err = CFileCalls::Get().Look(real, false, info);
        if (err == 0) i_origFile.SetPath(real);
        i_name = i_origFile.GetName();
    } else if (err == ENOENT && mode == SaveMode::kNew) {
        i_mode = 0;
        bool parentB = false;   // told now: at the end the new data would be stranded
        if (const OSErr looked = FSrFolderExists(i_origFile.GetParent(), parentB); Failed(looked) || !parentB)
            return LogStep(Failed(looked) ? looked : fnfErr, "SafeSaveStart: verify", i_origFile.GetPath());
        return noErr;
    }
    if (err == 0 && info.kind == FileKind::kFolder) err = EISDIR;
    if (err == 0 && info.kind != FileKind::kFile) err = EINVAL;
    if (err != 0)
        return LogStep(FSError(err, "stat", i_origFile.GetPath()), "SafeSaveStart: verify", i_origFile.GetPath());
    i_mode = info.mode & 0777U;
    // A rename would not mind, but whoever took away all right to write meant it.
    return (info.mode & 0222U) == 0 ? LogStep(fLckdErr, "SafeSaveStart: verify", i_origFile.GetPath()) : noErr;
}

OSErr CSafeSave::MakeSafeFile(SaveMode mode) {
    const bool copyB = mode == SaveMode::kCopy;
    OSErr err = i_parent.Create(FSCreateTemp_FOLDER, i_origFile);
    if (Failed(err))
        return LogStep(err, copyB ? "SafeSaveStart: creating temp folder" : "SafeSaveStart: creating temp",
                       i_origFile.GetPath());
    if (copyB) {
        err = CopyFileToFolder(i_origFile, i_parent.Ref(), i_safeFile, i_name);
        if (Failed(LogStep(err, "SafeSaveStart: copying temp file", i_origFile.GetPath()))) return err;
        FileInfo info;
        return LogStep(FSrCheckFile(i_safeFile, info), "SafeSaveStart: verify2", i_safeFile.GetPath());
    }
    i_safeFile = CFileRef(i_parent.Ref(), i_tempName);
    CDataFork fork;
    err = fork.Open(i_safeFile, FileAccess::kCreateNew);
    if (!Failed(err)) err = fork.Close();
    return LogStep(err, "SafeSaveStart: creating temp", i_safeFile.GetPath());
}

OSErr CSafeSave::Recover() {
    bool thereB = false;
    if (const OSErr err = FSrFileExists(i_safeFile, thereB); Failed(err) || thereB) return err;
    i_safeFile = CFileRef(i_parent.Ref(), i_copyB ? i_tempName : i_name);
    const OSErr err = FSrFileExists(i_safeFile, thereB);
    if (!Failed(err) && thereB) return noErr;
    Log("SafeSaveFinish: recovering safeFile");
    return Failed(err) ? err : fnfErr;
}

OSErr CSafeSave::Finish() {
    if (!i_activeB) {   // nothing to replace, but what was to be written must be there
        bool thereB = false;
        const OSErr err = FSrFileExists(i_safeFile, thereB);
        return Failed(err) || thereB ? err : LogStep(fnfErr, "SafeSaveFinish: verify", i_safeFile.GetPath());
    }
    OSErr err = Recover();
    const bool thereB = !Failed(err);
    if (!Failed(err) && i_copyB && i_safeFile.GetName() != i_tempName)
        err = LogStep(FSrRename(i_safeFile, i_tempName), "SafeSaveFinish: renaming temp file", i_safeFile.GetPath());
    if (!Failed(err)) {
        err = LogStep(ReplaceObject(), "SafeSaveFinish: ReplaceObject", i_origFile.GetPath());
    }
    if (Failed(err) && thereB &&
        !i_replacedB) {   // the old file stands; the new data are worth keeping whatever failed
        LogF("** origFile: <%s>", i_origFile.GetPath().c_str());
        LogF("** safeFile: <%s>", i_safeFile.GetPath().c_str());
        KeepSafeFile();
    }
    i_file = i_origFile;
    Cleanup();
    return err;
}

OSErr CSafeSave::ReplaceObject() {
    CDataFork fork;
    if (const OSErr err = fork.Open(i_safeFile, FileAccess::kWrite); Failed(err)) return err;
    if (i_mode != 0 && Failed(fork.SetMode(i_mode))) Log("SafeSaveFinish: the new file has other permissions");
    // Before the rename: else a power cut can show the new name with nothing in it.
    if (const OSErr err = fork.Sync(); Failed(err)) return err;
    if (const OSErr err = fork.Close(); Failed(err)) return err;
    const CFileRef::Path& to = i_origFile.GetPath();
    int err = CFileCalls::Get().Rename(i_safeFile.GetPath(), to);
    if (err == EXDEV) {   // one volume mounted at two places: the safe file comes beside the original first
        CFileRef copy;
        if (const OSErr copied = CopyFileToFolder(i_safeFile, i_origFile.GetParent(), copy, i_name); Failed(copied))
            return copied;
        err = 0;
    }
    if (err != 0) return FSError(err, "rename", to);
    i_replacedB = true;
    ForgetKept(to);
    i_origFile.SetPath(to);   // an alias would name the replaced file
    return FSrSyncFolder(i_origFile.GetParent());
}

void CSafeSave::KeepSafeFile() {
    const CFileRef folder = i_parent.Ref();
    ForgetKept(i_origFile.GetPath());
    i_parent.Leave();
    const std::scoped_lock guard(Kept().lock);
    Kept().folders[i_origFile.GetPath()] = folder;
}

void CSafeSave::Cleanup() {
    i_activeB = false;
    if (!i_parent.IsMade()) return;
    LogF("SafeSaveCleanup: par: <%s>", i_parent.Ref().GetPath().c_str());
    static_cast<void>(i_parent.Delete());   // logged; what stays is purged at the next start
}

OSErr SafeSave(const CFileRef& file, std::span<const std::byte> bytes) {
    CFileRef written = file;
    CSafeSave save(written);
    if (const OSErr err = LogStep(save.Start(SaveMode::kNew), "safe save start", file.GetPath()); Failed(err))
        return err;
    CDataFork fork;
    if (const OSErr err = fork.Open(written, FileAccess::kCreate); Failed(err))
        return LogStep(err, "create URL from safe save", file.GetPath());
    OSErr err = fork.SetEOF(CDataFork::PosMode::kFromStart, 0);
    if (!Failed(err)) err = fork.Write(bytes);
    err = FirstOf(err, fork.Close());
    if (Failed(err)) return LogStep(err, "safe save write", file.GetPath());
    return LogStep(save.Finish(), "finish safe save", file.GetPath());
}

OSErr SafeSave(const CFileRef& file, std::string_view bytes) { return SafeSave(file, std::as_bytes(std::span{bytes})); }

OSErr SafeSavePropertyList(const CFileRef& file, const std::function<OSErr(std::string& xml)>& toXML) {
    std::string xml;
    if (const OSErr err = LogStep(toXML(xml), "creating xml data", file.GetPath()); Failed(err)) return err;
    return SafeSave(file, xml);
}

OSErr TellSaveError(OSErr err, const CFileRef& file) {
    if (!Failed(err) || err == alreadyReportedErr || err == abortErr || err == userCanceledErr) return err;
    ShowAlert(Localize("There was an error saving the file “%1”", {file.GetName()}), FaultText(err, file.GetPath()));
    return alreadyReportedErr;
}
