#include "App/CApp.h"

#include "App/CAlerts.h"
#include "App/CAppLibrary.h"
#include "App/CAppPlay.h"
#include "App/CAppQuit.h"
#include "App/CAppSaves.h"
#include "App/CAppStartUp.h"
#include "App/CAppWindows.h"
#include "App/CBreakScreen.h"
#include "App/CCoverArt.h"
#include "App/CCrashReporter.h"
#include "App/CGoBackNotice.h"
#include "App/CNotices.h"
#include "App/CScopedInitializing.h"
#include "App/CTaskList.h"
#include "App/IdleTimers.h"
#include "App/ScopedValue.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Files/CFolderKinds.h"
#include "Meta/CMetaManager.h"
#include "Platform/BesideShow.h"
#include "Platform/CClock.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"
#include "Threads/WaitMode.h"
#include "Values/CPreferences.h"

CApp* gApp = nullptr;

namespace {

constexpr double kIdleGraphics_T = 1.0 / 30.0;
constexpr double kIdleTasks_T = 0.25;
constexpr double kSaveTimer_T = 2.0;   // of the user's rest
// Whatever there is to do wakes the loop; cooperative threads alone wait for their turn.
constexpr double kRunLoop_WakeT = 0.05;
constexpr double kRunLoop_RestT = 0.25;
/** Messages of one pass; the rest waits for the next, so that a flood cannot starve the deferred events. */
constexpr int kRunLoop_MostMessages = 64;

/** The stack on which a crash of a thread is told. */
class ThreadCrashReporter final : public ScopedCrashReporter {
    CScopedSignalStack i_stack;
};

}   // namespace

std::string CApp::DisplayName() { return std::string(kApp_ProductName) + " " + kApp_Version; }

CApp::CApp(const AppSetup& setup)
    : i_setup(setup),
      i_lastIdleGraphicsT(CClock::Get().SteadyT()),
      i_lastIdleTasksT(i_lastIdleGraphicsT),
      i_tasks(std::make_unique<CTaskList>()),
      i_notices(std::make_unique<CNotices>([this] { Windows().NoticesChanged(); })),
      i_folders(std::make_unique<CFolderKinds>()) {
    gApp = this;
    CLog::Get().SetLive(true);
    CThreadHost::Install(this);
    try {
        CAppStartUp(*this).Run();
    } catch (...) {   // half an application: take down what stands, in the order of the quit
        i_shutdownB.store(true);
        CAppQuit(*this, CAppQuit::After::kFailedStart).Run();
        CThreadHost::Install(nullptr);
        gApp = nullptr;
        throw;
    }
}

CApp::~CApp() {
    i_shutdownB.store(true, std::memory_order_release);
    CAppQuit(*this, CAppQuit::After::kShow).Run();
    CThreadHost::Install(nullptr);
    gApp = nullptr;
}

std::unique_ptr<ScopedCrashReporter> CApp::InstallCrashReporter(std::string_view) {
    return std::make_unique<ThreadCrashReporter>();
}

std::unique_ptr<CTaskView> CApp::OpenTask(std::string_view name) { return i_tasks->Open(i_setup.loop, name); }

CSaveTarget& CApp::SaveTarget() { return *i_library; }
CSongDatabase& CApp::Database() { return i_library->Database(); }
CLibraryCommands& CApp::LibraryCommands() { return i_library->Commands(); }
CPlayControl& CApp::Play() { return i_play->Control(); }

void CApp::RunLoopPass() {
    PostEvents().DrainCalls();
    MainLoop().Wait(CThreadManager::CooperativeCount() > 0 ? kRunLoop_WakeT : kRunLoop_RestT);
    for (int n = 0; n < kRunLoop_MostMessages && MainLoop().PumpOne(kMessage_All); ++n) {
    }
    YieldToCooperative();
    PostEvents().Run([this](PostEventKind kind, long /*dataL*/) { HandlePostEvent(kind); });
}

void CApp::PostEvent(PostEventKind kind, long dataL) {
    if (kind == PostEventCode("BadS")) i_lostSongsL.fetch_add(std::max(1L, dataL), std::memory_order_relaxed);
    PostEvents().Add(kind, dataL);
    MainLoop().Wake();
}

void CApp::HandlePostEvent(PostEventKind kind) {
    if (kind == PostEventCode("drty")) {
        SetDirty(true);
    } else if (kind == PostEventCode("Pref")) {
        FollowPreferences();
    } else if (kind == PostEventCode("BadS")) {
        if (const long lostL = i_lostSongsL.exchange(0); lostL > 0)
            MessageAlert("Umm, sorry, but I've somehow lost track of this many songs: " + std::to_string(lostL));
    }
}

void CApp::FollowPreferences() {
    if (i_prefs == nullptr) return;   // the event was still waiting when they were closed
    Windows().FollowPreferences(Prefs());
    if (i_break != nullptr) i_break->Follow(Prefs());
}

void CApp::SetDirty(bool dirtyB) {
    if (IsPreemptiveThread()) {   // the flag and the timer are the main thread's
        if (dirtyB) PostEvent(PostEventCode("drty"));
        return;
    }
    if (dirtyB && !AssertWords(!NoMoreSaves(), "!gApp->i_no_more_savesB.Get()")) return;
    if (i_library) i_library->SetDirty(dirtyB);
    if (i_saves && dirtyB) i_saves->NoteChange();
    if (!i_timers.empty()) i_timers.front()->SetFireInterval(dirtyB ? kSaveTimer_T : kTimer_Off);
}

void CApp::FireSaveTimer(CT_Timer& timer) {
    i_saves->UserRests();
    if (!i_library->IsDirty()) timer.SetFireInterval(kTimer_Off);
}

void CApp::FireVideoRefresh() {
    const std::scoped_lock guard(i_currentSongLock);
    if (i_currentSongP != nullptr) i_currentSongP->VideoIdle(false);
}

void CApp::FireIdle() {
    if (!IsAppReady()) return;
    i_saves->LookForLate();
    i_library->Idle();
    if (const bool playingB = IsSongPlaying(); std::exchange(i_displayOnB, playingB) != playingB)
        Windows().KeepDisplayOn(playingB);
}

void CApp::FireNoSleep() {
    if (IsSongPlaying()) Windows().KeepDisplayOn(true);
}

void CApp::IdleGraphics(const char* /*whoZ*/, bool forcedB) {
    std::optional<CScopedInitializing> initializing;
    std::optional<ScopedValue<bool>> idling;
    const bool preemptiveB = IsPreemptiveThread();
    if (forcedB && !preemptiveB) {
        initializing.emplace(*this, false);
        idling.emplace(i_idleGraphicsB, true);
    }
    if (preemptiveB || !i_idleGraphicsB || IsInitializing()) return;
    const double nowT = CClock::Get().SteadyT();
    if (nowT - i_lastIdleGraphicsT <= kIdleGraphics_T) return;
    i_lastIdleGraphicsT = nowT;

    const ScopedValue<bool> notAgain(i_idleGraphicsB, false);
    {
        const std::scoped_lock guard(i_currentSongLock);
        if (i_currentSongP != nullptr && i_currentSongP->IsPlaying()) i_currentSongP->VideoIdle(!forcedB);
    }
    if (forcedB) Wait(kWait_TurnT);
    if (nowT - i_lastIdleTasksT >= kIdleTasks_T) i_lastIdleTasksT = nowT;
}

void CApp::SetCurrentSong(CPlayingSong* songP) {
    const std::scoped_lock guard(i_currentSongLock);
    i_currentSongP = songP;
}

bool CApp::ClearCurrentSong(const CPlayingSong& song) {
    const std::scoped_lock guard(i_currentSongLock);
    if (i_currentSongP != &song) return false;
    i_currentSongP = nullptr;
    return true;
}

bool CApp::IsSongPlaying() const {
    const std::scoped_lock guard(i_currentSongLock);
    return i_currentSongP != nullptr && i_currentSongP->IsPlaying();
}

void CApp::StopCurrentSong() {
    const std::scoped_lock guard(i_currentSongLock);
    if (i_currentSongP != nullptr) i_currentSongP->Stop();
}

void CApp::ShowProgress(std::string_view words) {
    Log(words);
    if (i_curScope) i_curScope->SetText(words);
}

void CApp::ShowProgressSteps(std::size_t doneL, std::size_t totalL) {
    if (i_curScope) i_curScope->SetSteps(doneL, totalL);
}

void CApp::SetStatus(std::string_view text) {
    if (!AssertWords(!IsPreemptiveThread(), "false && \"set progress on a preemptive thread??\"")) return;
    Windows().SetStatus(text);
}

void CApp::PrepareToQuit() {
    if (i_shutdownB.exchange(true, std::memory_order_acq_rel)) return;
    StopCurrentSong();
    Ui().DismissDialogs();
}

bool CApp::MustConfirm(long modeL) {
    if (!IsSongPlaying()) return false;
    if (modeL == 3) return true;
    const bool alwaysB = Prefs().GetBool("Always confirm manual song changes");
    const bool transportB = Prefs().GetBool("Always confirm manual song changes (transport buttons)", false);
    return alwaysB && (modeL == 1 || (modeL == 2 && transportB));
}

void CApp::ConfirmManualSongChange(long modeL, std::function<void()> then) {
    if (!MustConfirm(modeL)) return then();
    const SongID song = Play().CurrentSong();
    AskThen(Ui(), InterruptQuestion(), [modeL, song, then = std::move(then)](const Answer& answer) {
        if (answer.buttonIndex != 0 || gApp == nullptr || gApp->IsShutdown()) return;
        if (gApp->Play().CurrentSong() == song) return then();
        gApp->ConfirmManualSongChange(modeL, then);   // another one plays by now, and nobody was asked about that
    });
}

Question CApp::InterruptQuestion() {
    Question question;
    question.title = "Are you sure?";
    question.text = "Are you sure you want to interrupt the current song?";
    if (const CSongPlay* const playP = Play().Current(); playP != nullptr)
        question.text += "\n\n“" + playP->Spec().name + "” plays.";
    question.buttons = {"Yes", "Cancel"};
    question.defaultIndex = 1;
    question.safeIndex = 1;
    return question;
}

void CApp::NoteGraphicsDrawn() { i_lastIdleGraphicsT = CClock::Get().SteadyT(); }

namespace {

/** The windows whose places are kept, by their names in the preferences; full screen has a key of its own. */
constexpr struct {
    WindowKind kind;
    const char* nameZ;
    const char *fullScreenKeyZ, *displayKeyZ;   // null: it never fills a display
    bool shownFirstB;                           // at the first start, when no place is kept
} kKept_Windows[] = {
    {PREF_Wind_BROWSER, "Browser", nullptr, nullptr, true},
    {PREF_Wind_VIDEO2, "Video 2", "Full Screen2", "Full Screen2 Display", false},
    {PREF_Wind_VIDEO, "Video", "Full Screen", "Full Screen Display", true},
    {PREF_Wind_TASKS, "Tasks", nullptr, nullptr, false},
};

}   // namespace

void CApp::ShowWindowsAsSaved() {
    for (const auto& row : kKept_Windows) {
        const auto record = Prefs().Window(row.nameZ);
        if (record.has_value()) {
            CAppWindows::Place place{record->topS, record->leftS, record->bottomS, record->rightS, record->visibleB};
            if (row.fullScreenKeyZ != nullptr) {
                place.fullScreenB = Prefs().GetBool(row.fullScreenKeyZ);
                place.display = Prefs().GetString(row.displayKeyZ).UTF8();
            }
            Windows().SetPlace(row.kind, place);
        }
        if (record.has_value() ? record->visibleB : row.shownFirstB) Windows().Show(row.kind);
    }
    Windows().Select(PREF_Wind_VIDEO);
    Windows().Select(PREF_Wind_BROWSER);   // last, so that it ends in front
}

CCFDictionary CApp::FullScreenKeys() const {
    if (i_recordsAtQuit.has_value()) return i_fullScreenAtQuit;
    CCFDictionary keys;
    for (const auto& row : kKept_Windows)
        if (const auto place = i_setup.windows.PlaceOf(row.kind); place.has_value() && row.fullScreenKeyZ != nullptr) {
            keys.Set(row.fullScreenKeyZ, CCFValue(place->fullScreenB));
            keys.Set(row.displayKeyZ, CCFValue(SuperString(place->display)));
        }
    return keys;
}

std::vector<WindowRecord> CApp::WindowRecords() const {
    if (i_recordsAtQuit.has_value()) return *i_recordsAtQuit;
    std::vector<WindowRecord> records;
    for (const auto& row : kKept_Windows)
        if (const auto place = i_setup.windows.PlaceOf(row.kind); place.has_value())
            records.push_back({row.nameZ, place->top, place->left, place->bottom, place->right, place->visibleB});
    return records;
}
