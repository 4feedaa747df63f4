// The files of lists, singers and venues, which follow the names and the end of what they hold.
#include "Core/CLog.h"
#include "Files/FSrObjects.h"
#include "Storage/CLibraryStore.h"
#include "Storage/LibraryFileName.h"

namespace {

constexpr std::string_view kExtension = ".xml";

/** A name as old programs gave them: with a "*", or with a period at its end, which some discs refuse. */
bool IsOldName(std::string_view base) { return base.find("*") != std::string_view::npos || base.ends_with('.'); }

}   // namespace

void CLibraryStore::ListRemoved(PlaylistID list) {
    i_listRevisions.erase(list);
    const auto it = i_files.lists.find(list);
    if (it == i_files.lists.end()) return;
    i_gone.push_back(it->second);
    i_files.lists.erase(it);
}

/** A folder has moved, and what lies in it with it. */
void CLibraryStore::Follow(const CFSPathModder& moved) {
    for (auto& [id, folder] : i_files.singers) (void)moved(folder);
    for (auto& [id, file] : i_files.lists) (void)moved(file);
}

OSErr CLibraryStore::RenameListFile(const CPlayList& list, const SuperString& newName) {
    if (!IsSaving()) return RenameNow(list.ID(), newName);
    i_renames.emplace_back(list.ID(), newName);
    return noErr;
}

OSErr CLibraryStore::RenameNow(PlaylistID list, const SuperString& newName) {
    const auto venueIt = i_files.venues.find(list);
    const bool venueB = venueIt != i_files.venues.end();
    const auto listIt = i_files.lists.find(list);
    if (!venueB && listIt == i_files.lists.end()) return noErr;   // not on the disc yet
    CFileRef& file = venueB ? venueIt->second : listIt->second;
    const CFileRef::Path before = file.GetPath();
    const std::string wanted = LibraryFileName(newName) + (venueB ? "" : std::string(kExtension));
    if (wanted == file.GetName()) return noErr;
    std::string unique;
    if (const OSErr err = FSrMakeUniqueName(file.GetParent(), wanted, unique, file); Failed(err)) return err;
    if (const OSErr err = FSrRename(file, unique); Failed(err)) return err == fnfErr ? noErr : err;
    if (venueB) Follow({before, file.GetPath()});
    return noErr;
}

// ---- Names of old programs ----

void CLibraryStore::UpgradeNames() {
    for (auto& [id, file] : i_files.lists) UpgradeName(file);
    for (auto& [id, folder] : i_files.singers) UpgradeName(folder);
    const auto venues = i_files.venues;
    for (const auto& [id, folder] : venues) {   // a venue is called as its folder is
        CPlayList* const venueP = i_database.GetPlayList(id);
        if (venueP == nullptr || !IsOldName(folder.GetName())) continue;
        UpgradeName(i_files.venues[id]);
        const SuperString before = venueP->Name();
        if (Failed(venueP->Rename(SuperString(i_files.venues[id].GetName())))) continue;
        LibraryFacts facts = i_database.Facts();
        if (facts.currentVenue == before) facts.currentVenue = venueP->Name();
        i_database.SetFacts(std::move(facts));
    }
}

/** A file or folder that cannot be renamed keeps its name: it was read, so it can be written too. */
void CLibraryStore::UpgradeName(CFileRef& file) {
    const CFileRef before = file;
    const std::string name = before.GetName();
    const std::string_view extension = name.ends_with(kExtension) ? kExtension : std::string_view();
    const std::string base = name.substr(0, name.size() - extension.size());
    if (!IsOldName(base)) return;
    LogF("testing <%s/%s>\n", before.GetParent().GetName().c_str(), name.c_str());
    const std::string newName = LibraryFileName(base) + std::string(extension);
    bool thereB = false;
    if (Failed(FSrObjectExists(CFileRef(before.GetParent(), newName), thereB)) || thereB)
        return Log("### Error UpgradeName::ObjectExists");
    if (Failed(FSrRename(file, newName))) {
        file = before;
        return Log("### Error UpgradeName::Rename");
    }
    LogF("New Name <%s>\n", newName.c_str());
    Follow({before.GetPath(), file.GetPath()});
}
