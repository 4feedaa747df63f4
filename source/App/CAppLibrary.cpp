#include "App/CAppLibrary.h"

#include <algorithm>

#include "App/CAlerts.h"
#include "App/CApp.h"
#include "App/CAppSaves.h"
#include "App/CAppWindows.h"
#include "App/CNotices.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Files/CFolderKinds.h"
#include "Files/RevealFolder.h"
#include "Platform/CClock.h"
#include "Play/CPlayControl.h"
#include "SongFiles/CT_FindMissing.h"
#include "Threads/WaitMode.h"
#include "Threads/WaitUntil.h"

namespace {
constexpr int kLock_Tries = 500;   // turns of 0.01 s
}

CAppLibrary::CAppLibrary(CApp& app)
    : i_app(app), i_database(*this), i_files(i_database), i_commands(i_database, app.Ui()) {
    i_follower =
        app.Prefs().Follow([this, &prefs = app.Prefs()] { i_database.SetSettings(ReadLibrarySettings(prefs)); });
}
CAppLibrary::~CAppLibrary() = default;

bool CAppLibrary::IsReady() const { return i_app.IsAppReady() && !i_app.NoMoreSaves(); }

void CAppLibrary::DirtyChanged(bool dirtyB) {
    if (dirtyB) i_app.SetDirty(true);
    try {
        i_app.Windows().SetDirtyMark(dirtyB);
    } catch (const std::exception& fault) {   // a save does not end by the mark that tells of it
        LogF("### Error showing the mark of changes: %s", fault.what());
    }
}

void CAppLibrary::StopPlayback() { i_app.StopCurrentSong(); }

bool CAppLibrary::IsPlaying(PlaylistID list, PLItemID item) {
    if (!IsReady()) return false;   // there is no play control yet, or any more
    const CPlayControl& play = i_app.Play();
    return play.State() != PlayState::kIdle && play.CurrentList() == list && play.CurrentItem() == item;
}

void CAppLibrary::SongCached() {
    i_purgeAgainB = std::exchange(i_purgesB, true);   // one after the other
    if (i_purgeAgainB) return;
    const OSErr err = i_commands.PurgeCache([this](OSErr) {
        i_purgesB = false;
        if (i_purgeAgainB) SongCached();
    });
    if (!Failed(err)) return;
    i_purgesB = false;
    Log("### Error purging the cache");
}

std::string_view CAppLibrary::WhySaveAnew() const {
    if (i_app.Ui().IsShiftHeld()) return "shift held on startup";
    return i_app.Prefs().GetBool("Save Library at Start") ? "the preferences ask for it" : "";
}

bool CAppLibrary::IsDateAddedReal() const { return i_app.Prefs().GetBool("Date Added Field *really* Updated"); }

void CAppLibrary::StopWarning(BoolPref preference) { i_app.Prefs().SetBool(preference, false); }

// ---- Start ----

void CAppLibrary::Load() {
    CFileRef root;
    if (!FindMusicFolder(root)) {
        i_refusal = "The music folder, which holds the library, was not found.";
        return;
    }
    OSErr err = i_app.Folders().Hold(FolderKind::kDatabase, root);
    if (!Failed(err)) err = LoadFrom({root, i_app.Prefs().MusicFolder(), i_app.Prefs().CacheFolder()});
    i_loadedB = !Failed(LogStep(err, "loading the library"));
    if (i_loadedB) return;
    const std::string why = i_store == nullptr              ? "it is in use by another program"
                            : i_store->Report().tooNewB     ? "a later version of Vopla made it"
                            : Failed(i_store->Report().err) ? i_store->Report().problems.back()
                                                            : FaultText(err, FaultOf::kFolder, {});
    i_refusal = "The library in “" + root.GetPath().string() + "” was not opened: " + why;
}

/** The root of the library, or false when the user would rather quit. */
bool CAppLibrary::FindMusicFolder(CFileRef& root) {
    enum Button : std::size_t { kQuit, kTryAgain, kFindIt };
    for (;;) {
        const OSErr err = i_app.Folders().Find(FolderKind::kRoot, root);
        if (!Failed(err)) return true;
        if (Failed(LogStep(err, "finding the music folder")) && i_app.IsShutdown()) return false;

        Question question;
        question.title = Localize("“%1” folder not found", {kApp_ProductName});
        question.text = Localize(
            "There was a problem locating your “%1” folder.  Is it perhaps an alias to an offline "
            "volume? %2",
            {kApp_ProductName, FaultText(err, FaultOf::kFolder, root.GetPath().string())});
        question.buttons = {Localize("Quit"), Localize("Try again"), Localize("Find it")};
        question.defaultIndex = kTryAgain;
        question.safeIndex = kQuit;   // nobody in front: it must not ask for ever
        const std::size_t button = i_app.Ui().Ask(question).buttonIndex;
        if (button == kQuit) return false;
        CFileRef chosen;
        if (button == kFindIt)
            if (const auto folder = i_app.Ui().ChooseFolder(question.title); folder.has_value())
                chosen = CFileRef(*folder);
        i_app.Folders().ForgetRoot(chosen);   // an empty choice is "Try again"
    }
}

/** userCanceledErr when the user would rather quit; opWrErr, told, when another program changes it. */
OSErr CAppLibrary::LoadFrom(LibraryPlaces places) {
    // A command that sets a value has it for some seconds.
    OSErr err = i_lock.Take(places.root);
    for (int tries = 0; err == opWrErr && tries < kLock_Tries; ++tries) {
        WaitOneTurn();
        err = i_lock.Take(places.root);
    }
    if (Failed(err)) {
        i_app.Ui().Alert(Localize("The library is in use by another program."), places.root.GetPath().string());
        return err;
    }
    i_store = std::make_unique<CLibraryStore>(i_database, std::move(places), *this, &i_app.Saves().BackOff());
    return i_store->LoadLibrary();
}

void CAppLibrary::Sort() {
    CPlayList& library = i_database.Library();
    const SortSpec shown = library.Spec();
    if (library.Count() > 1) library.SetSort(shown.empty() ? SortSpec{{CM_Key_SORT_INDEX}} : shown);
}

void CAppLibrary::Ready() {
    if (!i_loadedB) return;
    if (i_lostL > 0)
        MessageAlert(
            Localize("Umm, sorry, but I've somehow lost track of this many songs: %1", {std::to_string(i_lostL)}));
    i_store->AfterStart();
    i_store->BeginChanges();
    SongCached();   // by another run, or the limits are others now
    if (i_database.Songs()->Count() == 0) return;
    if (Failed(CT_FindMissing::Start(i_database))) Log("### Error looking for missing songs");
    i_files.Lengths().FindAll();
}

/** A disc that takes long is asked seldom: a twentieth of the time at the most goes into it. */
void CAppLibrary::LookForMarked() {
    static constexpr double kAgain_T = 10, kShare = 20;
    const double nowT = CClock::Get().SteadyT();
    if (i_looksB || nowT < i_lookAtT || i_database.IsLoading() || i_database.MissingSongs().empty()) return;
    i_looksB = !Failed(CT_FindMissing::StartMarked(i_database, [this, nowT](OSErr) {
        const double endT = CClock::Get().SteadyT();
        i_looksB = false;
        i_lookAtT = endT + std::max(kAgain_T, kShare * (endT - nowT));
    }));
}

void CAppLibrary::Idle() {
    if (!i_loadedB) return;
    LookForMarked();
    std::vector<CFileRef::Path> changed = i_mounts.Changed();
    if (changed.empty() || i_database.Songs()->Count() == 0) return;
    for (const CFileRef::Path& folder : changed) LogF("A volume came or went: %s", folder.c_str());
    if (Failed(CT_FindMissing::StartBelow(i_database, std::move(changed)))) Log("### Error looking for missing songs");
}

OSErr CAppLibrary::Save() { return IsDirty() ? i_store->SaveLibrary(SaveForce::kDirty) : noErr; }

// ---- Quit ----

void CAppLibrary::BeginPurge() {
    if (!i_loadedB) return;
    const OSErr err = i_commands.PurgeCache([purgingRef = i_lastPurgeRef](OSErr) { *purgingRef = false; });
    *i_lastPurgeRef = !Failed(err);
}

void CAppLibrary::WaitForPurge() {
    constexpr double kMostT = 10;   // what is left goes after the next night
    WaitUntil([this] { return !*i_lastPurgeRef; }, kMostT);
}

void CAppLibrary::AbortTasks() {
    i_commands.StopWork();
    // What was added is saved; a disc that does not answer is not waited for.
    constexpr double kMostT = 4;
    WaitUntil([this] { return !IsAddingToLibrary(); }, kMostT);
}

void CAppLibrary::EndZipper() { i_commands.Zipper().Quit(); }

// ---- What the database asks ----

OSErr CAppLibrary::RenameListFile(const CPlayList& list, const SuperString& newName) {
    return i_store ? i_store->RenameListFile(list, newName) : noErr;
}

Answer CAppLibrary::Ask(const Question& question) { return i_app.Ui().Ask(question); }

void CAppLibrary::Notify(std::string_view words, std::string_view detail, std::string_view label,
                         std::function<void()> act) {
    CSongDatabaseHost::Notify(words, detail);   // into the log
    i_app.Notices().Add(words, detail, {std::string(label), std::move(act)});
}

void CAppLibrary::ShowProgress(std::string_view words) { i_app.ShowProgress(words); }

void CAppLibrary::ShowSteps(std::size_t doneL, std::size_t totalL) { i_app.ShowProgressSteps(doneL, totalL); }

void CAppLibrary::Reveal(const CFileRef& file) {
    (void)RevealFolder(i_app.Ui(), file.GetParent().GetPath());   // it has logged what failed
}
