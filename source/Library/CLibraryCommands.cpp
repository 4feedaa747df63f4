#include "Library/CLibraryCommands.h"

#include <algorithm>
#include <set>

#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/FileURL.h"
#include "Core/ThreadInfo.h"
#include "Core/WaitMode.h"
#include "Library/CSongDatabase.h"
#include "Library/CT_ConformNames.h"
#include "Library/CT_FindMissing.h"
#include "Library/CT_PurgeCache.h"
#include "Library/CT_TrashSongs.h"
#include "Library/CT_UnzipSongs.h"
#include "Library/SongFileTypes.h"
#include "Library/ZipSongs.h"

namespace {

constexpr std::size_t kReveal_Unasked = 5;   // so many folders may open without a question

}   // namespace

CLibraryCommands::CLibraryCommands(CSongDatabase& database, CUserInterface& ui)
    : i_database(database),
      i_ui(ui),
      i_zipper(database, i_busyRef),
      i_unpackerRef(std::make_shared<CSongUnpacker>(database.Self(), i_busyRef)) {}

bool CLibraryCommands::Confirm(LibraryDialog dialog, const std::string& detail) {
    (void)Assert(IsMainThread());
    return i_ui.Ask(LibraryQuestion(dialog, detail)).buttonIndex == kAnswer_Do;
}

bool CLibraryCommands::HasPlaying(std::span<const SongID> songs) const {
    return std::ranges::find(songs, i_database.PlayingSong()) != songs.end();
}

bool CLibraryCommands::StopPlaying() {
    if (!Confirm(LibraryDialog::kDeletePlaying)) return false;
    i_database.Host().StopPlayback();
    return true;
}

std::vector<SongID> CLibraryCommands::SongsOf(const SDB_Selection& selection) const {
    if (selection.List() != &i_database.Library()) {
        Log("Converting Playlist selection to Library selection…");
        Log("Converting Playlist selection to Song List");
    }
    return i_database.SongsOf(selection);
}

void CLibraryCommands::WaitForSorts(CProgressView& progress) const {
    const auto sorting = [this] { return std::ranges::any_of(i_database.PlayLists(), &CPlayList::IsSorting); };
    if (!sorting()) return;
    progress.SetText("Waiting for sort tasks…");
    while (sorting()) WaitOneTurn();
}

OSErr CLibraryCommands::RemoveSongs(const std::vector<SongID>& songs, const std::string& title) {
    const std::unique_ptr<CProgressView> progressP = i_ui.OpenProgress(title);
    WaitForSorts(*progressP);
    progressP->SetText("Removing Songs from all playlists");
    progressP->Redraw();
    return i_database.RemoveFromLibrary(songs);
}

OSErr CLibraryCommands::RemoveFromLibrary(const SDB_Selection& selection) {
    const std::vector<SongID> songs = SongsOf(selection);
    if (songs.empty()) return noErr;
    if (!Confirm(LibraryDialog::kRemoveFromLibrary) || (HasPlaying(songs) && !StopPlaying())) return userCanceledErr;
    return RemoveSongs(songs, "Remove from Library");
}

OSErr CLibraryCommands::RemoveDuplicates(const SDB_Selection& selection) {
    if (selection.List() != &i_database.Library()) return paramErr;
    if (i_database.DuplicatesIn(selection).empty()) {
        i_ui.Alert("There are no duplicates.", "Each of these songs has one row in the library.");
        return noErr;
    }
    if (!Confirm(LibraryDialog::kRemoveDuplicates)) return userCanceledErr;
    const std::unique_ptr<CProgressView> progressP = i_ui.OpenProgress("Remove Duplicates");
    WaitForSorts(*progressP);
    return i_database.RemoveDuplicates(selection);
}

OSErr CLibraryCommands::TrashOriginals(const SDB_Selection& selection, Done done) {
    std::vector<SongID> songs = SongsOf(selection);
    if (songs.empty()) return noErr;
    if (!Confirm(LibraryDialog::kTrashOriginals) || (HasPlaying(songs) && !StopPlaying())) return userCanceledErr;
    Log("Moving songs to trash");
    return CT_TrashSongs::Start(i_database, std::move(songs),
                                Telling("Some files could not be moved to the trash.", std::move(done)));
}

OSErr CLibraryCommands::DeleteTracks(const SDB_Selection& selection, WarnLast warnLast) {
    const CPlayList* const listP = selection.List();
    if (listP == nullptr) return paramErr;
    const PlaylistID list = listP->ID();
    if (list == kPlaylistID_Library) return RemoveFromLibrary(selection);
    if (!listP->IsModifyable()) return paramErr;
    const std::vector<PLItemID> items = selection.Items();
    const bool lastB = warnLast == WarnLast::kYes && items.size() >= listP->Count();
    if (lastB && !Confirm(LibraryDialog::kLastSong, listP->Name().UTF8())) return userCanceledErr;
    const auto playsB = [&](PLItemID item) { return i_database.Host().IsPlaying(list, item); };
    const bool songB = HasPlaying(SongsOf(selection));   // another row of it may go, and the song plays on
    if (songB && std::ranges::any_of(items, playsB) && !StopPlaying()) return userCanceledErr;
    const std::unique_ptr<CProgressView> progressP = i_ui.OpenProgress("Delete Tracks");
    WaitForSorts(*progressP);
    progressP->SetText("Clearing Playlist");
    Log("Clearing Playlist");
    return i_database.RemoveFromList(list, items);
}

OSErr CLibraryCommands::DeletePlaylist(PlaylistID list) {
    const CPlayList* const listP = i_database.GetPlayList(list);
    if (listP == nullptr) return fnfErr;
    const std::string name = listP->Name().UTF8();
    if (!Confirm(LibraryDialog::kDeletePlaylist, name)) return userCanceledErr;
    const OSErr err = i_database.DeletePlaylist(list);
    if (Failed(err)) i_ui.Alert("The playlist “" + name + "” could not be deleted.", kDelete_HintZ);
    return err;
}

CPlayList* CLibraryCommands::FindNamed(const SuperString& name, PlaylistID except) const {
    for (CPlayList* const listP : i_database.PlayLists())
        if (listP->Type() == kSourceDB_PLAYLIST && listP->ID() != except && listP->Name().EqualNoCase(name)) return listP;
    return nullptr;
}

OSErr CLibraryCommands::RenamePlaylist(PlaylistID list, const SuperString& name) {
    if (FindNamed(name, list) != nullptr && !Confirm(LibraryDialog::kSameName, name.UTF8())) return userCanceledErr;
    CPlayList* const listP = i_database.GetPlayList(list);   // it may have gone meanwhile
    return listP == nullptr ? fnfErr : listP->Rename(name);
}

CPlayList& CLibraryCommands::NewPlaylist(const std::string& wish) {
    const std::string base = wish.empty() ? GetSourceName(kSourceDB_PLAYLIST) : wish;
    std::string name = base;
    for (int numberL = 2; FindNamed(SuperString(name)) != nullptr; ++numberL) name = base + " " + std::to_string(numberL);
    return i_database.AddPlaylist(kSourceDB_PLAYLIST, SuperString(name));
}

CPlayList& CLibraryCommands::ListNamed(const std::string& name) {
    CPlayList* const listP = FindNamed(SuperString(name));
    return listP != nullptr ? *listP : NewPlaylist(name);
}

OSErr CLibraryCommands::Paste(std::span<const SongID> songs, const CCFDictionary& meta) {
    if (songs.empty()) return noErr;
    if (!Confirm(LibraryDialog::kPaste)) return userCanceledErr;
    for (const SongID id : songs) (void)i_database.WithSong(id, [&](CSong& song) { song.Meta().FromDictionary(meta); });
    return noErr;
}

OSErr CLibraryCommands::Reveal(std::span<const SongID> songs) {
    std::set<std::filesystem::path> folders;
    for (const SongID id : songs) {
        const auto files = CSongFiles::Of(i_database, id);
        if (!files) continue;
        // As the places say: a disc that is away would hold up the main thread, and its folder opens to nothing.
        for (const SDB_SongFile type : {SDB_SongFile_ZIP, SDB_SongFile_VIDEO, SDB_SongFile_AUDIO})
            if (!files->Ref(type).IsEmpty()) {
                folders.insert(files->Ref(type).GetPath().parent_path());
                break;
            }
    }
    if (folders.empty()) return fnfErr;
    if (folders.size() > kReveal_Unasked && !Confirm(LibraryDialog::kReveal, std::to_string(songs.size())))
        return userCanceledErr;
    for (const std::filesystem::path& folder : folders)
        if (!i_ui.OpenPage(FileURL(folder))) return LogStep(fnfErr, "revealing", folder);
    return noErr;
}

OSErr CLibraryCommands::LocateMissing(SongID song) {
    const auto files = CSongFiles::Of(i_database, song);
    if (!files) return fnfErr;
    const auto folder =
        i_ui.ChooseFolder("Find Song: “" + files->Name() + "”: please locate the following musical arrangment");
    if (!folder) return userCanceledErr;
    std::vector<std::pair<SDB_SongFile, CFileRef>> found;
    for (const SDB_SongFile type : {SDB_SongFile_ZIP, SDB_SongFile_VIDEO, SDB_SongFile_AUDIO}) {
        if (files->Ref(type).IsEmpty()) continue;
        CFileRef file(CFileRef(*folder), files->Ref(type).GetName());
        if (!Failed(file.Resolve())) found.emplace_back(type, file);
    }
    const bool thereB = i_database.WithSong(song, [&](CSong& place) {
        for (const auto& [type, file] : found) (void)place.SetFile(type, file);
    });
    if (!thereB || found.empty()) return fnfErr;
    return CT_FindMissing::Start(i_database, {song});
}

OSErr CLibraryCommands::PurgeCache(Done done) { return CT_PurgeCache::Start(i_database, i_busyRef, std::move(done)); }

OSErr CLibraryCommands::ConformNames(std::span<const SongID> songs, Done done) {
    return CT_ConformNames::Start(i_database, std::vector(songs.begin(), songs.end()), std::move(done));
}

OSErr CLibraryCommands::FindMissing(std::span<const SongID> songs, Done done) {
    return CT_FindMissing::Start(i_database, std::vector(songs.begin(), songs.end()), std::move(done));
}

CLibraryCommands::Done CLibraryCommands::Telling(const char* wordsZ, Done done) {
    return [&ui = i_ui, wordsZ, done = std::move(done)](OSErr err) {
        const bool wishedB = err == userCanceledErr || err == abortErr || err == alreadyReportedErr;
        if (Failed(err) && !wishedB) ui.Alert(wordsZ, FaultText(err, FaultOf::kStep, {}));
        if (done) done(err);
    };
}

std::vector<SongID> CLibraryCommands::Those(std::span<const SongID> songs, bool (*wantedP)(const CSong& song)) const {
    std::vector<SongID> those;
    for (const SongID id : songs)
        if (const CSong* const songP = i_database.GetSong(id); songP != nullptr && wantedP(*songP)) those.push_back(id);
    return those;
}

bool CLibraryCommands::CanZip(const CSong& song) {
    return song.GetStatus(SDB_SongFile_ZIP) == SDB_SongFileStatus_NONE &&
           song.GetStatus(SDB_SongFile_AUDIO) != SDB_SongFileStatus_NONE &&
           song.GetStatus(SDB_SongFile_VIDEO) != SDB_SongFileStatus_NONE &&
           !IsMovieFile(song.FileRef(SDB_SongFile_VIDEO).GetPath());
}

bool CLibraryCommands::CanUnzip(const CSong& song) {
    return song.GetStatus(SDB_SongFile_ZIP) != SDB_SongFileStatus_NONE;
}

OSErr CLibraryCommands::Zip(std::span<const SongID> songs, Done done) {
    return ZipSongs(i_database, i_zipper, Those(songs, &CanZip),
                    Telling("Some songs could not be zipped.", std::move(done)));
}

OSErr CLibraryCommands::Unzip(std::span<const SongID> songs, Done done) {
    std::vector<SongID> zipped = Those(songs, &CanUnzip);
    if (zipped.empty()) return paramErr;
    const auto folder = i_ui.ChooseFolder("Where shall the unzipped files go?");
    if (!folder) return userCanceledErr;
    return CT_UnzipSongs::Start(i_database, i_unpackerRef, std::move(zipped), CFileRef(*folder),
                                Telling("Some songs could not be unzipped.", std::move(done)));
}

void CLibraryCommands::StopWork() {
    i_database.StopTasks();
    i_zipper.AbortAll();
}
