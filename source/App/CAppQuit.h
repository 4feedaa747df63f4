#pragma once
#include <memory>
#include <string_view>

class CApp;

/** The quit of the application object: a table of stages like the start-up's, in the order in which nothing is taken away
    that a later stage needs. Every step that waits keeps messages flowing.
    Threads  main. Lives for the length of CApp's destructor. */
class CAppQuit {
public:
    /** Only the end of a show is told as a clean one to the next start. */
    enum class After : bool { kFailedStart, kShow };
    CAppQuit(CApp& app, After after) : i_app(app), i_after(after) {}
    void Run();

private:
    using Act = void (CAppQuit::*)();
    struct Stage {
        std::string_view words;
        Act act;
    };
    static const Stage kStages[];

    void NotYet() {}
    void StopIdling();
    void OpenProgress();
    void PurgeCache();
    void WaitForPurge();
    void AbortLibraryTasks();
    void SaveDatabase();
    void HideWindows();
    void RemoveTimers();
    void ClosePreferences();
    void DeleteZipper();
    void DeleteMetaManager();
    void DeleteAlertQueue();
    void DeleteThreadManager();
    void DisposeTaskWindow();
    void DisposeVideoWindows();
    void DisposeBrowser();
    void DeleteDatabase();
    void CloseProgress();

    CApp& i_app;
    After i_after;
    const std::shared_ptr<bool> i_purgingRef = std::make_shared<bool>(false);   // the task may outlive the quit
};
