#include "Shell/Process.h"

#include <csignal>
#include <cstdlib>
#include <iostream>
#include <QApplication>
#include <thread>
#include <unistd.h>

#include "App/CAppFailure.h"
#include "App/CAppWindows.h"
#include "App/TVoplaApp.h"
#include "Core/CCrashReporter.h"
#include "Core/CLog.h"
#include "Core/CThreadManager.h"
#include "Core/SuperString.h"
#include "Platform/CFolders.h"
#include "Platform/CMainLoop_Plain.h"
#include "Platform/CSecondInstance.h"
#include "Platform/CUserInterface_Plain.h"
#include "Shell/CAppWindows_Qt.h"
#include "Shell/CMainLoop_Qt.h"
#include "Shell/CSignalWatch.h"
#include "Shell/CUserInterface_Qt.h"

namespace {

/** Beside the program when it was installed or built there, else where the build left it. */
std::filesystem::path FindResources() {
    const std::filesystem::path program = CFolders::Program();
    for (const char* const placeZ : {"resources", "../share/vopla", "../../../../resources"}) {
        std::error_code err;
        if (const auto found = program / placeZ; std::filesystem::is_directory(found, err)) return found.lexically_normal();
    }
    return {};
}

/** A log that nothing but this process' own folder can hold: made before the first line. */
void OpenLog() {
    const std::filesystem::path folder = CFolders::State() / kApp_ProductName;
    CLog::Get().SetFile(folder / "Vopla Log file.txt");
}

int RunApplication(const AppSetup& setup, CSecondInstance& instance, const std::string& file) {
    TVoplaApp application(setup);
    const CSignalWatch watch([&application] { application.RequestQuit(QuitAsk::kNobody); });
    int result = 1;
    try {
        application.StartUp();
        instance.Listen([&application](std::string text) { application.OnSecondInstance(text); });
        result = application.Run(file);
    } catch (const CAppFailure& failure) {   // the user has been told
        LogF("### Error start-up: %s", failure.what());
    }
    instance.Stop();
    application.ShutDown();
    return result;
}

int RunHeadless(const Options& options, CSecondInstance& instance) {
    CMainLoop_Plain loop;
    CUserInterface_Plain ui([](std::string_view line) { Log(line); });
    CAppWindows_None windows;
    return RunApplication({.loop = loop, .ui = ui, .windows = windows, .resources = FindResources(),
                           .prefs = PrefsFilesFor(CFolders::Config() / kApp_ProductName)},
                          instance, options.file);
}

int RunDesktop(const Options& options, CSecondInstance& instance, int& countL, char** wordsZ) {
    QApplication qt(countL, wordsZ);
    QApplication::setApplicationDisplayName(QString::fromStdString(CApp::DisplayName()));
    QApplication::setQuitOnLastWindowClosed(false);
    CMainLoop_Qt loop;
    CUserInterface_Qt ui;
    CAppWindows_Qt windows([] {
        if (gVoplaApp != nullptr) gVoplaApp->RequestQuit(QuitAsk::kUser);
    });
    return RunApplication({.loop = loop, .ui = ui, .windows = windows, .resources = FindResources(),
                           .prefs = PrefsFilesFor(CFolders::Config() / kApp_ProductName)},
                          instance, options.file);
}

}   // namespace

int RunProcess(const Options& options, int& countL, char** wordsZ) {
    CSignalWatch::Block();
    std::setlocale(LC_CTYPE, "C.UTF-8");
    SuperString::SetDefaultEncoding(TextEncoding::kUTF8);
    if (!options.root.empty()) CFolders::SetRoot(options.root);
    OpenLog();
    const CCrashReporter crashReporter(CFolders::State() / kApp_ProductName);

    CSecondInstance instance(CFolders::Runtime() / "vopla", CFolders::Root());
    switch (instance.Start(options.file)) {
        case CSecondInstance::Role::kSecond: return 0;
        case CSecondInstance::Role::kFailed:   // a show can do without; a second start then opens a second host
            std::cerr << "vopla: no second instance check: " << ErrorText(instance.LastErrno()) << '\n';
            break;
        case CSecondInstance::Role::kFirst: break;
    }

    int result = 1;
    try {
        result = options.headlessB ? RunHeadless(options, instance) : RunDesktop(options, instance, countL, wordsZ);
    } catch (const std::exception& fault) {
        std::cerr << "Unknown exception caught before application core initialized: " << fault.what() << '\n';
    }
    if (!CThreadManager::LeftThreads().empty()) {   // what they use must not be torn down under them
        CLog::Get().Close();
        ::_exit(result);
    }
    return result;
}
