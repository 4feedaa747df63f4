#include "Library/CLibraryBackup.h"

#include <chrono>
#include <ctime>

#include "Core/CByteSource_Zip.h"
#include "Core/CDataFork.h"
#include "Core/CLog.h"
#include "Core/CSafeSave.h"
#include "Core/CZipArchive.h"
#include "Core/CZipWriter.h"
#include "Core/FSrObjects.h"

namespace {

constexpr std::string_view kBackup_Prefix = "Library ", kBackup_Suffix = ".zip", kPart_Suffix = ".part";
constexpr std::size_t kPiece_Bytes = std::size_t{256} << 10;

bool IsLibraryFile(const CFileRef::Path& file) { return file.extension() == ".xml" || file.filename() == "Songs.vlb"; }

/** The library's files below `folder`, as paths from the root on. Folders of links are not entered. */
OSErr Collect(const CFileRef& root, const CFileRef::Path& below, std::vector<CFileRef::Path>& files) {
    std::vector<std::string> names;
    if (const OSErr err = FSrList(CFileRef(root.GetPath() / below), names); Failed(err)) return err;
    for (const std::string& name : names) {
        if (name.starts_with("~")) continue;
        const CFileRef::Path path = below / name;
        FileInfo info;
        if (CFileCalls::Get().Look(root.GetPath() / path, false, info) != 0) continue;
        if (info.kind == FileKind::kFile && IsLibraryFile(path)) files.push_back(path);
        if (info.kind != FileKind::kFolder) continue;
        if (const OSErr err = Collect(root, path, files); Failed(err)) return err;
    }
    return noErr;
}

/** By UTC: local time would sort wrongly when the clocks are put back. */
std::string BackupName(std::chrono::system_clock::time_point at) {
    const std::time_t second = std::chrono::system_clock::to_time_t(at);
    const auto millisL = std::chrono::duration_cast<std::chrono::milliseconds>(at.time_since_epoch()).count() % 1000;
    std::tm utc{};
    ::gmtime_r(&second, &utc);
    std::array<char, 64> stamp{};
    const std::size_t stampL = std::strftime(stamp.data(), stamp.size(), "%Y-%m-%d %H.%M.%S", &utc);
    std::snprintf(stamp.data() + stampL, stamp.size() - stampL, ".%03d", static_cast<int>(millisL));
    return std::string(kBackup_Prefix) + stamp.data() + std::string(kBackup_Suffix);
}

/** Hands the bytes of a member to `take`, to the end and its checksum. */
template <typename Take>
OSErr ForEachPiece(const CFileRef& zip, const CZipMember& member, Take take) {
    CByteSource_Zip source;
    if (const OSErr err = source.Open(zip, member); Failed(err)) return err;
    std::vector<std::byte> piece(kPiece_Bytes);
    for (OSErr read = noErr; read != eofErr;) {
        std::size_t got = 0;
        read = source.Read(piece, got);
        if (Failed(read) && read != eofErr) return read;
        if (const OSErr err = take(std::span<const std::byte>(piece).first(got)); Failed(err)) return err;
    }
    return noErr;
}

OSErr RestoreMember(const CFileRef& zip, const CZipMember& member, const CFileRef& root) {
    CFileRef file(root.GetPath() / member.name);
    if (const OSErr err = FSrMakeFolders(file.GetPath().parent_path()); Failed(err)) return err;
    CSafeSave save(file);
    if (const OSErr err = save.Start(SaveMode::kNew); Failed(err)) return err;
    CDataFork fork;
    if (const OSErr err = fork.Open(file, FileAccess::kCreate); Failed(err)) return err;
    if (const OSErr err = fork.SetEOF(CDataFork::PosMode::kFromStart, 0); Failed(err)) return err;
    const OSErr copied =
        ForEachPiece(zip, member, [&fork](std::span<const std::byte> piece) { return fork.Write(piece); });
    if (Failed(copied)) return copied;
    if (const OSErr err = fork.Close(); Failed(err)) return err;
    return save.Finish();
}

}   // namespace

OSErr CLibraryBackup::KeepOnce() {
    if (i_keptB) return noErr;
    if (const OSErr err = Pack(); Failed(err)) return LogStep(err, "keeping a copy of the library", i_root.GetPath());
    i_keptB = true;
    return LogStep(Prune(), "removing old copies of the library", i_root.GetPath());
}

OSErr CLibraryBackup::List(std::vector<CFileRef>& backups) const {
    backups.clear();
    bool thereB = false;
    if (const OSErr err = FSrFolderExists(Folder(), thereB); Failed(err) || !thereB) return err;
    std::vector<std::string> names;
    if (const OSErr err = FSrList(Folder(), names); Failed(err)) return err;
    for (const std::string& name : names)
        if (name.starts_with(kBackup_Prefix) && name.ends_with(kBackup_Suffix)) backups.emplace_back(Folder(), name);
    std::ranges::reverse(backups);   // their names begin with the date
    return noErr;
}

OSErr CLibraryBackup::Restore(const CFileRef& backup) {
    CZipArchive archive;
    if (const OSErr err = archive.Open(backup); Failed(err)) return LogStep(err, "restore: open", backup.GetPath());
    if (archive.IsRepaired()) return LogStep(ioErr, "restore: a damaged copy", backup.GetPath());
    for (const CZipMember& member : archive.Members()) {
        const bool oursB = !member.IsClimbing() && !member.IsFolder() && IsLibraryFile(member.name);
        if (!oursB) return LogStep(paramErr, "restore: no copy of a library", backup.GetPath());
        const OSErr err = ForEachPiece(backup, member, [](std::span<const std::byte>) { return noErr; });
        if (Failed(err)) return LogStep(err, "restore: a damaged copy", backup.GetPath());
    }
    if (const OSErr err = Pack(); Failed(err)) return LogStep(err, "restore: copy of the present", i_root.GetPath());
    for (const CZipMember& member : archive.Members()) {
        const OSErr err = RestoreMember(backup, member, i_root);
        if (Failed(err)) return LogStep(err, "restore: write", i_root.GetPath() / member.name);
    }
    LogF("Library restored from: %s", backup.GetPath().c_str());
    return noErr;
}

OSErr CLibraryBackup::Pack() {
    std::vector<CFileRef::Path> files;
    if (const OSErr err = Collect(i_root, {}, files); Failed(err)) return err;
    if (files.empty()) return noErr;
    if (const OSErr err = FSrMakeFolders(Folder().GetPath()); Failed(err)) return err;
    std::string name;
    CFileRef zip;
    bool takenB = true;
    for (auto at = std::chrono::system_clock::now(); takenB; at += std::chrono::milliseconds(1)) {
        name = BackupName(at);
        zip = CFileRef(Folder(), name + std::string(kPart_Suffix));
        if (const OSErr err = FSrObjectExists(CFileRef(Folder(), name), takenB); Failed(err)) return err;
        if (takenB) continue;
        if (const OSErr err = FSrObjectExists(zip, takenB); Failed(err)) return err;
    }
    CZipWriter writer;
    if (const OSErr err = writer.Open(zip); Failed(err)) return err;
    for (const CFileRef::Path& file : files) {
        const OSErr err = writer.Add(CFileRef(i_root.GetPath() / file), file.generic_string());
        if (Failed(err)) return LogStep(err, "copy of the library", file);
    }
    if (const OSErr err = writer.Close(); Failed(err)) return err;
    if (const OSErr err = FSrRename(zip, name); Failed(err)) return err;
    LogF("Library copied to: %s, %zu files", zip.GetPath().c_str(), files.size());
    return noErr;
}

OSErr CLibraryBackup::Prune() const {
    std::vector<CFileRef> backups;
    if (const OSErr err = List(backups); Failed(err)) return err;
    OSErr first = noErr;
    for (std::size_t n = kKeep_Most; n < backups.size(); ++n) first = FirstOf(first, FSrDelete(backups[n]));
    bool thereB = false;
    if (const OSErr err = FSrFolderExists(Folder(), thereB); Failed(err) || !thereB) return FirstOf(first, err);
    std::vector<std::string> names;   // copies that a crash cut short
    first = FirstOf(first, FSrList(Folder(), names));
    for (const std::string& name : names)
        if (name.starts_with(kBackup_Prefix) && name.ends_with(kPart_Suffix))
            first = FirstOf(first, FSrDelete(CFileRef(Folder(), name)));
    return first;
}
