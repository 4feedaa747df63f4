#pragma once
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "App/CAppParts.h"
#include "App/CAppState.h"
#include "Threads/CHandle.h"
#include "Threads/CThreadHost.h"
#include "Values/CPreferences.h"

class CAppSaves;
class CAppWindows;
class CFolderKinds;
class CLibraryCommands;
class CMainLoop;
class CNotices;
class CPlayControl;
class CPlayingSong;
class CPreferences;
class CSongDatabase;
class CTaskList;
class CThreadManager;
class CUserInterface;
struct Question;

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

/** The model-side application object: its constructor is the whole start-up, its destructor the whole quit (AppStages.h).
    It owns the subsystems, as its parts, and knows how far it is (CAppState).
    Threads  main, but for the questions marked "any thread". */
class CApp final : public CThreadHost {
public:
    explicit CApp(const AppSetup& setup);
    ~CApp() override;
    CApp(const CApp&) = delete;
    CApp& operator=(const CApp&) = delete;

    [[nodiscard]] CAppState& State() noexcept { return i_state; }
    // Any thread.
    [[nodiscard]] bool IsInitializing() const { return i_state.IsInitializing(); }
    [[nodiscard]] bool IsShutdown() const { return i_state.IsShutdown(); }
    [[nodiscard]] bool IsAppReady() const override { return i_state.IsReady(); }
    [[nodiscard]] bool MayPump() const override { return !i_state.IsReady() || i_state.IsShutdown(); }
    [[nodiscard]] bool NoMoreSaves() const { return i_state.NoMoreSaves(); }
    [[nodiscard]] bool HasMainWindow() const override { return i_state.HasMainWindow(); }

    [[nodiscard]] CAppParts& Parts() noexcept { return i_parts; }
    [[nodiscard]] const AppSetup& Setup() const noexcept { return i_setup; }
    [[nodiscard]] CMainLoop& MainLoop() override { return i_setup.loop; }
    [[nodiscard]] CUserInterface& Ui() { return i_setup.ui; }
    [[nodiscard]] CAppWindows& Windows() { return i_setup.windows; }
    [[nodiscard]] CFolderKinds& Folders() { return *i_folders; }
    /** What works in the background. Any thread. */
    [[nodiscard]] CTaskList& Tasks() const { return *i_tasks; }
    /** What was told in this run, where there is a window to read it in. */
    [[nodiscard]] CNotices& Notices() { return *i_notices; }

    // Of the parts, from the stage that makes them to that which drops them.
    [[nodiscard]] CPreferences& Prefs();
    [[nodiscard]] CThreadManager& Threads();
    /** When what has changed is saved. */
    [[nodiscard]] CAppSaves& Saves();
    /** All songs, lists and singers. */
    [[nodiscard]] CSongDatabase& Database();
    /** The library's commands, for menus. */
    [[nodiscard]] CLibraryCommands& LibraryCommands();
    /** What plays, and how. */
    [[nodiscard]] CPlayControl& Play();

    /** False when the load was refused: no window was shown, and nothing is ever saved. */
    [[nodiscard]] bool IsLibraryLoaded() const;
    /** Why it was refused, in one line. */
    [[nodiscard]] std::string StartFailure() const;
    /** "Vopla" and the version: the name in titles, and of the program in files. */
    [[nodiscard]] static std::string DisplayName();

    /** Something has changed, or all is saved: saves come by the rules of CAppSaves. Any thread. */
    void SetDirty(bool dirtyB);
    /** Keeps the picture and the task list alive in a long operation of the main thread; costs one clock read when its
        time has not come. Does nothing on a preemptive thread. */
    void IdleGraphics(const char* whoZ, bool forcedB) override;
    /** One pass: early calls, messages, the parts' idle work. Waits 50 ms at most for a message. */
    void RunLoopPass() override;
    /** The window is being resized, or not any more: no save meanwhile. */
    void SetResizingWindow(bool resizingB) { i_resizingWindowB = resizingB; }
    [[nodiscard]] bool IsResizingWindow() const { return i_resizingWindowB; }
    std::unique_ptr<ScopedCrashReporter> InstallCrashReporter(std::string_view threadName) override;
    std::unique_ptr<CTaskView> OpenTask(std::string_view name) override;
    /** False within IdleGraphics, and from the quit on. */
    [[nodiscard]] bool IdlesGraphics() const { return i_idleGraphicsB; }
    /** The first act of the quit. */
    void StopIdling();

    /** The application quits: sets the shutdown flag, stops the song, and gives open questions their safe answer. */
    void PrepareToQuit();
    /** Calls `then` if the song that plays may be interrupted, now or once the user has said so. Mode 3 always asks, 1 and
        2 ask when the preferences say so. */
    void ConfirmManualSongChange(long modeL, std::function<void()> then);
    /** The system ends the program: from now on nobody is asked anything. */
    void QuitWithoutAsking() { i_quitAsksB = false; }
    [[nodiscard]] bool AsksAtQuit() const { return i_quitAsksB; }

    /** The song that plays; not owned. Null for none. The video windows show its picture. */
    void SetCurrentSong(CPlayingSong* songP);
    /** No song any more, if it is this one: a song that goes must not take away its follower. True when it was. */
    bool ClearCurrentSong(const CPlayingSong& song);
    [[nodiscard]] bool IsSongPlaying() const override;
    void StopCurrentSong();
    /** Draws what has fallen due. */
    void RefreshVideo();

    /** What the start-up or the quit does now, and how far it is; logged. Main thread. */
    void ShowProgress(std::string_view words);
    void ShowProgressSteps(std::size_t doneL, std::size_t totalL);
    /** Shows a status text of the model in the browser window. Main thread only. */
    void SetStatus(std::string_view text);

private:
    enum class Quit : unsigned char {
        kFailedStart,
        kShow
    };   // only the end of a show is a clean one to the next start
    void RunStart();
    void RunQuit(Quit which);
    [[nodiscard]] bool MustConfirm(long modeL);
    [[nodiscard]] Question InterruptQuestion();

    AppSetup i_setup;
    CAppState i_state;
    double i_lastIdleGraphicsT;
    bool i_quitAsksB = true;   // somebody is there to answer at the quit
    bool i_idleGraphicsB = true;
    bool i_resizingWindowB = false;
    CPlayingSong* i_currentSongP = nullptr;
    const std::unique_ptr<CTaskList> i_tasks;   // before all that may have a task
    const std::unique_ptr<CNotices> i_notices;
    const std::unique_ptr<CFolderKinds> i_folders;
    CAppParts i_parts;
    CHandled<CApp> i_self{this};
};

/** The one application object, null before its birth and after its death. Set on the main thread alone. */
extern CApp* gApp;
