#include "App/CApp.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "App/AppStages.h"
#include "App/CAlerts.h"
#include "App/CAppLibrary.h"
#include "App/CAppPlay.h"
#include "App/CAppPreferences.h"
#include "App/CAppProgress.h"
#include "App/CAppSaves.h"
#include "App/CAppThreads.h"
#include "App/CAppWindows.h"
#include "App/CCrashReporter.h"
#include "App/CNotices.h"
#include "App/CScopedInitializing.h"
#include "App/CTaskList.h"
#include "App/IdleTimers.h"
#include "App/ScopedValue.h"
#include "Core/Assertions.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Files/CFolderKinds.h"
#include "Platform/BesideShow.h"
#include "Platform/CClock.h"
#include "Threads/CallOnMain.h"
#include "Threads/ThreadInfo.h"
#include "Threads/WaitMode.h"

CApp* gApp = nullptr;

namespace {

constexpr double kIdleGraphics_T = 1.0 / 30.0;
constexpr double kSaveTimer_T = 2.0;   // of the user's rest
// Whatever there is to do wakes the loop; cooperative threads alone wait for their turn.
constexpr double kRunLoop_WakeT = 0.05;
constexpr double kRunLoop_RestT = 0.25;
/** Messages of one pass; the rest waits for the next, so that a flood cannot starve the calls. */
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
      i_tasks(std::make_unique<CTaskList>()),
      i_notices(std::make_unique<CNotices>([this] { Windows().NoticesChanged(); })),
      i_folders(std::make_unique<CFolderKinds>()) {
    gApp = this;
    CLog::Get().SetLive(true);
    CThreadHost::Install(this);
    TagThread(0, false);
    try {
        RunStart();
    } catch (...) {   // half an application: take down what stands, in the order of the quit
        i_state.SetInitializing(false);
        i_state.SetShutdown();
        RunQuit(Quit::kFailedStart);
        throw;
    }
}

CApp::~CApp() {
    i_state.SetShutdown();
    RunQuit(Quit::kShow);
}

void CApp::RunStart() {
    i_state.SetInitializing(true);
    for (const AppStage& stage : StartStages()) {
        if (!stage.words.empty()) ShowProgress(stage.words);
        stage.actP(*this);
    }
}

void CApp::RunQuit(Quit which) {
    const auto guarded = [](const auto& work) {
        try {
            work();
        } catch (const std::exception& fault) {   // one subsystem's fault must not keep the others from saving
            LogF("### Error quitting: %s", fault.what());
        }
    };
    for (const AppStage& stage : QuitStages()) {
        if (!stage.words.empty()) guarded([&] { ShowProgress(stage.words); });
        guarded([&] { stage.actP(*this); });
    }
    Log(which == Quit::kShow ? "Quit Successful" : "### Error the start-up failed");
    i_self.Empty();
    CThreadHost::Install(nullptr);
    gApp = nullptr;
}

std::unique_ptr<ScopedCrashReporter> CApp::InstallCrashReporter(std::string_view) {
    return std::make_unique<ThreadCrashReporter>();
}

std::unique_ptr<CTaskView> CApp::OpenTask(std::string_view name) { return i_tasks->Open(i_setup.loop, name); }

CPreferences& CApp::Prefs() { return i_parts.Find<CAppPreferences>()->Prefs(); }
CThreadManager& CApp::Threads() { return i_parts.Find<CAppThreads>()->Manager(); }
CAppSaves& CApp::Saves() { return *i_parts.Find<CAppSaves>(); }
CSongDatabase& CApp::Database() { return i_parts.Find<CAppLibrary>()->Database(); }
CLibraryCommands& CApp::LibraryCommands() { return i_parts.Find<CAppLibrary>()->Commands(); }
CPlayControl& CApp::Play() { return i_parts.Find<CAppPlay>()->Control(); }

bool CApp::IsLibraryLoaded() const {
    const CAppLibrary* const libraryP = i_parts.Find<CAppLibrary>();
    return libraryP != nullptr && libraryP->IsLoaded();
}

std::string CApp::StartFailure() const {
    const CAppLibrary* const libraryP = i_parts.Find<CAppLibrary>();
    return libraryP != nullptr ? libraryP->Refusal() : std::string();
}

void CApp::RunLoopPass() {
    PostEvents().DrainCalls();
    MainLoop().Wait(CThreadManager::CooperativeCount() > 0 ? kRunLoop_WakeT : kRunLoop_RestT);
    for (int n = 0; n < kRunLoop_MostMessages && MainLoop().PumpOne(kMessage_All); ++n) {
    }
    YieldToCooperative();
    PostEvents().DrainCalls();
}

void CApp::SetDirty(bool dirtyB) {
    if (IsPreemptiveThread()) {   // saves and their timer are the main thread's
        PostToMain("SetDirty", i_self.Handle(), [dirtyB](CApp& app) { app.SetDirty(dirtyB); });
        return;
    }
    if (dirtyB && !AssertWords(!NoMoreSaves(), "!gApp->i_no_more_savesB.Get()")) return;
    if (auto* const savesP = i_parts.Find<CAppSaves>(); savesP != nullptr && dirtyB) savesP->NoteChange();
    if (auto* const timersP = i_parts.Find<CAppTimers>(); timersP != nullptr)
        timersP->SaveTimer().SetFireInterval(dirtyB ? kSaveTimer_T : kTimer_Off);
}

void CApp::RefreshVideo() {
    if (i_currentSongP != nullptr) i_currentSongP->VideoIdle(false);
}

void CApp::StopIdling() {
    i_idleGraphicsB = false;
    i_parts.ForEach("stopping", [](CAppPart& part) { part.Stop(); });   // a song's threads end with the others
}

void CApp::IdleGraphics(const char* /*whoZ*/, bool forcedB) {
    std::optional<CScopedInitializing> initializing;
    std::optional<ScopedValue<bool>> idling;
    const bool preemptiveB = IsPreemptiveThread();
    if (forcedB && !preemptiveB) {
        initializing.emplace(i_state, false);
        idling.emplace(i_idleGraphicsB, true);
    }
    if (preemptiveB || !i_idleGraphicsB || IsInitializing()) return;
    const double nowT = CClock::Get().SteadyT();
    const CAppPlay* const playP = i_parts.Find<CAppPlay>();
    const double drawnT = playP == nullptr ? 0 : playP->DrawnT();   // by the timer: then there is no hurry
    if (nowT - std::max(i_lastIdleGraphicsT, drawnT) <= kIdleGraphics_T) return;
    i_lastIdleGraphicsT = nowT;

    const ScopedValue<bool> notAgain(i_idleGraphicsB, false);
    if (IsSongPlaying()) i_currentSongP->VideoIdle(!forcedB);
    if (forcedB) Wait(kWait_TurnT);
}

void CApp::SetCurrentSong(CPlayingSong* songP) { i_currentSongP = songP; }

bool CApp::ClearCurrentSong(const CPlayingSong& song) {
    if (i_currentSongP != &song) return false;
    i_currentSongP = nullptr;
    return true;
}

bool CApp::IsSongPlaying() const { return i_currentSongP != nullptr && i_currentSongP->IsPlaying(); }

void CApp::StopCurrentSong() {
    if (i_currentSongP != nullptr) i_currentSongP->Stop();
}

void CApp::ShowProgress(std::string_view words) {
    Log(words);
    if (auto* const progressP = i_parts.Find<CAppProgress>(); progressP != nullptr) progressP->View().SetText(words);
}

void CApp::ShowProgressSteps(std::size_t doneL, std::size_t totalL) {
    if (auto* const progressP = i_parts.Find<CAppProgress>(); progressP != nullptr)
        progressP->View().SetSteps(doneL, totalL);
}

void CApp::SetStatus(std::string_view text) {
    if (!AssertWords(!IsPreemptiveThread(), "false && \"set progress on a preemptive thread??\"")) return;
    Windows().SetStatus(text);
}

void CApp::PrepareToQuit() {
    if (!i_state.SetShutdown()) return;
    i_parts.ForEach("stopping", [](CAppPart& part) { part.Stop(); });
    Ui().DismissDialogs();
}

bool CApp::MustConfirm(long modeL) {
    if (!IsSongPlaying()) return false;
    if (modeL == 3) return true;
    const bool alwaysB = Prefs().GetBool("Always confirm manual song changes");
    const bool transportB = Prefs().GetBool("Always confirm manual song changes (transport buttons)");
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
    question.title = Localize("Are you sure?");
    question.text = Localize("Are you sure you want to interrupt the current song?");
    if (const CSongPlay* const playP = Play().Current(); playP != nullptr)
        question.text += "\n\n" + Localize("“%1” plays.", {playP->Spec().name});
    question.buttons = {Localize("Yes"), Localize("Cancel")};
    question.defaultIndex = 1;
    question.safeIndex = 1;
    return question;
}
