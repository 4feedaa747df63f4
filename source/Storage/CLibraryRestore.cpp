#include "Storage/CLibraryRestore.h"

#include <algorithm>

#include "Core/CLog.h"
#include "Files/CDataFork.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Storage/BackupNames.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"

namespace {

using Path = CFileRef::Path;

constexpr const char* kPart_Folder = "~Restore.part";   // may be half of a copy: worth nothing
constexpr const char* kReady_Folder = "~Restore";
constexpr const char* kNew_Folder = "~Restore/new";
constexpr const char* kOld_Folder = "~Restore/old";
constexpr std::size_t kPiece_Bytes = std::size_t{256} << 10;

OSErr Rename(const Path& from, const Path& to) {
    const int err = CFileCalls::Get().Rename(from, to);
    return err == 0 ? noErr : FSError(err, "rename", from);
}

OSErr SyncFolders(const std::set<Path>& folders) {
    OSErr first = noErr;
    for (const Path& folder : folders) first = FirstOf(first, FSrSyncFolder(CFileRef(folder)));
    return first;
}

/** To the end of the member, whose checksum must be right. */
OSErr UnpackMember(const CFileRef& zip, const CZipMember& member, const Path& to, std::uint32_t mode) {
    CByteSource_Zip source;
    if (const OSErr err = source.Open(zip, member); Failed(err)) return err;
    CDataFork fork;
    if (const OSErr err = fork.Open(CFileRef(to), FileAccess::kCreateNew); Failed(err)) return err;
    std::vector<std::byte> piece(kPiece_Bytes);
    for (OSErr read = noErr; read != eofErr;) {
        std::size_t got = 0;
        read = source.Read(piece, got);
        if (Failed(read) && read != eofErr) return read;
        if (const OSErr err = fork.Write(std::span<const std::byte>(piece).first(got)); Failed(err)) return err;
    }
    if (mode != 0 && Failed(fork.SetMode(mode))) Log("restore: a file has other permissions than before");
    if (const OSErr err = fork.Sync(); Failed(err)) return err;
    return fork.Close();
}

/** The files below `folder`, as paths from there on. */
OSErr FilesBelow(const Path& folder, const Path& below, std::vector<Path>& files) {
    std::vector<std::string> names;
    if (const OSErr err = FSrList(CFileRef(folder / below), names); Failed(err)) return err;
    for (const std::string& name : names) {
        FileInfo info;
        const int looked = CFileCalls::Get().Look(folder / below / name, false, info);
        if (looked != 0) return FSError(looked, "stat", folder / below / name);
        if (info.kind != FileKind::kFolder) {
            files.push_back(below / name);
        } else if (const OSErr err = FilesBelow(folder, below / name, files); Failed(err)) {
            return err;
        }
    }
    return noErr;
}

OSErr DeleteIfThere(const Path& path) {
    const OSErr err = FSrDelete(CFileRef(path));
    return err == fnfErr ? noErr : err;
}

}   // namespace

OSErr CLibraryRestore::Prepare(const CFileRef& zip) {
    if (const OSErr err = Drop(); Failed(err)) return err;   // of a crash
    const OSErr err = Unpack(zip);
    if (Failed(err)) static_cast<void>(Drop());
    return err;
}

OSErr CLibraryRestore::Drop() { return LogStep(DeleteIfThere(In(kPart_Folder)), "restore: give up"); }

OSErr CLibraryRestore::Unpack(const CFileRef& zip) {
    CZipArchive archive;
    if (const OSErr err = archive.Open(zip); Failed(err)) return LogStep(err, "restore: open", zip.GetPath());
    if (archive.IsRepaired()) return LogStep(ioErr, "restore: a damaged copy", zip.GetPath());
    const Path part = In(kPart_Folder) / "new";
    if (const OSErr err = FSrMakeFolders(part); Failed(err)) return LogStep(err, "restore: make folder", part);
    std::set<Path> folders{part};
    for (const CZipMember& member : archive.Members()) {
        const auto file = member.IsFolder() ? std::nullopt : PathOfBackupMember(member.name);
        if (!file) return LogStep(paramErr, "restore: no copy of a library", zip.GetPath());
        FileInfo present;
        const bool thereB = CFileCalls::Get().Look(i_root.GetPath() / *file, false, present) == 0;
        // As for a save: whoever took away all right to write meant it.
        if (thereB && present.kind == FileKind::kFile && (present.mode & 0222U) == 0)
            return LogStep(fLckdErr, "restore: a locked file", i_root.GetPath() / *file);
        const Path to = part / *file;
        if (const OSErr err = FSrMakeFolders(to.parent_path()); Failed(err)) return LogStep(err, "restore: folder", to);
        for (Path folder = to.parent_path(); folder != part; folder = folder.parent_path()) folders.insert(folder);
        const std::uint32_t mode = thereB && present.kind == FileKind::kFile ? present.mode & 0777U : 0;
        const OSErr err = UnpackMember(zip, member, to, mode);
        if (Failed(err)) return LogStep(err, "restore: a damaged copy, or no room for it", zip.GetPath());
    }
    return LogStep(SyncFolders(folders), "restore: sync", part);
}

OSErr CLibraryRestore::Carry() {
    CFileRef part(In(kPart_Folder));
    if (const OSErr err = FSrRename(part, kReady_Folder); Failed(err)) return LogStep(err, "restore: begin");
    if (const OSErr err = FSrSyncFolder(i_root); Failed(err)) {
        static_cast<void>(DeleteIfThere(In(kReady_Folder)));
        return LogStep(err, "restore: begin");
    }
    return MoveAll();
}

OSErr CLibraryRestore::FinishEarlier() {
    bool thereB = false;
    if (const OSErr err = FSrFolderExists(CFileRef(In(kReady_Folder)), thereB); Failed(err) || !thereB) return err;
    Log("A restore of the library was cut short; it goes on now");
    return MoveAll();
}

OSErr CLibraryRestore::MoveAll() {
    std::vector<Path> files;
    bool thereB = false;
    OSErr err = FSrFolderExists(CFileRef(In(kNew_Folder)), thereB);
    if (!Failed(err) && thereB) err = FilesBelow(In(kNew_Folder), {}, files);
    if (Failed(err)) return LogStep(err, "restore: list");
    std::vector<Move> moves;
    std::set<Path> folders{i_root.GetPath()};
    for (const Path& file : files) {
        folders.insert((i_root.GetPath() / file).parent_path());
        err = MoveIn(moves.emplace_back(Move{file}));
        if (Failed(err)) break;
    }
    if (!Failed(err)) err = LogStep(SyncFolders(folders), "restore: sync");
    if (Failed(err) && !TakeBack(moves)) {
        Log("### The restore of the library is not finished; it goes on before the library is read again");
        return err;
    }
    return FirstOf(err, LogStep(DeleteIfThere(In(kReady_Folder)), "restore: clean up"));
}

/** The present file goes aside, the new one takes its name. After a failure the present one is there again, or `move`
    says that it is not. */
OSErr CLibraryRestore::MoveIn(Move& move) const {
    const Path place = i_root.GetPath() / move.file, old = In(kOld_Folder) / move.file;
    OSErr err = FirstOf(FSrMakeFolders(place.parent_path()), FSrMakeFolders(old.parent_path()));
    bool thereB = false;
    if (!Failed(err)) err = FSrObjectExists(CFileRef(place), thereB);
    if (!Failed(err) && thereB) {
        err = Rename(place, old);
        move.hadOldB = !Failed(err);
    }
    if (!Failed(err)) err = Rename(In(kNew_Folder) / move.file, place);
    return LogStep(err, "restore: move", place);
}

bool CLibraryRestore::TakeBack(const std::vector<Move>& moves) const {
    bool wholeB = true;
    for (auto it = moves.rbegin(); it != moves.rend(); ++it) {
        const Move& move = *it;
        const Path place = i_root.GetPath() / move.file, fresh = In(kNew_Folder) / move.file;
        bool stillB = false;   // the new one was not moved in
        OSErr err = FSrObjectExists(CFileRef(fresh), stillB);
        if (!Failed(err) && !stillB) err = Rename(place, fresh);
        if (!Failed(err) && move.hadOldB) err = Rename(In(kOld_Folder) / move.file, place);
        wholeB = !Failed(LogStep(err, "restore: take back", place)) && wholeB;
    }
    return wholeB;
}
