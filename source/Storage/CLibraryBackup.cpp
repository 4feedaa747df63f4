#include "Storage/CLibraryBackup.h"

#include <algorithm>
#include <chrono>
#include <ctime>
#include <utility>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Files/CDataFork.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Storage/BackupNames.h"
#include "Storage/CLibraryRestore.h"
#include "Storage/LibraryImage.h"
#include "Zip/CZipWriter.h"

namespace {

constexpr std::string_view kBackup_Prefix = "Library ", kBackup_Suffix = ".zip", kPart_Suffix = ".part";

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
        // The music folder may lie in the root: what stands there beside songs is theirs.
        constexpr std::string_view kFolders[] = {kStr_PLAYLISTS_FOLDER, kStr_VENUES_FOLDER, kStr_STORES_FOLDER};
        const bool oursB = !below.empty() || std::ranges::find(kFolders, name) != std::end(kFolders);
        if (info.kind != FileKind::kFolder || !oursB) continue;
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

/** Whether its bytes can be had at all: a file that cannot be opened must not cost the copy of all others. */
bool MayRead(const CFileRef& file) {
    CDataFork fork;
    return !Failed(fork.Open(file, FileAccess::kRead));
}

}   // namespace

OSErr CLibraryBackup::KeepOnce() {
    if (i_keptB) return noErr;
    std::vector<CFileRef::Path> leftOut;
    const OSErr err = Pack(leftOut);
    static_cast<void>(LogStep(err, "keeping a copy of the library", i_root.GetPath()));
    if ((Failed(err) || !leftOut.empty()) && !std::exchange(i_toldB, true))
        ShowAlert(Localize("No whole copy of the library could be kept before it is saved."),
                  Failed(err) ? FaultText(err, FaultOf::kFolder, i_root.GetPath().string())
                              : Localize("“%1” cannot be read.", {leftOut.front().string()}));
    if (Failed(err)) return err;
    i_keptB = true;
    static_cast<void>(LogStep(Prune(), "removing old copies of the library", i_root.GetPath()));
    return noErr;
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
    CLibraryRestore restore(i_root);
    if (const OSErr err = restore.FinishEarlier(); Failed(err)) return err;
    if (const OSErr err = restore.Prepare(backup); Failed(err)) return err;
    std::vector<CFileRef::Path> leftOut;
    OSErr err = Pack(leftOut);
    if (!Failed(err) && !leftOut.empty()) err = permErr;   // what is replaced must be in a copy
    if (Failed(err)) {
        static_cast<void>(restore.Drop());
        return LogStep(err, "restore: copy of the present", i_root.GetPath());
    }
    if (const OSErr carried = restore.Carry(); Failed(carried)) return carried;
    LogF("Library restored from: %s", backup.GetPath().c_str());
    return noErr;
}

OSErr CLibraryBackup::Pack(std::vector<CFileRef::Path>& leftOut) {
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
    CZipWriter writer(CZipWriter::Effort::kFast);   // the first save of a run waits for it
    if (const OSErr err = writer.Open(zip); Failed(err)) return err;
    for (const CFileRef::Path& file : files) {
        const CFileRef source(i_root.GetPath() / file);
        if (!MayRead(source)) {
            leftOut.push_back(file);
            continue;
        }
        const OSErr err = writer.Add(source, BackupMemberName(file));
        if (Failed(err)) return LogStep(err, "copy of the library", file);
    }
    if (const OSErr err = writer.Close(); Failed(err)) return err;
    if (const OSErr err = FSrRename(zip, name); Failed(err)) return err;
    LogF("Library copied to: %s, %zu files", zip.GetPath().c_str(), files.size() - leftOut.size());
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
