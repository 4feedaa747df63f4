#include "Cli/CCliLibrary.h"

#include "Core/FaultText.h"
#include "Files/FSrObjects.h"
#include "Platform/CFolders.h"
#include "SongFiles/SongFolders.h"
#include "Values/CPreferences.h"

bool HoldsLibrary(const std::filesystem::path& folder) {
    std::error_code problem;
    return std::filesystem::exists(folder / "Library.xml", problem) ||
           std::filesystem::exists(folder / "Songs.vlb", problem);
}

LibraryPlaces CliLibraryPlaces(const CliContext& context) {
    // A folder that is a library is no place for the other folders of a root.
    const bool itselfB = !context.root.empty() && HoldsLibrary(context.root);
    if (!context.root.empty() && !itselfB) CFolders::SetRoot(context.root);
    LibraryPlaces places;
    places.root = CFileRef(itselfB ? std::filesystem::absolute(context.root) : CFolders::Music() / "Vopla");
    const auto prefs = CliPreferences(context);
    places.musicFolder = prefs->MusicFolder();
    if (places.musicFolder.empty()) places.musicFolder = DefaultMusicFolder(places.root.GetPath());
    places.cacheFolder = prefs->CacheFolder();
    if (places.cacheFolder.empty()) places.cacheFolder = CFolders::Cache() / "Vopla";
    return places;
}

CCliLibrary::CCliLibrary(const CliContext& context)
    : i_context(context), i_places(CliLibraryPlaces(context)), i_database(i_above) {
    LibrarySettings settings = *i_database.Settings();
    settings.musicFolder = i_places.musicFolder;
    settings.cacheFolder = i_places.cacheFolder;
    i_database.SetSettings(std::move(settings));
}

int CliInUse(const CliContext& context, OSErr err) {
    return CliFail(context, err, "the library is in use: quit the program that has it, then try again");
}

int CCliLibrary::Take() {
    const OSErr err = i_lock.Take(i_places.root);
    return Failed(err) ? CliInUse(i_context, err) : 0;
}

OSErr CCliLibrary::Load() {
    i_store = std::make_unique<CLibraryStore>(i_database, i_places);
    const OSErr err = i_store->LoadLibrary();
    for (const std::string& problem : i_store->Report().problems) CliWarn(i_context, problem);
    if (Failed(err)) return err;
    i_store->AfterStart();
    return IsEmpty() ? fnfErr : noErr;
}

int CCliLibrary::CannotLoad(OSErr err) const {
    const std::filesystem::path& root = i_places.root.GetPath();
    if (i_store != nullptr && i_store->Report().tooNewB)
        return CliFail(i_context, err, root.string() + ": the library is of a later Vopla: update this program");
    if (err == fnfErr) return CliFail(i_context, err, "no library in " + root.string());
    return CliFail(i_context, err, root.string() + ": " + FaultWords(err, FaultOf::kFolder));
}

int CCliLibrary::LoadToRead() {
    const OSErr err = Load();
    return Failed(err) ? CannotLoad(err) : 0;
}

int CCliLibrary::TellUnread() const {
    const OSErr err = i_store->Report().err;
    if (!Failed(err)) return 0;
    const std::string folder = i_places.root.GetPath().string();
    return CliFail(
        i_context, err,
        folder + ": the library cannot be read whole: `library check` tells more, `library restore` has copies");
}

int CCliLibrary::TakeWhole() {
    bool thereB = false;
    if (const OSErr err = FSrFolderExists(i_places.root, thereB); Failed(err)) return CannotLoad(err);
    if (!thereB) return CannotLoad(fnfErr);
    if (const int status = Take(); status != 0) return status;
    if (const OSErr err = Load(); Failed(err)) return CannotLoad(err);
    return TellUnread();
}

int CCliLibrary::TakeToMend() {
    if (const OSErr err = FSrMakeFolders(i_places.root.GetPath()); Failed(err)) return CannotLoad(err);
    if (const int status = Take(); status != 0) return status;
    const OSErr err = Load();
    return Failed(err) && !IsEmpty() ? CannotLoad(err) : 0;
}

void CCliLibrary::MarkMissing(std::span<const SongID> songs) {
    for (const SongID id : songs)
        if (auto files = CSongFiles::Of(i_database, id)) i_database.GetSong(id)->SetMissing(!files->IsReachable());
}

OSErr CCliLibrary::Save(SaveForce force) {
    i_database.FlushChanges();
    return i_store->SaveLibraryNow(force);
}
