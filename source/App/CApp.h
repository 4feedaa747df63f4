#pragma once
#include <array>
#include <atomic>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Platform/OSErr.h"
#include "Threads/CThreadHost.h"
#include "Values/CPreferences.h"

class CAlerts;
class CAppLibrary;
class CLibraryCommands;
class CAppPlay;
class CAppSaves;
class CAppWindows;
class CBreakScreen;
class CCoverArt;
class CCrashReporter;
class CFolderKinds;
class CGoBackNotice;
class CMainLoop;
class CMetaManager;
class CNotices;
class CPlayControl;
class CPlayingSong;
class CProgressView;
class CSaveTarget;
class CSongDatabase;
class CTaskList;
class CT_Timer;
class CThreadManager;
class CUserInterface;
struct Question;
enum class WindowKind : short;

inline constexpr const char* kApp_ProductName = "Vopla";
inline constexpr const char* kApp_Version = "1.0a01r13";

/** What the application object is given: the machine behind its interfaces. All outlive it. */
struct AppSetup {
    CMainLoop& loop;
    CUserInterface& ui;
    CAppWindows& windows;
    std::filesystem::path resources;   // the folder of what is installed beside the program
    PrefsFiles prefs;
    bool lastQuitCleanB = true;   // what the log of the last session says
};

/** The model-side application object: its constructor is the whole start-up, its destructor the whole quit. It owns the
    subsystems; its states are constructing, ready, quitting and no-more-saves, one way and in that order.
    Threads  main, but for the questions marked "any thread". */
class CApp final : public CThreadHost {
public:
    explicit CApp(const AppSetup& setup);
    ~CApp() override;
    CApp(const CApp&) = delete;
    CApp& operator=(const CApp&) = delete;

    /** True while windows and database come up. Any thread. */
    [[nodiscard]] bool IsInitializing() const { return i_initializingB.load(std::memory_order_relaxed); }
    /** True from the permission to quit on. Any thread. */
    [[nodiscard]] bool IsShutdown() const { return i_shutdownB.load(std::memory_order_acquire); }
    /** True from the last act of the start-up on; nothing idles before. Any thread. */
    [[nodiscard]] bool IsAppReady() const override { return i_appReadyB.load(std::memory_order_acquire); }
    /** True once no save may start any more. Any thread. */
    [[nodiscard]] bool NoMoreSaves() const { return i_no_more_savesB.load(std::memory_order_acquire); }

    [[nodiscard]] CPreferences& Prefs() { return *i_prefs; }
    [[nodiscard]] CThreadManager& Threads() { return *i_threads; }
    [[nodiscard]] CMainLoop& MainLoop() override { return i_setup.loop; }
    [[nodiscard]] CUserInterface& Ui() { return i_setup.ui; }
    [[nodiscard]] CAppWindows& Windows() { return i_setup.windows; }
    [[nodiscard]] CFolderKinds& Folders() { return *i_folders; }
    [[nodiscard]] CSaveTarget& SaveTarget();
    /** When it is saved. As long as Database. */
    [[nodiscard]] CAppSaves& Saves() { return *i_saves; }
    /** All songs, lists and singers. From the stage "Creating Song Database" to "closing database". */
    [[nodiscard]] CSongDatabase& Database();
    /** The library's commands, for menus. */
    [[nodiscard]] CLibraryCommands& LibraryCommands();
    /** False when the load was refused: no window was shown, and nothing is ever saved. */
    [[nodiscard]] bool IsLibraryLoaded() const { return i_libraryLoadedB; }
    /** Why it was refused, in one line. */
    [[nodiscard]] const std::string& StartFailure() const { return i_startFailure; }
    /** What plays, and how. As long as Database. */
    [[nodiscard]] CPlayControl& Play();
    /** "Vopla" and the version: the name in titles, and of the program in files. */
    [[nodiscard]] static std::string DisplayName();

    /** Something has changed: the save comes by the rules of CAppSaves. Any thread. */
    void SetDirty(bool dirtyB);
    /** Keeps the picture and the task list alive in a long operation of the main thread; costs one clock read when its
        time has not come. Does nothing on a preemptive thread. */
    void IdleGraphics(const char* whoZ, bool forcedB) override;
    /** One pass: early calls, messages, deferred events. Waits 50 ms at most for a message. */
    void RunLoopPass() override;
    /** The window is being resized, or not any more: no save meanwhile. Main thread. */
    void SetResizingWindow(bool resizingB) { i_resizing_windB = resizingB; }
    /** True once the browser window stands, or never will (headless). Any thread. */
    [[nodiscard]] bool HasMainWindow() const override { return i_hasMainWindowB.load(std::memory_order_acquire); }
    std::unique_ptr<ScopedCrashReporter> InstallCrashReporter(std::string_view threadName) override;
    std::unique_ptr<CTaskView> OpenTask(std::string_view name) override;
    /** What works in the background. Any thread. */
    [[nodiscard]] CTaskList& Tasks() const { return *i_tasks; }
    /** What was told in this run, where there is a window to read it in. Main thread. */
    [[nodiscard]] CNotices& Notices() { return *i_notices; }

    /** A picture was drawn now: IdleGraphics need not hurry. */
    void NoteGraphicsDrawn();

    /** An event for the end of this pass of the run loop: 'drty', 'Pref' (a preference changed) or 'BadS'. Any thread. */
    void PostEvent(PostEventKind kind, long dataL = 0);

    /** The application quits: sets the shutdown flag, stops the song, and gives open questions their safe answer. */
    void PrepareToQuit();
    /** Calls `then` if the song that plays may be interrupted, now or once the user has said so. Mode 3 always asks, 1 and
        2 ask when the preferences say so. */
    void ConfirmManualSongChange(long modeL, std::function<void()> then);
    /** The system ends the program: from now on nobody is asked anything. */
    void QuitWithoutAsking() { i_quitAsksB = false; }

    /** The song that plays; not owned. Null for none. The video windows show its picture. */
    void SetCurrentSong(CPlayingSong* songP);
    /** No song any more, if it is this one: a song that goes must not take away its follower. True when it was. */
    bool ClearCurrentSong(const CPlayingSong& song);
    [[nodiscard]] bool IsSongPlaying() const override;
    void StopCurrentSong();

    /** What the start-up or the quit does now, and how far it is; logged. Main thread. */
    void ShowProgress(std::string_view words);
    void ShowProgressSteps(std::size_t doneL, std::size_t totalL);
    /** Shows a status text of the model in the browser window. Main thread only. */
    void SetStatus(std::string_view text);

    // What the idle timers do when they fire.
    void FireSaveTimer(CT_Timer& timer);
    void FireVideoRefresh();
    void FireIdle();
    void FireNoSleep();

private:
    friend class CAppStartUp;
    friend class CAppQuit;
    friend class CAppSaves;
    friend class CQuitSave;
    friend class CScopedInitializing;

    void ShowWindowsAsSaved();
    /** Where the windows stand; at the quit, where they stood before they were hidden. */
    [[nodiscard]] std::vector<WindowRecord> WindowRecords() const;
    [[nodiscard]] CCFDictionary FullScreenKeys() const;
    [[nodiscard]] bool MustConfirm(long modeL);
    [[nodiscard]] Question InterruptQuestion();
    void HandlePostEvent(PostEventKind kind);
    void FollowPreferences();

    AppSetup i_setup;
    std::vector<CT_Timer*> i_timers;   // the save timer is element 0; the map of forks owns them
    std::atomic<bool> i_initializingB{false};
    double i_lastIdleGraphicsT;
    double i_lastIdleTasksT;
    const std::unique_ptr<CTaskList> i_tasks;   // before all that may have a task
    const std::unique_ptr<CNotices> i_notices;
    std::unique_ptr<CFolderKinds> i_folders;
    std::unique_ptr<CThreadManager> i_threads;
    std::unique_ptr<CPreferences> i_prefs;
    std::unique_ptr<CAlerts> i_alerts;
    std::unique_ptr<CMetaManager> i_metaManager;   // made before the library, gone after it
    std::unique_ptr<CAppLibrary> i_library;
    std::unique_ptr<CAppSaves> i_saves;      // lives within the library
    std::unique_ptr<CAppPlay> i_play;        // the same
    std::unique_ptr<CBreakScreen> i_break;   // while there are windows to see it
    std::unique_ptr<CCoverArt> i_covers;     // the same
    std::unique_ptr<CGoBackNotice> i_goBack;
    std::unique_ptr<CProgressView> i_curScope;   // start-up and quit only
    bool i_libraryLoadedB = false;               // not refused by the user, nor by another program that has it
    std::string i_startFailure;
    std::optional<std::vector<WindowRecord>> i_recordsAtQuit;
    CCFDictionary i_fullScreenAtQuit;
    bool i_displayOnB = false;   // as the windows were told
    bool i_quitAsksB = true;     // somebody is there to answer at the quit
    bool i_idleGraphicsB = true;
    bool i_resizing_windB = false;
    std::atomic<bool> i_appReadyB{false};
    std::atomic<bool> i_hasMainWindowB{false};
    std::atomic<long> i_lostSongsL{0};                // counted by 'BadS'
    mutable std::recursive_mutex i_currentSongLock;   // recursive: a song that draws may stop itself
    CPlayingSong* i_currentSongP = nullptr;           // guarded by i_currentSongLock
    std::atomic<bool> i_shutdownB{false};
    std::atomic<bool> i_no_more_savesB{false};
};

/** The one application object, null before its birth and after its death. Set on the main thread alone. */
extern CApp* gApp;
