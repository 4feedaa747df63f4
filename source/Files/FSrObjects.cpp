#include "Files/FSrObjects.h"

#include <algorithm>
#include <cerrno>

#include "Core/CLog.h"
#include "Files/CDataFork.h"
#include "Files/FSError.h"

namespace {

constexpr std::size_t kName_MaxBytes = 255;
constexpr int kUnique_Most = 10'000;

CFileCalls& Calls() { return CFileCalls::Get(); }

OSErr Look(const CFileRef& file, bool followB, bool& existsB, FileInfo& info) {
    existsB = false;
    if (file.IsEmpty()) return errFSMissingName;
    const int err = Calls().Look(file.GetPath(), followB, info);
    if (err == ENOENT || err == ENOTDIR) return noErr;
    existsB = err == 0;
    return FSError(err, "stat", file.GetPath());
}

OSErr LookFor(const CFileRef& file, FileKind kind, bool& existsB) {
    FileInfo info;
    const OSErr err = Look(file, true, existsB, info);
    existsB = existsB && info.kind == kind;
    return err;
}

/** On a disc that does not tell capitals the new name finds the file itself, and a plain rename does nothing. EEXIST, and
    the old name, for two links to one file. */
int RenameCapitals(const CFileRef::Path& from, const CFileRef::Path& to) {
    std::string between;
    const std::string wanted = to.stem().string() + " (renaming)" + to.extension().string();
    if (Failed(FSrMakeUniqueName(CFileRef(from.parent_path()), wanted, between))) return EEXIST;
    const CFileRef::Path aside = from.parent_path() / between;
    if (const int err = Calls().RenameNew(from, aside); err != 0) return err;
    const int err = Calls().RenameNew(aside, to);
    if (err == 0) return 0;
    if (const int back = Calls().RenameNew(aside, from); back != 0)
        LogF("### Error %s could not get its name back: it is called %s", from.c_str(), aside.c_str());
    return err;
}

OSErr DeleteTree(const CFileRef::Path& path, int depth) {
    FileInfo info;
    if (const int err = Calls().Look(path, false, info); err != 0) return FSError(err, "stat", path);
    if (info.kind != FileKind::kFolder) return FSError(Calls().Unlink(path), "unlink", path);
    if (depth == kFolder_DepthMost) return FSError(ELOOP, "rmdir", path);
    std::vector<std::string> names;
    if (const int err = Calls().List(path, names); err != 0) return FSError(err, "opendir", path);
    OSErr first = noErr;   // one file that stays keeps no other
    for (const std::string& name : names) first = FirstOf(first, DeleteTree(path / name, depth + 1));
    return FirstOf(first, Failed(first) ? noErr : FSError(Calls().RemoveFolder(path), "rmdir", path));
}

}   // namespace

OSErr FSrObjectExists(const CFileRef& file, bool& existsB) {
    FileInfo info;
    return Look(file, false, existsB, info);
}

OSErr FSrFileExists(const CFileRef& file, bool& existsB) { return LookFor(file, FileKind::kFile, existsB); }

OSErr FSrFolderExists(const CFileRef& file, bool& existsB) { return LookFor(file, FileKind::kFolder, existsB); }

OSErr FSrGetPath(CFileRef& file, CFileRef::Path& path) {
    if (const OSErr err = file.Resolve(); Failed(err)) return err;
    if (const OSErr err = file.Fill(CFileRef::kFill_PATH); Failed(err)) return err;
    path = file.GetPath();
    return noErr;
}

OSErr FSrCheckFile(const CFileRef& file, FileInfo& info) {
    if (file.IsEmpty()) return errFSMissingName;
    if (const int err = Calls().Look(file.GetPath(), true, info); err != 0) return FSError(err, "stat", file.GetPath());
    return info.kind == FileKind::kFile ? noErr : paramErr;
}

OSErr FSrCheckName(std::string_view name) {
    if (name.empty()) return errFSMissingName;
    const bool badB = name == "." || name == ".." || name.size() > kName_MaxBytes ||
                      name.find_first_of(std::string_view("/\0", 2)) != std::string_view::npos;
    return badB ? bdNamErr : noErr;
}

OSErr FSrFindOrCreateFile(const CFileRef& parent, std::string_view name, CFileRef& file) {
    if (const OSErr err = FSrCheckName(name); Failed(err)) return err;
    CFileRef found(parent, name);
    LogF("FSrFindOrCreateFile: FSrObjectExists: looking for: <%s>", found.GetName().c_str());
    LogF("FSrFindOrCreateFile: FSrObjectExists: looking in: <%s>", parent.GetPath().c_str());
    bool existsB = false;
    if (const OSErr err = FSrFileExists(found, existsB); Failed(err)) return err;
    if (existsB) {
        Log("FSrFindOrCreateFile: found");
    } else {
        CDataFork fork;   // not kCreateNew: another thread may be as far as we are
        if (const OSErr err = fork.Open(found, FileAccess::kCreate); Failed(err)) return err;
        if (const OSErr err = fork.Close(); Failed(err)) return err;
    }
    file = std::move(found);
    return noErr;
}

OSErr FSrFindOrCreateFolder(const CFileRef& parent, std::string_view name, CFileRef& folder) {
    if (const OSErr err = FSrCheckName(name); Failed(err)) return err;
    const CFileRef found(parent, name);
    if (const OSErr err = FSrMakeFolders(found.GetPath()); Failed(err)) return err;
    folder = found;
    return noErr;
}

OSErr FSrCreateFolder(const CFileRef& parent, std::string_view name, CFileRef& folder) {
    if (const OSErr err = FSrCheckName(name); Failed(err)) return err;
    const CFileRef made(parent, name);
    if (const int err = Calls().MakeFolder(made.GetPath(), 0777); err != 0)
        return FSError(err, "mkdir", made.GetPath());
    folder = made;
    return noErr;
}

OSErr FSrMakeFolders(const CFileRef::Path& folder, std::uint32_t mode) {
    if (folder.empty()) return errFSMissingName;
    FileInfo info;
    int err = Calls().Look(folder, true, info);
    if (err == 0) return info.kind == FileKind::kFolder ? noErr : FSError(ENOTDIR, "mkdir", folder);
    if (err != ENOENT) return FSError(err, "stat", folder);
    if (folder.has_parent_path() && folder.parent_path() != folder)
        if (const OSErr status = FSrMakeFolders(folder.parent_path(), mode); Failed(status)) return status;
    if (!folder.has_filename()) return noErr;   // "a/b/" was made as "a/b"
    err = Calls().MakeFolder(folder, mode);
    // Somebody was quicker; or a link points to nowhere, a volume that is not there.
    if (err == EEXIST) {
        err = Calls().Look(folder, true, info);
        if (err == 0 && info.kind != FileKind::kFolder) err = ENOTDIR;
    }
    return FSError(err, "mkdir", folder);
}

OSErr FSrRename(CFileRef& file, std::string_view newName) {
    if (file.IsEmpty()) return errFSMissingName;
    if (const OSErr err = FSrCheckName(newName); Failed(err)) return err;
    CFileRef::Path to = file.GetPath().parent_path() / newName;
    if (to == file.GetPath()) return noErr;
    int err = Calls().RenameNew(file.GetPath(), to);
    if (err == EEXIST && FSrIsSameFile(file, CFileRef(to))) err = RenameCapitals(file.GetPath(), to);
    if (err != 0) return FSError(err, "rename", file.GetPath());
    file.SetPath(std::move(to));
    return noErr;
}

bool FSrIsSameFile(const CFileRef& one, const CFileRef& other) {
    FileInfo first, second;
    return Calls().Look(one.GetPath(), false, first) == 0 && Calls().Look(other.GetPath(), false, second) == 0 &&
           first.deviceL == second.deviceL && first.inodeL == second.inodeL;
}

OSErr FSrDelete(const CFileRef& file) { return file.IsEmpty() ? errFSMissingName : DeleteTree(file.GetPath(), 0); }

OSErr FSrVolume(const CFileRef::Path& path, std::uint64_t& device) {
    CFileRef::Path at = path.empty() ? CFileRef::Path{"."} : path;
    for (;;) {
        FileInfo info;
        const int err = Calls().Look(at, true, info);
        if (err == 0) {
            device = info.deviceL;
            return noErr;
        }
        if (MapErrno(err) != fnfErr || at == at.parent_path()) return FSError(err, "stat", at);
        at = at.parent_path().empty() ? CFileRef::Path{"."} : at.parent_path();
    }
}

OSErr FSrOnSameVolume(const CFileRef& one, const CFileRef& other, bool& sameB) {
    std::uint64_t first = 0, second = 0;
    if (const OSErr err = FSrVolume(one.GetPath(), first); Failed(err)) return err;
    if (const OSErr err = FSrVolume(other.GetPath(), second); Failed(err)) return err;
    sameB = first == second;
    return noErr;
}

OSErr FSrMakeUniqueName(const CFileRef& folder, std::string_view name, std::string& unique, const CFileRef& self) {
    if (const OSErr err = FSrCheckName(name); Failed(err)) return err;
    const CFileRef::Path whole(name);
    for (int n = 1; n < kUnique_Most; ++n) {
        std::string tried(name);
        if (n > 1) {
            const std::string tail = " " + std::to_string(n) + whole.extension().string();
            std::string stem = whole.stem().string();
            if (tail.size() > kName_MaxBytes) return bdNamErr;
            if (stem.size() + tail.size() > kName_MaxBytes) {
                std::size_t keepL = kName_MaxBytes - tail.size();
                while (keepL > 0 && (static_cast<unsigned char>(stem[keepL]) & 0xC0U) == 0x80U) --keepL;   // UTF-8
                stem.resize(keepL);
            }
            tried = stem + tail;
        }
        bool existsB = true;
        if (const OSErr err = FSrObjectExists(CFileRef(folder, tried), existsB); Failed(err)) return err;
        if (existsB && (self.IsEmpty() || !FSrIsSameFile(self, CFileRef(folder, tried)))) continue;
        unique = std::move(tried);
        return noErr;
    }
    return dupFNErr;
}

OSErr FSrList(const CFileRef& folder, std::vector<std::string>& names) {
    const OSErr err = FSError(Calls().List(folder.GetPath(), names), "opendir", folder.GetPath());
    std::ranges::sort(names);
    return err;
}

OSErr FSrSyncFolder(const CFileRef& folder) {
    CDataFork handle;
    if (const OSErr err = handle.Open(folder, FileAccess::kFolder); Failed(err)) return err;
    const OSErr err = handle.Sync();
    // Some file systems have no sync for folders: they answer EINVAL, and there is nothing more to be done.
    return FirstOf(Number(err) == EINVAL ? noErr : err, handle.Close());
}
