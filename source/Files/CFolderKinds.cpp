#include "Files/CFolderKinds.h"

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Files/FSrFolders.h"
#include "Files/FSrMove.h"
#include "Files/FSrObjects.h"
#include "Platform/CFolders.h"

namespace {

using Path = CFileRef::Path;

/** The resources, from the most particular place to the most general: as laid out on the first platform, beside the
    program, as installed, and in a source tree above a build folder. */
OSErr FindResources(CFileRef& folder) {
    const Path program = CFolders::Program();
    if (program.empty()) return fnfErr;
    std::vector<Path> places = {program / " source" / "Resources" / "package", program / "resources",
                                program.parent_path() / "share" / "vopla"};
    Path above = program;
    for (int n = 0; n < 4 && above != above.parent_path(); ++n) {
        above = above.parent_path();
        places.push_back(above / "resources");
    }
    for (const Path& place : places) {
        bool thereB = false;
        if (Failed(FSrFolderExists(CFileRef(place), thereB)) || !thereB) continue;
        folder.SetPath(place);
        return noErr;
    }
    return fnfErr;
}

OSErr FindMade(const Path& place, CFileRef& folder) {
    const OSErr err = FSrMakeFolders(place);
    if (!Failed(err)) folder.SetPath(place);
    return err;
}

/** Old plug-ins lying beside the program go where they belong; one that cannot stays and is told. */
void MoveOldPlugins(const CFileRef& to) {
    const Path program = CFolders::Program();
    const CFileRef from(program / "Vopla Plugins");
    bool thereB = false;
    std::vector<std::string> names;
    if (program.empty() || Failed(FSrFolderExists(from, thereB)) || !thereB || Failed(FSrList(from, names))) return;
    for (const std::string& name : names) {
        CFileRef plugin(from, name);
        if (const OSErr err = FSrMoveFile(plugin, to); Failed(err))
            ShowAlert(Localize("There was an error moving “%1” into the folder “%2”", {name, to.GetName()}),
                      FaultText(err, plugin.GetPath()));
    }
}

bool IsHeld(FolderKind kind) {
    return kind == FolderKind::kDatabase || kind == FolderKind::kMusicLibrary || kind == FolderKind::kHeldFolder ||
           kind == FolderKind::kCacheLocation;
}

}   // namespace

OSErr CFolderKinds::FindRoot(CFileRef& folder) {
    {
        const std::scoped_lock guard(i_lock);
        if (!i_root.IsEmpty()) {
            folder = i_root;
            return noErr;
        }
    }
    CFileRef found;
    if (const OSErr err = FindMade(CFolders::Music() / "Vopla", found); Failed(err)) return err;
    const std::scoped_lock guard(i_lock);
    folder = i_root = found;
    return noErr;
}

OSErr CFolderKinds::FindHeld(FolderKind kind, CFileRef& folder) {
    {
        const std::scoped_lock guard(i_lock);
        if (const auto it = i_held.find(kind); it != i_held.end()) {
            folder = it->second;
            return noErr;
        }
    }
    if (kind == FolderKind::kMusicLibrary) return Find(FolderKind::kMusic, folder);
    if (kind == FolderKind::kCacheLocation) return Find(FolderKind::kDefaultCache, folder);
    return fnfErr;
}

OSErr CFolderKinds::FindPlugins(CFileRef& folder) {
    if (const OSErr err = FindMade(CFolders::Data() / "Vopla" / "Vopla Plugins", folder); Failed(err)) return err;
    {
        const std::scoped_lock guard(i_lock);
        if (i_pluginsMovedB) return noErr;
        i_pluginsMovedB = true;
    }
    MoveOldPlugins(folder);
    return noErr;
}

OSErr CFolderKinds::Find(FolderKind kind, CFileRef& folder, const CFileRef& near) {
    switch (kind) {
        case FolderKind::kRoot:
            return FindRoot(folder);
        case FolderKind::kDatabase:
        case FolderKind::kMusicLibrary:
        case FolderKind::kHeldFolder:
        case FolderKind::kCacheLocation:
            return FindHeld(kind, folder);
        case FolderKind::kMusic:
        case FolderKind::kCDs: {
            CFileRef root;
            if (const OSErr err = FindRoot(root); Failed(err)) return err;
            return FSrFindOrCreateFolder(root, kind == FolderKind::kMusic ? "Vopla Music" : "Vopla CDs", folder);
        }
        case FolderKind::kTemp:
            return FSrFindVolumeTemp(near.IsEmpty() ? CFileRef(CFolders::Home() / "home") : near, folder);
        case FolderKind::kPlugins:
            return FindPlugins(folder);
        case FolderKind::kResources:
            return FindResources(folder);
        case FolderKind::kPictures: {
            CFileRef resources;
            if (const OSErr err = FindResources(resources); Failed(err)) return err;
            folder = CFileRef(resources, "pictures");
            return noErr;
        }
        case FolderKind::kDefaultCache:
            return FindMade(CFolders::Cache() / "Vopla", folder);
    }
    return paramErr;
}

OSErr CFolderKinds::Find(long kindL, CFileRef& folder, const CFileRef& near) {
    if (kindL < static_cast<long>(FolderKind::kRoot) || kindL > static_cast<long>(FolderKind::kDefaultCache))
        return paramErr;
    return Find(static_cast<FolderKind>(kindL), folder, near);
}

OSErr CFolderKinds::Hold(FolderKind kind, const CFileRef& folder) {
    if (!IsHeld(kind)) return paramErr;
    const std::scoped_lock guard(i_lock);
    if (folder.IsEmpty())
        i_held.erase(kind);
    else
        i_held[kind] = folder;
    return noErr;
}

void CFolderKinds::ForgetRoot(const CFileRef& chosen) {
    const std::scoped_lock guard(i_lock);
    i_root = chosen;
}
