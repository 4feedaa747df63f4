#include "SongFiles/CLibraryCommands.h"

#include <algorithm>
#include <array>
#include <set>

#include "Core/AlertHook.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Files/RevealFolder.h"
#include "Library/CSongDatabase.h"
#include "Library/SongFileTypes.h"
#include "Platform/BesideShow.h"
#include "SongFiles/CT_ConformNames.h"
#include "SongFiles/CT_FindMissing.h"
#include "SongFiles/CT_OnceSorted.h"
#include "SongFiles/CT_PurgeCache.h"
#include "SongFiles/CT_TrashSongs.h"
#include "SongFiles/CT_UnzipSongs.h"
#include "SongFiles/ZipSongs.h"
#include "Threads/ThreadInfo.h"
#include "Threads/WaitMode.h"

namespace {

constexpr std::size_t kReveal_Unasked = 5;   // so many folders may open without a question

}   // namespace

CLibraryCommands::Rows CLibraryCommands::RowsOf(const SDB_Selection& selection) const {
    Rows rows{selection.List()->ID(), {}};
    for (const PLItemID item : selection.Items())
        if (const auto row = selection.List()->Items()->Get(item)) rows.rows.emplace_back(item, row->target);
    return rows;
}

SDB_Selection CLibraryCommands::StillThere(const Rows& rows) const {
    const CPlayList* const listP = i_database.GetPlayList(rows.list);
    SDB_Selection selection(listP);
    std::vector<PLItemID> items;
    for (const auto& [item, target] : rows.rows) {
        const auto row = listP == nullptr ? std::nullopt : listP->Items()->Get(item);
        if (row && row->target == target) items.push_back(item);
    }
    selection.SetItems(std::move(items));
    return selection;
}

CLibraryCommands::CLibraryCommands(CSongDatabase& database, CUserInterface& ui)
    : i_database(database),
      i_ui(ui),
      i_zipper(database, i_busyRef),
      i_unpackerRef(std::make_shared<CSongUnpacker>(database.Self(), i_busyRef)) {}

OSErr CLibraryCommands::Asked(const std::function<void(std::function<void(const Work& work)> answer)>& ask) {
    (void)Assert(IsMainThread());
    struct Course {
        OSErr err = noErr;
        bool laterB = false;
    };
    const auto course = std::make_shared<Course>();
    ask([course, self = i_self.Handle()](const Work& work) {
        if (self.Get() == nullptr) return;   // the application is ending
        const OSErr err = work ? work() : userCanceledErr;
        if (!course->laterB)
            course->err = err;
        else if (Failed(err) && err != userCanceledErr)
            ShowAlert(Localize("That could not be done for all songs."), FaultText(err, FaultOf::kStep, {}));
    });
    course->laterB = true;
    return course->err;
}

OSErr CLibraryCommands::IfConfirmed(LibraryDialog dialog, const std::string& detail, Work work) {
    return Asked([&](auto answer) {
        AskThen(i_ui, LibraryQuestion(dialog, detail), [answer, work = std::move(work)](const Answer& given) {
            answer(given.buttonIndex == kAnswer_Do ? work : Work());
        });
    });
}

OSErr CLibraryCommands::InFolder(const std::string& prompt, std::function<OSErr(const CFileRef& folder)> work) {
    return Asked([&](auto answer) {
        ChooseFolderThen(i_ui, prompt, [answer, work = std::move(work)](const std::optional<CFileRef::Path>& folder) {
            answer(folder ? Work([&] { return work(CFileRef(*folder)); }) : Work());
        });
    });
}

OSErr CLibraryCommands::OnceStopped(const std::vector<SongID>& songs, Work work) {
    const SongID playing = i_database.PlayingSong();
    if (std::ranges::find(songs, playing) == songs.end()) return work();
    return IfConfirmed(LibraryDialog::kDeletePlaying, NamesOf(std::array{playing}), [this, songs, playing, work] {
        // Another one may play by now; that one was not asked about.
        if (i_database.PlayingSong() != playing) return OnceStopped(songs, work);
        i_database.Host().StopPlayback();
        return work();
    });
}

std::string CLibraryCommands::NamesOf(std::span<const SongID> songs) const {
    constexpr std::size_t kNamed = 3;
    std::string names;
    std::size_t namedL = 0;
    for (const SongID id : songs) {
        const CSong* const songP = i_database.GetSong(id);
        if (songP == nullptr) continue;
        if (++namedL > kNamed) break;
        names += (names.empty() ? "“" : ", “") + songP->Name().UTF8() + "”";
    }
    if (songs.size() <= kNamed) return names;
    return Localize("%1 and %2 more", {names, std::to_string(songs.size() - kNamed)}, "names of songs, a number");
}

std::vector<SongID> CLibraryCommands::SongsOf(const SDB_Selection& selection) const {
    if (selection.List() != &i_database.Library()) {
        Log("Converting Playlist selection to Library selection…");
        Log("Converting Playlist selection to Song List");
    }
    return i_database.SongsOf(selection);
}

OSErr CLibraryCommands::OnceSorted(Work work) {
    return Asked(
        [&](auto answer) { CT_OnceSorted::Do(i_database, [answer, work = std::move(work)] { answer(work); }); });
}

OSErr CLibraryCommands::RemoveSongs(const std::vector<SongID>& songs) {
    return OnceSorted([this, songs] {
        const std::unique_ptr<CProgressView> progressP = i_ui.OpenProgress(Localize("Remove from Library"));
        progressP->SetText(Localize("Removing Songs from all playlists"));
        progressP->Redraw();
        return i_database.RemoveFromLibrary(songs);
    });
}

OSErr CLibraryCommands::RemoveFromLibrary(const SDB_Selection& selection) {
    const std::vector<SongID> songs = SongsOf(selection);
    if (songs.empty()) return noErr;
    return IfConfirmed(LibraryDialog::kRemoveFromLibrary, NamesOf(songs),
                       [this, songs] { return OnceStopped(songs, [this, songs] { return RemoveSongs(songs); }); });
}

OSErr CLibraryCommands::RemoveDuplicates(const SDB_Selection& selection) {
    if (selection.List() != &i_database.Library()) return paramErr;
    SDB_Selection doubles(selection.List());
    doubles.SetItems(i_database.DuplicatesIn(selection));
    if (doubles.Count() == 0) {
        i_ui.Alert(Localize("There are no duplicates."), Localize("Each of these songs has one row in the library."));
        return noErr;
    }
    return IfConfirmed(LibraryDialog::kRemoveDuplicates, NamesOf(SongsOf(doubles)), [this, rows = RowsOf(doubles)] {
        return OnceSorted([this, rows] {
            const std::unique_ptr<CProgressView> progressP = i_ui.OpenProgress(Localize("Remove Duplicates"));
            progressP->Redraw();
            return i_database.RemoveDuplicates(StillThere(rows));
        });
    });
}

OSErr CLibraryCommands::TrashOriginals(const SDB_Selection& selection, Done done) {
    const std::vector<SongID> songs = SongsOf(selection);
    if (songs.empty()) return noErr;
    return IfConfirmed(LibraryDialog::kTrashOriginals, NamesOf(songs), [this, songs, done = std::move(done)] {
        return OnceStopped(songs, [this, songs, done] {
            Log("Moving songs to trash");
            return CT_TrashSongs::Start(i_database, songs,
                                        Telling(N_("Some files could not be moved to the trash."), done));
        });
    });
}

OSErr CLibraryCommands::DeleteTracks(const SDB_Selection& selection, WarnLast warnLast) {
    const CPlayList* const listP = selection.List();
    if (listP == nullptr) return paramErr;
    if (listP->ID() == kPlaylistID_Library) return RemoveFromLibrary(selection);
    if (!listP->IsModifyable()) return paramErr;
    const Work remove = [this, rows = RowsOf(selection)] {
        return OnceSorted([this, rows] {
            const std::unique_ptr<CProgressView> progressP = i_ui.OpenProgress(Localize("Delete Tracks"));
            progressP->SetText(Localize("Clearing Playlist"));
            progressP->Redraw();
            Log("Clearing Playlist");
            return i_database.RemoveFromList(rows.list, StillThere(rows).Items());
        });
    };
    // Another row of the song may go, and the song plays on.
    const bool playsB = std::ranges::any_of(
        selection.Items(), [&](PLItemID item) { return i_database.Host().IsPlaying(listP->ID(), item); });
    const Work once = [this, playsB, songs = SongsOf(selection), remove] {
        return playsB ? OnceStopped(songs, remove) : remove();
    };
    const bool lastB = warnLast == WarnLast::kYes && selection.Count() >= listP->Count();
    return lastB ? IfConfirmed(LibraryDialog::kLastSong, listP->Name().UTF8(), once) : once();
}

OSErr CLibraryCommands::DeletePlaylist(PlaylistID list) {
    const CPlayList* const listP = i_database.GetPlayList(list);
    if (listP == nullptr) return fnfErr;
    const std::string name = listP->Name().UTF8();
    return IfConfirmed(LibraryDialog::kDeletePlaylist, name, [this, list, name] {
        const OSErr err = i_database.DeletePlaylist(list);
        if (Failed(err))
            i_ui.Alert(Localize("The playlist “%1” could not be deleted.", {name}), Localize(kDelete_HintZ));
        return err;
    });
}

CPlayList* CLibraryCommands::FindNamed(const SuperString& name, PlaylistID except) const {
    for (CPlayList* const listP : i_database.PlayLists())
        if (listP->Type() == kSourceDB_PLAYLIST && listP->ID() != except && listP->Name().EqualNoCase(name))
            return listP;
    return nullptr;
}

OSErr CLibraryCommands::RenamePlaylist(PlaylistID list, const SuperString& name) {
    const auto rename = [this, list, name] {
        CPlayList* const listP = i_database.GetPlayList(list);   // it may have gone meanwhile
        return listP == nullptr ? fnfErr : listP->Rename(name);
    };
    return FindNamed(name, list) != nullptr ? IfConfirmed(LibraryDialog::kSameName, name.UTF8(), rename) : rename();
}

CPlayList& CLibraryCommands::NewPlaylist(const std::string& wish) {
    const std::string base = wish.empty() ? GetSourceName(kSourceDB_PLAYLIST) : wish;
    std::string name = base;
    for (int numberL = 2; FindNamed(SuperString(name)) != nullptr; ++numberL)
        name = base + " " + std::to_string(numberL);
    return i_database.AddPlaylist(kSourceDB_PLAYLIST, SuperString(name));
}

CPlayList& CLibraryCommands::ListNamed(const std::string& name) {
    CPlayList* const listP = FindNamed(SuperString(name));
    return listP != nullptr ? *listP : NewPlaylist(name);
}

OSErr CLibraryCommands::Paste(std::span<const SongID> songs, const CCFDictionary& meta) {
    if (songs.empty()) return noErr;
    return IfConfirmed(LibraryDialog::kPaste, NamesOf(songs),
                       [this, meta, ids = std::vector(songs.begin(), songs.end())] {
                           for (const SongID id : ids)
                               (void)i_database.WithSong(id, [&](CSong& song) { song.Meta().FromDictionary(meta); });
                           return noErr;
                       });
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
    const auto open = [this, folders] {
        for (const std::filesystem::path& folder : folders)
            if (const OSErr err = RevealFolder(i_ui, folder); Failed(err)) return err;
        return noErr;
    };
    return folders.size() > kReveal_Unasked ? IfConfirmed(LibraryDialog::kReveal, std::to_string(songs.size()), open)
                                            : open();
}

OSErr CLibraryCommands::LocateMissing(SongID song) {
    const auto files = CSongFiles::Of(i_database, song);
    if (!files) return fnfErr;
    return InFolder(Localize("Find Song: “%1”: please locate the following musical arrangement", {files->Name()}),
                    [this, song](const CFileRef& folder) { return Locate(song, folder); });
}

OSErr CLibraryCommands::Locate(SongID song, const CFileRef& folder) {
    const auto files = CSongFiles::Of(i_database, song);
    if (!files) return fnfErr;
    std::vector<std::pair<SDB_SongFile, CFileRef>> found;
    for (const SDB_SongFile type : {SDB_SongFile_ZIP, SDB_SongFile_VIDEO, SDB_SongFile_AUDIO}) {
        if (files->Ref(type).IsEmpty()) continue;
        CFileRef file(folder, files->Ref(type).GetName());
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
        if (Failed(err) && !wishedB) ui.Alert(Localize(wordsZ), FaultText(err, FaultOf::kStep, {}));
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
                    Telling(N_("Some songs could not be zipped."), std::move(done)));
}

OSErr CLibraryCommands::Unzip(std::span<const SongID> songs, Done done) {
    std::vector<SongID> zipped = Those(songs, &CanUnzip);
    if (zipped.empty()) return paramErr;
    return InFolder(Localize("Where shall the unzipped files go?"),
                    [this, zipped = std::move(zipped), done = std::move(done)](const CFileRef& folder) {
                        return CT_UnzipSongs::Start(i_database, i_unpackerRef, zipped, folder,
                                                    Telling(N_("Some songs could not be unzipped."), done));
                    });
}

void CLibraryCommands::StopWork() {
    i_database.StopTasks();
    i_zipper.AbortAll();
}
