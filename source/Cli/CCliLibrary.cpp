#include "Cli/CCliLibrary.h"

#include "Core/CPreferences.h"
#include "Core/FSrObjects.h"
#include "Platform/CFolders.h"

namespace {

bool HoldsLibrary(const std::filesystem::path& folder) {
    std::error_code problem;
    return std::filesystem::exists(folder / "Library.xml", problem) ||
           std::filesystem::exists(folder / "Songs.vlb", problem);
}

}   // namespace

LibraryPlaces CliLibraryPlaces(const CliContext& context) {
    // A folder that is a library is no place for the other folders of a root.
    const bool itselfB = !context.root.empty() && HoldsLibrary(context.root);
    if (!context.root.empty() && !itselfB) CFolders::SetRoot(context.root);
    LibraryPlaces places;
    places.root = CFileRef(itselfB ? std::filesystem::absolute(context.root) : CFolders::Music() / "Vopla");
    const auto prefs = CliPreferences(context);
    places.musicFolder = prefs->MusicFolder();
    if (places.musicFolder.empty()) places.musicFolder = places.root.GetPath().parent_path() / "Vopla Music";
    places.cacheFolder = prefs->CacheFolder();
    if (places.cacheFolder.empty()) places.cacheFolder = CFolders::Cache() / "Vopla";
    return places;
}

CCliLibrary::CCliLibrary(const CliContext& context)
    : i_context(context), i_places(CliLibraryPlaces(context)), i_database(i_above) {}

OSErr CCliLibrary::IsThere() const {
    bool thereB = false;
    const OSErr err = FSrFolderExists(i_places.root, thereB);
    return Failed(err) || thereB ? err : fnfErr;
}

OSErr CCliLibrary::Load() {
    i_store = std::make_unique<CLibraryStore>(i_database, i_places);
    const OSErr err = i_store->LoadLibrary();
    for (const std::string& problem : i_store->Report().problems) CliWarn(i_context, problem);
    if (Failed(err)) return err;
    i_store->AfterStart();
    return IsEmpty() ? fnfErr : noErr;
}

OSErr CCliLibrary::Save(SaveForce force) {
    i_database.FlushChanges();
    return i_store->SaveLibraryNow(force);
}
