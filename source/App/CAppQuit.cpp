#include "App/CAppQuit.h"

#include "App/CAlerts.h"
#include "App/CApp.h"
#include "App/CAppLibrary.h"
#include "App/CAppPlay.h"
#include "App/CAppSaves.h"
#include "App/CAppWindows.h"
#include "App/CBreakScreen.h"
#include "App/CCoverArt.h"
#include "App/CGoBackNotice.h"
#include "App/CQuitSave.h"
#include "App/ScopedValue.h"
#include "Audio/CSpoolPump.h"
#include "Core/CLog.h"
#include "Meta/CMetaManager.h"
#include "Platform/CUserInterface.h"
#include "Threads/CT_Timer.h"
#include "Threads/CThreadManager.h"
#include "Threads/WaitUntil.h"
#include "Values/CPreferences.h"

const CAppQuit::Stage CAppQuit::kStages[] = {
    {"Quitting", &CAppQuit::StopIdling},
    {"Abort meta push que", &CAppQuit::NotYet},
    {"", &CAppQuit::OpenProgress},
    {"Shutting down Web Server", &CAppQuit::NotYet},
    {"Clearing SMS Gateways", &CAppQuit::NotYet},
    {"Abort QT exporters", &CAppQuit::NotYet},
    {"Abort orphan encoding", &CAppQuit::PurgeCache},
    {"Waiting for cache purging to complete", &CAppQuit::WaitForPurge},
    {"Abort song importers and zip tasks", &CAppQuit::AbortLibraryTasks},
    {"Saving Database…", &CAppQuit::SaveDatabase},
    {"Releasing Microphone", &CAppQuit::NotYet},
    {"Unloading Plugins", &CAppQuit::NotYet},
    {"Hide Windows", &CAppQuit::HideWindows},
    {"Remove Timers", &CAppQuit::RemoveTimers},
    {"removing music store manager", &CAppQuit::NotYet},
    {"closing prefs", &CAppQuit::ClosePreferences},
    {"Delete zipper", &CAppQuit::DeleteZipper},
    {"Delete LAME", &CAppQuit::NotYet},
    {"closing QuickTime", &CAppQuit::NotYet},
    {"Release icons", &CAppQuit::NotYet},
    {"closing Clipboard", &CAppQuit::NotYet},
    {"", &CAppQuit::DeleteAlertQueue},
    {"Deleting Undo System", &CAppQuit::NotYet},
    {"Shutting down thread manager", &CAppQuit::DeleteThreadManager},
    {"Disposing Task Window", &CAppQuit::DisposeTaskWindow},
    {"Delete graphics", &CAppQuit::DisposeVideoWindows},
    {"Delete browser", &CAppQuit::DisposeBrowser},
    {"closing database", &CAppQuit::DeleteDatabase},
    {"Deleting task manager", &CAppQuit::NotYet},
    {"Deleting MetaData Traits Database", &CAppQuit::DeleteMetaManager},
    {"Delete Object Tracker", &CAppQuit::NotYet},
    {"Deleting CDPedia…", &CAppQuit::NotYet},
    {"Cleaning Up…", &CAppQuit::NotYet},
    {"Delete version tracker", &CAppQuit::NotYet},
    {"", &CAppQuit::CloseProgress},
};

void CAppQuit::Run() {
    for (const Stage& stage : kStages) {
        if (!stage.words.empty()) {
            Log(stage.words);
            if (i_app.i_curScope) i_app.i_curScope->SetText(stage.words);
        }
        try {
            (this->*stage.act)();
        } catch (const std::exception& fault) {   // one subsystem's fault must not keep the others from saving
            LogF("### Error quitting: %s", fault.what());
        }
    }
}

void CAppQuit::StopIdling() {
    i_app.i_idleGraphicsB = false;
    i_app.StopCurrentSong();   // its threads end with the others
}

void CAppQuit::OpenProgress() { i_app.i_curScope = i_app.Ui().OpenProgress("Quitting…"); }

/** Once a night, when nobody waits for a song of the cache. */
void CAppQuit::PurgeCache() {
    if (!i_app.i_libraryLoadedB) return;
    const OSErr err = i_app.LibraryCommands().PurgeCache([purgingRef = i_purgingRef](OSErr) { *purgingRef = false; });
    *i_purgingRef = !Failed(err);
}

void CAppQuit::WaitForPurge() {
    constexpr double kMostT = 10;   // what is left goes after the next night
    WaitUntil([this] { return !*i_purgingRef; }, kMostT);
}

void CAppQuit::AbortLibraryTasks() {
    if (!i_app.i_library) return;
    i_app.LibraryCommands().StopWork();
    // What was added is saved; a disc that does not answer is not waited for.
    constexpr double kMostT = 4;
    WaitUntil([this] { return !i_app.Database().IsAddingToLibrary(); }, kMostT);
}

void CAppQuit::SaveDatabase() {
    if (i_app.i_saves) CQuitSave(i_app).Run();
    i_app.i_no_more_savesB.store(true);
}

void CAppQuit::HideWindows() {
    auto fullScreen = i_app.FullScreenKeys();   // the preferences are saved later and want the windows as they were
    i_app.i_recordsAtQuit = i_app.WindowRecords();
    i_app.i_fullScreenAtQuit = std::move(fullScreen);
    for (const WindowKind kind : {PREF_Wind_TASKS, PREF_Wind_VIDEO, PREF_Wind_VIDEO2, PREF_Wind_BROWSER})
        i_app.Windows().Hide(kind);
    i_app.i_covers.reset();
    i_app.i_goBack.reset();
    i_app.i_break.reset();   // nobody sees it any more, and its movie has a thread to end
}

void CAppQuit::RemoveTimers() {
    LogF("Timers: %zu\n", i_app.i_timers.size());
    for (auto* timerP : i_app.i_timers) {
        LogF("\tdisposing: %s\n", timerP->Name().c_str());
        timerP->Dispose();
    }
    i_app.i_timers.clear();
}

void CAppQuit::ClosePreferences() {
    if (!i_app.i_prefs) return;
    const ScopedValue<bool> writing(i_app.i_resizing_windB, false);
    // The last save is logged whatever the master switch says; the switches themselves live on in the log.
    const bool masterB = CLog::Get().IsOn(LogSwitch::kLogging);
    CLog::Get().SetSwitch(LogSwitch::kLogging, true);
    i_app.i_prefs.reset();
    CLog::Get().SetSwitch(LogSwitch::kLogging, masterB);
}

/** Its queue has a thread: it goes while there is somebody to end it. */
void CAppQuit::DeleteZipper() {
    if (i_app.i_library) i_app.LibraryCommands().Zipper().Quit();
}

void CAppQuit::DeleteMetaManager() { i_app.i_metaManager.reset(); }

void CAppQuit::DeleteAlertQueue() { i_app.i_alerts.reset(); }

void CAppQuit::DeleteThreadManager() {
    CSpoolPump::AbortAll();   // a pump that waits for room or data would hold up the end of its thread
    i_app.i_threads.reset();
}

void CAppQuit::DisposeTaskWindow() { i_app.Windows().Dispose(PREF_Wind_TASKS); }

void CAppQuit::DisposeVideoWindows() {
    i_app.Windows().Dispose(PREF_Wind_VIDEO);
    i_app.Windows().Dispose(PREF_Wind_VIDEO2);
    i_app.i_hasMainWindowB.store(false);
}

void CAppQuit::DisposeBrowser() { i_app.Windows().Dispose(PREF_Wind_BROWSER); }

void CAppQuit::DeleteDatabase() {
    i_app.i_play.reset();
    i_app.i_library.reset();
}

void CAppQuit::CloseProgress() {
    i_app.i_curScope.reset();
    Log(i_after == After::kShow ? "Quit Successful" : "### Error the start-up failed");
}
