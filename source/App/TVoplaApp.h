#pragma once
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "App/CApp.h"
#include "App/CHostRequests.h"
#include "Library/LibraryIDs.h"

/** What a start of the program is to open: absolute paths. */
using LaunchFiles = std::vector<std::string>;
/** The same as one text, for the instance that runs, and back. No path holds the character behind each. */
[[nodiscard]] std::string LaunchText(const LaunchFiles& files);
[[nodiscard]] LaunchFiles LaunchFilesOf(std::string_view text);

/** Whether a wish to quit may be put to the user: a window that was closed asks, a signal of the system does not. */
enum class QuitAsk : bool { kNobody, kUser };

/** The application object of events and windows: brings `CApp` up, runs the loop, takes it down.
    Threads  main, but RequestQuit and OnSecondInstance (any), and OnRequest. */
class TVoplaApp {
public:
    explicit TVoplaApp(const AppSetup& setup);
    ~TVoplaApp();
    TVoplaApp(const TVoplaApp&) = delete;
    TVoplaApp& operator=(const TVoplaApp&) = delete;

    /** The start-up hook. */
    void StartUp();
    /** Opens `files`, then passes of the loop until the quit was allowed. */
    int Run(const LaunchFiles& files);
    /** The shut-down hook. */
    void ShutDown();

    /** Ends the loop, once there is nothing to lose or the user agrees. */
    void RequestQuit(QuitAsk ask);
    /** The files that a second start sent: none is told to the user. */
    void OnSecondInstance(const LaunchFiles& files);
    /** What the command line asks (PreferenceRequest.h): the answer, which the main thread makes. Not on that one. */
    [[nodiscard]] std::string OnRequest(std::string_view request);
    /** Before the thread of the requests is ended: who waits for an answer gets none. */
    void EndRequests() { i_requests.End(); }

private:
    /** Adds them to the library, whatever plays. */
    void OpenFiles(const LaunchFiles& files);
    /** Plays the first when nothing else plays and the preference says so. */
    void ShowOpened(const std::vector<SongID>& songs);

    AppSetup i_setup;
    CHostRequests i_requests{i_setup.loop};
    std::unique_ptr<CApp> i_app;
    long i_initLevelL = 0;
    LaunchFiles i_earlyFiles;   // sent by a second start before the application was up
    bool i_quitB = false;
    bool i_quitWantedB = false;   // by the system: nobody is asked
};

extern TVoplaApp* gVoplaApp;
