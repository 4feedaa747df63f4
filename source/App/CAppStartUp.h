#pragma once
#include <memory>
#include <optional>
#include <string_view>

class CApp;
class CFileRef;
class CScopedInitializing;

/** The start-up of the application object: a table of stages, each with its words and its act. A stage whose subsystem is
    not there yet logs its words and does nothing.
    Threads  main. Lives for the length of CApp's constructor. */
class CAppStartUp {
public:
    explicit CAppStartUp(CApp& app);
    ~CAppStartUp();
    /** Runs every stage in order. What makes a show impossible ends the process with a fatal alert. */
    void Run();

private:
    using Act = void (CAppStartUp::*)();
    struct Stage {
        std::string_view words;   // empty: a silent step
        Act act;
    };
    static const Stage kStages[];

    void NotYet() {}
    void TagMainThread();
    void CreateThreadManager();
    void LoadPreferences();
    void PurgeLeftovers();
    void LogHeadline();
    void LogSystemFacts();
    void TestMediaLibrary();
    void FindApplicationFolder();
    void CreateMetaManager();
    void CreateDatabase();
    void InstallIdleTimers();
    void OpenProgress();
    void LoadDatabase();
    [[nodiscard]] bool FindMusicFolder(CFileRef& root);
    void CreateWindows();
    void BuildUpscalingTables();
    void BuildVenues();
    void ShowWindows();
    void CloseProgress();
    void FlushEvents();
    void SortLibrary();
    void MarkReady();
    void WarnOfMemory();

    void Say(std::string_view words);

    CApp& i_app;
    std::unique_ptr<CScopedInitializing> i_initializing;   // until the progress window closes
};
