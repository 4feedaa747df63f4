#include "App/CAppLibrary.h"

#include <algorithm>

#include "App/CAlerts.h"
#include "App/CApp.h"
#include "App/CAppWindows.h"
#include "App/CNotices.h"
#include "Core/CLog.h"
#include "Files/FileURL.h"
#include "Platform/CClock.h"
#include "Play/CPlayControl.h"
#include "SongFiles/CT_FindMissing.h"
#include "Threads/WaitMode.h"

namespace {
constexpr int kLock_Tries = 500;   // turns of 0.01 s
}

CAppLibrary::CAppLibrary(CApp& app)
    : i_app(app), i_database(*this), i_files(i_database), i_commands(i_database, app.Ui()) {
    i_database.SetSettings(ReadLibrarySettings(app.Prefs()));
}
CAppLibrary::~CAppLibrary() = default;

bool CAppLibrary::IsReady() const { return i_app.IsAppReady() && !i_app.NoMoreSaves(); }

void CAppLibrary::DirtyChanged(bool dirtyB) {
    i_app.Windows().SetDirtyMark(dirtyB);
    if (dirtyB) i_app.SetDirty(true);
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
    return i_app.Prefs().GetBool("Save Library at Start", false) ? "the preferences ask for it" : "";
}

bool CAppLibrary::IsDateAddedReal() const { return i_app.Prefs().GetBool("Date Added Field *really* Updated"); }

void CAppLibrary::StopWarning(std::string_view preference) { i_app.Prefs().Set(preference, CCFValue(false)); }

OSErr CAppLibrary::Load(LibraryPlaces places) {
    // A command that sets a value has it for some seconds.
    OSErr err = i_lock.Take(places.root);
    for (int tries = 0; err == opWrErr && tries < kLock_Tries; ++tries) {
        WaitOneTurn();
        err = i_lock.Take(places.root);
    }
    if (Failed(err)) {
        i_app.Ui().Alert("The library is in use by another program.", places.root.GetPath().string());
        return err;
    }
    i_store = std::make_unique<CLibraryStore>(i_database, std::move(places), *this, &i_backOff);
    return i_store->LoadLibrary();
}

void CAppLibrary::AfterStart() {
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
    LookForMarked();
    std::vector<CFileRef::Path> changed = i_mounts.Changed();
    if (changed.empty() || i_database.Songs()->Count() == 0) return;
    for (const CFileRef::Path& folder : changed) LogF("A volume came or went: %s", folder.c_str());
    if (Failed(CT_FindMissing::StartBelow(i_database, std::move(changed)))) Log("### Error looking for missing songs");
}

OSErr CAppLibrary::Save(bool lastB) {
    i_othersDirtyB = false;
    if (!i_store || !i_database.IsDirty()) return noErr;   // the preferences are saved by who asks
    if (lastB) i_backOff.NoteSuccess();                    // the last one of the evening does not wait
    return i_store->SaveLibrary(SaveForce::kDirty);
}

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
    if (!i_app.Ui().OpenPage(FileURL(file.GetParent().GetPath()))) Log("### Error nothing shows folders here");
}

void CAppLibrary::SongsLost(long countL) { i_app.PostEvent(PostEventCode("BadS"), countL); }
