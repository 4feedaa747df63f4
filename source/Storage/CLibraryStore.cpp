#include "Storage/CLibraryStore.h"

#include "Core/AlertHook.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Files/CSafeSave.h"
#include "Files/FSError.h"
#include "Files/FSrObjects.h"
#include "Library/CSinger.h"
#include "SongFiles/LibraryDialogs.h"
#include "Storage/CLibraryRebuild.h"
#include "Storage/CLostSongs.h"
#include "Storage/COrphanSearch.h"
#include "Storage/CT_Preemtive_SaveSongs.h"
#include "Storage/CT_SDB_WritePList.h"
#include "Storage/LibraryImage.h"
#include "Threads/WaitMode.h"
#include "Threads/WaitUntil.h"

namespace {

bool IsThere(const CFileRef& file) {
    bool thereB = false;
    return !Failed(FSrFileExists(file, thereB)) && thereB;
}

}   // namespace

CLibraryStore::CLibraryStore(CSongDatabase& database, LibraryPlaces places, CLibraryHost& host, CBackOff* backOffP)
    : i_database(database),
      i_host(host),
      i_places(std::move(places)),
      i_songs(std::make_shared<CSongStore>(database, i_places, host)),
      i_backOff(backOffP == nullptr ? i_ownBackOff : *backOffP) {
    i_database.AddWatcher(*this);
}

CLibraryStore::~CLibraryStore() {
    i_self.Empty();
    while (i_saveRef != nullptr && i_saveRef->runningB.load(std::memory_order_acquire)) WaitOneTurn();
    i_database.RemoveWatcher(*this);
}

// ---- Loading ----

OSErr CLibraryStore::LoadLibrary() {
    FileInfo info;
    if (CFileCalls::Get().Look(i_places.root.GetPath(), true, info) == 0) {
        i_rootIdentity = FileIdentity::Of(info);
        i_rootKnownB = true;
    }
    const OSErr err = CLibraryLoader(i_database, *i_songs, i_places, i_host).Load(i_files, i_report);
    i_refusedB = Failed(err);
    if (i_refusedB) return err;
    i_filesB = !i_report.emptyB;
    if (i_report.emptyB && CLibraryRebuild(i_database, i_places.musicFolder, i_host).Run() != 0)
        i_report.dirtyReason = "rebuilt";
    for (const CFileRef& file : i_report.damaged) i_damaged.insert(file.GetPath());
    if (i_report.dirtyReason.empty() && i_filesB) MarkAllWritten();
    return noErr;
}

/** The database is as the files have it. */
void CLibraryStore::MarkAllWritten() {
    i_songsRevision = i_database.SongsRevision();
    i_libraryRevision = i_database.Library().Revision();
    for (const CPlayList* const listP : i_database.PlayLists()) i_listRevisions[listP->ID()] = listP->Revision();
    for (const CSinger* const singerP : i_database.Singers())
        i_singerRevisions[singerP->GetSingerID()] = singerP->Revision();
    CLibrarySave save(i_songs, i_places.root);
    GatherIndex(save, SaveForce::kAll);
    i_index = std::move(save.index->index);
}

void CLibraryStore::AfterStart() {
    if (!i_report.dirtyReason.empty()) i_database.SetDirty(true, i_report.dirtyReason);
    const bool lostB = !i_report.wholeB && !i_report.emptyB && !i_report.tooNewB;
    if (!lostB) return;
    std::shared_ptr<CLostSongs> lostRef;
    if (const auto keptRef = std::exchange(i_report.keptRef, nullptr))
        lostRef = std::make_shared<CLostSongs>(i_database, i_songs, *keptRef);
    if (Failed(COrphanSearch::Start(i_database, i_places.musicFolder, std::move(lostRef))))
        Log("### Error finding orphans");
}

/** The folder that was loaded, by its own number: where a disc was taken away there is none, or that below it. A folder
    in its place that holds a library is one that was put back by a copy. */
OSErr CLibraryStore::CheckRoot() const {
    FileInfo info;
    if (const int errnoL = CFileCalls::Get().Look(i_places.root.GetPath(), true, info); errnoL != 0)
        return LogStep(fnfErr, "the library's folder is not there", i_places.root.GetPath());
    const bool libraryB =
        IsThere(CFileRef(i_places.root, kStr_LIBRARY_DOT_XML)) || IsThere(CFileRef(i_places.root, "Songs.vlb"));
    if (!i_rootKnownB || i_rootIdentity.Is(FileIdentity::Of(info)) || (i_filesB && libraryB)) return MayWrite();
    return LogStep(fnfErr, "another folder stands in the place of the library's", i_places.root.GetPath());
}

OSErr CLibraryStore::MayWrite() const {
    return FSError(CFileCalls::Get().MayWrite(i_places.root.GetPath()), "access", i_places.root.GetPath());
}

void CLibraryStore::BeginChanges() {
    if (const OSErr err = MayWrite(); Failed(err)) {
        // Said now, before a night's work, and not again at each save: those are tried until one succeeds.
        i_toldB = true;
        ShowAlert(Localize("Your library cannot be written."),
                  FaultText(err, FaultOf::kFolder, i_places.root.GetPath().string()) + "\n" +
                      Localize("What you change is kept in memory, and saved as soon as the folder can be written."));
        return;
    }
    if (!i_report.tooNewB) UpgradeNames();
}

// ---- Saving ----

OSErr CLibraryStore::Refuse(SaveForce force) const {
    if (i_report.tooNewB || i_refusedB) return opWrErr;   // the user was told at the load
    if (force == SaveForce::kDirty && !i_backOff.IsOver()) return queueNotDoneErr;
    return noErr;
}

OSErr CLibraryStore::SaveLibrary(SaveForce force) {
    if (const OSErr err = Refuse(force); Failed(err)) return err;
    if (IsSaving()) {
        if (force == SaveForce::kDirty) return queueNotDoneErr;
        i_againB = true;
        return noErr;
    }
    i_saveRef = Gather(force);
    i_database.SetDirty(false);
    i_saveRef->runningB.store(true, std::memory_order_relaxed);
    const auto saveRef = i_saveRef;
    if (CT_Preemptive::Start(std::make_unique<CT_Preemtive_SaveSongs>(saveRef, i_self.Handle())) != 0) return noErr;
    saveRef->RunSongs();   // no thread can be had: then here
    SongsSaved(saveRef);
    return noErr;
}

void CLibraryStore::SongsSaved(const std::shared_ptr<CLibrarySave>& saveRef) {
    saveRef->runningB.store(true, std::memory_order_relaxed);
    if (CT_Preemptive::Start(std::make_unique<CT_SDB_WritePList>(saveRef, i_self.Handle())) != 0) return;
    saveRef->RunLists();
    saveRef->runningB.store(false, std::memory_order_relaxed);
    Saved(saveRef);
}

OSErr CLibraryStore::SaveLibraryNow(SaveForce force) {
    while (IsSaving()) WaitOneTurn();
    if (const OSErr err = Refuse(force); Failed(err)) return err;
    const auto saveRef = i_saveRef = Gather(force);
    i_database.SetDirty(false);
    saveRef->RunSongs();
    saveRef->RunLists();
    Saved(saveRef);
    return i_lastErr;
}

/** Writes a whole save in one go. */
class CLibraryStore::CT_SaveCopy final : public CT_Preemptive {
public:
    CT_SaveCopy(std::shared_ptr<CLibrarySave> saveRef, std::shared_ptr<bool> doneRef)
        : CT_Preemptive("No Kill: saving a copy"), i_saveRef(std::move(saveRef)), i_doneRef(std::move(doneRef)) {}

protected:
    OSErr Operate(OSErr) override {
        i_saveRef->RunSongs();
        i_saveRef->RunLists();
        return i_saveRef->Err();
    }
    OSErr Completion(OSErr err) override {
        *i_doneRef = true;
        return err;
    }

private:
    const std::shared_ptr<CLibrarySave> i_saveRef;
    const std::shared_ptr<bool> i_doneRef;   // the main thread's
};

OSErr CLibraryStore::SaveCopy(const CFileRef& folder) {
    if (const OSErr err = FSrMakeFolders(folder.GetPath()); Failed(err)) return err;
    // A store of its own knows no files: every list gets one of its name there.
    CLibraryStore copy(i_database, {folder, i_places.musicFolder, i_places.cacheFolder});
    const auto saveRef = copy.Gather(SaveForce::kAll);
    const auto doneRef = std::make_shared<bool>(false);
    if (CT_Preemptive::Start(std::make_unique<CT_SaveCopy>(saveRef, doneRef)) == 0) return abortErr;
    WaitUntil([&] { return *doneRef; });
    return saveRef->Err();
}

void CLibraryStore::Saved(const std::shared_ptr<CLibrarySave>& saveRef) {
    i_saveRef.reset();
    NoteWritten(*saveRef);
    i_lastErr = saveRef->Err();
    if (Failed(i_lastErr)) {
        NoteFailure(*saveRef);
    } else {
        i_toldB = false;
        i_backOff.NoteSuccess();
    }
    for (const auto& [list, name] : std::exchange(i_renames, {}))
        if (const OSErr err = RenameNow(list, name); Failed(err))   // the list has its name; the file finds it later
            static_cast<void>(LogStep(err, "renaming the file of a list"));
    if (std::exchange(i_againB, false)) (void)SaveLibrary(SaveForce::kAll);
}

void CLibraryStore::NoteFailure(const CLibrarySave& save) {
    i_backOff.NoteFailure();
    i_database.SetDirty(true, "the last save failed");
    if (std::exchange(i_toldB, true)) return;
    if (save.FailedToDelete())
        ShowAlert(Localize("The playlist file “%1” could not be deleted.", {save.FailedFile().GetName()}),
                  Localize(kDelete_HintZ));
    else if (save.FailedFile().GetName() == "Songs.vlb")
        ShowAlert(Localize("Error attempting to save database!"), FaultText(save.Err(), save.FailedFile().GetPath()));
    else
        (void)TellSaveError(save.Err(), save.FailedFile());
}
