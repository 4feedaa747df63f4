#pragma once
#include <memory>
#include <string>

#include "Core/CApp.h"

/** Whether a wish to quit may be put to the user: a window that was closed asks, a signal of the system does not. */
enum class QuitAsk : bool { kNobody, kUser };

/** The application object of events and windows: brings `CApp` up, runs the loop, takes it down.
    Threads  main, but RequestQuit and OnSecondInstance (any). */
class TVoplaApp {
public:
    explicit TVoplaApp(const AppSetup& setup);
    ~TVoplaApp();
    TVoplaApp(const TVoplaApp&) = delete;
    TVoplaApp& operator=(const TVoplaApp&) = delete;

    /** The start-up hook. */
    void StartUp();
    /** Handles `commandLine` (the path of a file, or empty), then passes of the loop until the quit was allowed. */
    int Run(const std::string& commandLine);
    /** The shut-down hook. */
    void ShutDown();

    /** Ends the loop, once there is nothing to lose or the user agrees. */
    void RequestQuit(QuitAsk ask);
    /** What a second start sent: a path, or nothing, which is told to the user. */
    void OnSecondInstance(const std::string& commandLine);

private:
    void HandleCommandLine(const std::string& commandLine);

    AppSetup i_setup;
    std::unique_ptr<CApp> i_app;
    long i_initLevelL = 0;
    std::string i_earlyFile;     // sent by a second start before the application was up
    bool i_quitB = false;
    bool i_quitWantedB = false;   // by the system: nobody is asked
    bool i_askingB = false;
};

extern TVoplaApp* gVoplaApp;
