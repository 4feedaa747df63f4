#include "Files/FSrFolders.h"

#include <unistd.h>
#include <cerrno>

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Files/CDataFork.h"
#include "Files/FSError.h"
#include "Files/FSrCopy.h"
#include "Files/FSrObjects.h"
#include "Files/FSrTrash.h"
#include "Platform/CFolders.h"

namespace {

using Path = CFileRef::Path;

constexpr std::string_view kTemp_Name = "Vopla Temp";
constexpr std::string_view kTemp_HiddenName = ".Vopla Temp";

Path LastResortTemp() { return CFolders::Cache() / "Vopla"; }

/** Temporary folders are often open to all: a "Vopla Temp" that another user made there is not ours to use. */
OSErr MakeOwnFolder(const Path& folder) {
    if (const OSErr err = FSrMakeFolders(folder.parent_path()); Failed(err)) return err;
    int err = CFileCalls::Get().MakeFolder(folder, 0700);
    if (err != 0 && err != EEXIST) return FSError(err, "mkdir", folder);
    FileInfo info;
    err = CFileCalls::Get().Look(folder, false, info);
    if (err == 0 && info.kind != FileKind::kFolder) err = ENOTDIR;
    if (err == 0 && info.owner != ::geteuid()) err = EACCES;
    if (err != 0) return FSError(err, "mkdir", folder);
    return FSError(CFileCalls::Get().MayWrite(folder), "access", folder);
}

OSErr FindTemporary(Path& folder) {
    folder = CFolders::Temp();
    OSErr err = FSrMakeFolders(folder);
    if (!Failed(err)) err = FSError(CFileCalls::Get().MayWrite(folder), "access", folder);
    if (!Failed(err)) return noErr;
    folder = LastResortTemp();
    err = LogStep(FSrMakeFolders(folder, 0700), "last resort temp folder", folder);
    if (!Failed(err)) Log("Last Resort temp folder Success");
    return err;
}

OSErr Find(PlatformFolder kind, const CFileRef& near, Path& folder) {
    switch (kind) {
        case PlatformFolder::kPreferences:
            folder = CFolders::Config();
            return FSrMakeFolders(folder, 0700);
        case PlatformFolder::kCaches:
            folder = CFolders::Cache();
            return FSrMakeFolders(folder, 0700);
        case PlatformFolder::kTemporary:
            return FindTemporary(folder);
        case PlatformFolder::kTrash:
        case PlatformFolder::kVolumeTemp: {
            const CFileRef at = near.IsEmpty() ? CFileRef(CFolders::Home() / "home") : near;
            CFileRef found;
            const OSErr err = kind == PlatformFolder::kTrash ? FSrFindTrash(at, found) : FSrFindVolumeTemp(at, found);
            folder = found.GetPath();
            return err;
        }
    }
    return paramErr;
}

/** Removes an item unless a living process holds it. */
void PurgeUnheld(const CFileRef& item) {
    FileInfo info;
    if (CFileCalls::Get().Look(item.GetPath(), false, info) != 0) return;
    CDataFork hold;
    if (info.kind == FileKind::kFolder || info.kind == FileKind::kFile) {
        if (Failed(hold.Open(item, info.kind == FileKind::kFolder ? FileAccess::kFolder : FileAccess::kRead))) return;
        if (Failed(hold.Lock())) return;   // held by the living; or no locks here: then nobody can tell
    }
    static_cast<void>(FSrPurge(item, PurgePlace::kTemp));   // logged; the next start tries again
}

/** The items of a "Vopla Temp": those of its "temp", and any others. */
void PurgeIn(const Path& place) {
    bool thereB = false;
    if (Failed(FSrFolderExists(CFileRef(place), thereB)) || !thereB) return;
    std::vector<std::string> names;
    const CFileRef temp(place / "temp");
    if (!Failed(FSrFolderExists(temp, thereB)) && thereB && !Failed(FSrList(temp, names)))
        for (const std::string& name : names) PurgeUnheld(CFileRef(temp, name));
    if (!Failed(FSrList(CFileRef(place), names)))
        for (const std::string& name : names)
            if (name != "temp") PurgeUnheld(CFileRef(CFileRef(place), name));
}

}   // namespace

OSErr FSrFindFolder(PlatformFolder kind, const CFileRef& near, CFileRef& folder) {
    Path found;
    const OSErr err = Find(kind, near, found);
    if (Failed(err)) {
        LogF("FSFindFolder: %d", static_cast<int>(kind));
        return LogStep(err, "win FSrFindFolder", found);
    }
    folder.SetPath(found);
    return noErr;
}

OSErr FSrFindVolumeTemp(const CFileRef& near, CFileRef& folder) {
    std::uint64_t wanted = 0, device = 0;
    if (const OSErr err = FSrVolume(near.GetPath(), wanted); Failed(err)) return err;
    for (const Path& items : {CFolders::Temp(), LastResortTemp()}) {
        if (Failed(FSrVolume(items, device)) || device != wanted) continue;
        if (Failed(MakeOwnFolder(items / kTemp_Name))) continue;
        folder.SetPath(items / kTemp_Name);
        return noErr;
    }
    const Path beside = near.GetPath().parent_path() / kTemp_HiddenName;
    const OSErr err = MakeOwnFolder(beside);
    if (!Failed(err)) folder.SetPath(beside);
    return err;
}

bool IsInTemp(const Path& path) {
    if (IsInside(path, CFolders::Temp() / kTemp_Name) || IsInside(path, LastResortTemp() / kTemp_Name)) return true;
    for (const Path& name : path)
        if (name == kTemp_HiddenName) return true;
    return false;
}

void RemoveHiddenTemp(const CFileRef& folder) {
    if (folder.GetName() != kTemp_HiddenName) return;
    // Either may be missing or in use: then these fail, and nothing is to be done.
    static_cast<void>(CFileCalls::Get().RemoveFolder(folder.GetPath() / "temp"));
    static_cast<void>(CFileCalls::Get().RemoveFolder(folder.GetPath()));
}

OSErr FSrWriteTest(const CFileRef& folder) {
    const CFileRef test(folder, "write_test");
    CDataFork fork;
    OSErr err = fork.Open(test, FileAccess::kCreate);
    if (!Failed(err)) {
        constexpr std::string_view kText = "write_test";
        err = fork.Write(std::as_bytes(std::span{kText}));
        err = FirstOf(err, fork.Close());
        err = FirstOf(err, FSrDelete(test));
    }
    if (!Failed(err)) return noErr;
    ShowAlert(Localize("Vopla requires write access to the folder <%1>, you must fix this for Vopla to function "
                       "correctly.",
                       {folder.GetPath().string()}),
              FaultText(err, FaultOf::kFolder, folder.GetPath().string()));
    return LogStep(err, "write test", folder.GetPath());
}

OSErr FSrPurge(const CFileRef& item, PurgePlace place) {
    FileInfo info;
    const int looked = CFileCalls::Get().Look(item.GetPath(), false, info);
    LogF("## %s Purging %s: %s\n", place == PurgePlace::kTemp ? "Temp" : "Cache",
         looked == 0 && info.kind == FileKind::kFolder ? "Folder" : "File", item.GetPath().c_str());
    return LogStep(FSrDelete(item), "purging", item.GetPath());
}

void PurgeTemporary(std::span<const CFileRef> folders) {
    PurgeIn(CFolders::Temp() / kTemp_Name);
    PurgeIn(LastResortTemp() / kTemp_Name);
    for (const CFileRef& folder : folders) {
        const CFileRef hidden(folder, kTemp_HiddenName);
        PurgeIn(hidden.GetPath());
        RemoveHiddenTemp(hidden);
        bool thereB = false;
        std::vector<std::string> names;
        if (Failed(FSrFolderExists(folder, thereB)) || !thereB || Failed(FSrList(folder, names))) continue;
        for (const std::string& name : names)
            if (IsCopyInWorkName(name)) PurgeUnheld(CFileRef(folder, name));
    }
}
