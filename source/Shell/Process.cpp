#include "Shell/Process.h"

#include <unistd.h>
#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <iostream>
#include <QApplication>
#include <QIcon>
#include <QLibraryInfo>
#include <QLocale>
#include <QSurfaceFormat>

#include "App/CAppWindows_None.h"
#include "App/CCrashReporter.h"
#include "App/TVoplaApp.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Core/NumberForms.h"
#include "Core/SuperString.h"
#include "Platform/BesideShow.h"
#include "Platform/CFolders.h"
#include "Platform/CMainLoop_Plain.h"
#include "Platform/CSecondInstance.h"
#include "Platform/CUserInterface_Plain.h"
#include "Shell/CAppWindows_Qt.h"
#include "Shell/CUserInterface_Qt.h"
#include "Threads/CThreadManager.h"
#include "Widgets/CCatalogueTranslator.h"
#include "Widgets/CMainLoop_Qt.h"
#include "Widgets/CSignalWatch.h"
#include "Widgets/XLook.h"

namespace {

/** Beside the program when it was installed or built there, else where the build left it. */
std::filesystem::path FindResources() {
    const std::filesystem::path program = CFolders::Program();
    for (const char* const placeZ : {"resources", "../share/vopla", "../../../../resources"}) {
        std::error_code err;
        if (const auto found = program / placeZ; std::filesystem::is_directory(found, err))
            return found.lexically_normal();
    }
    return {};
}

/** A log that nothing but this process' own folder can hold: made before the first line. */
void OpenLog() {
    const std::filesystem::path folder = CFolders::State() / kApp_ProductName;
    CLog::Get().SetFile(folder / "Vopla Log file.txt");
}

int RunApplication(const AppSetup& setup, CSecondInstance& instance, const LaunchFiles& files) {
    TVoplaApp application(setup);
    const CSignalWatch watch([&application] { application.RequestQuit(QuitAsk::kNobody); });
    // A second start is answered at once, however long this one takes: it must never become a second host.
    instance.Listen([&application](const std::string& text) { application.OnSecondInstance(LaunchFilesOf(text)); },
                    [&application](std::string_view request) { return application.OnRequest(request); });
    int result = 1;
    try {
        application.StartUp();
        result = application.Run(files);
    } catch (const std::exception& fault) {
        LogF("### Error %s", fault.what());
        std::cerr << "vopla: " << fault.what() << '\n';
        AlertAndWait(
            setup.ui,
            Localize("Vopla has to quit: something failed that it has no answer to. Your library is saved first."),
            fault.what());
    }
    application.EndRequests();
    instance.StopListening();   // its thread holds the application; the lock is given up behind the last save
    application.ShutDown();
    return result;
}

int RunHeadless(const Options& options, CSecondInstance& instance, bool cleanB) {
    CMainLoop_Plain loop;
    CUserInterface_Plain ui([](std::string_view line) { Log(line); });
    CAppWindows_None windows;
    return RunApplication({.loop = loop,
                           .ui = ui,
                           .windows = windows,
                           .resources = FindResources(),
                           .prefs = PrefsFilesFor(CFolders::Config() / kApp_ProductName),
                           .lastQuitCleanB = cleanB},
                          instance, options.files);
}

int RunDesktop(const Options& options, CSecondInstance& instance, bool cleanB, int& countL, char** wordsZ) {
    // The main thread never waits for a display: one that is off would hold up the show.
    QSurfaceFormat format = QSurfaceFormat::defaultFormat();
    format.setSwapInterval(0);
    QSurfaceFormat::setDefaultFormat(format);
    QApplication qt(countL, wordsZ);
    // It has taken the user's locale for the whole process: numbers of libraries, and of ours, keep the form of files.
    std::setlocale(LC_NUMERIC, "C");
    SetDecimalMark(QLocale().decimalPoint().toStdString());
    ChooseCatalogue(FindResources().parent_path() / "locale");
    QTranslator toolkit;
    if (toolkit.load(QLocale(), "qtbase", "_", QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
        QApplication::installTranslator(&toolkit);
    CCatalogueTranslator translator;   // asked first
    QApplication::installTranslator(&translator);
    QApplication::setQuitOnLastWindowClosed(false);
    QApplication::setDesktopFileName("org.vopla.Vopla");   // by which the desktop finds our name and icon
    QApplication::setWindowIcon(QIcon::fromTheme("vopla"));
    const XLook look;
    CMainLoop_Qt loop;
    CUserInterface_Qt ui;
    CAppWindows_Qt windows([] {
        if (gVoplaApp != nullptr) gVoplaApp->RequestQuit(QuitAsk::kUser);
    });
    return RunApplication({.loop = loop,
                           .ui = ui,
                           .windows = windows,
                           .resources = FindResources(),
                           .prefs = PrefsFilesFor(CFolders::Config() / kApp_ProductName),
                           .lastQuitCleanB = cleanB},
                          instance, options.files);
}

}   // namespace

int RunProcess(const Options& options, int& countL, char** wordsZ) {
    CSignalWatch::Block();
    std::setlocale(LC_CTYPE, "C.UTF-8");
    SuperString::SetDefaultEncoding(TextEncoding::kUTF8);
    if (!options.root.empty()) CFolders::SetRoot(options.root);
    OpenLog();
    const bool cleanB = CCrashReporter::LastQuitWasClean(CLog::Get().File());
    const CCrashReporter crashReporter(CFolders::State() / kApp_ProductName);

    CSecondInstance instance(CFolders::Runtime() / "vopla", CFolders::Root());
    switch (instance.Start(LaunchText(options.files))) {
        case CSecondInstance::Role::kSecond:
            return 0;
        case CSecondInstance::Role::kFailed:
            if (instance.IsHeld() ||
                instance.LastErrno() == E2BIG) {   // two on one library would write over each other
                std::cerr << "vopla: another Vopla has this library, and did not answer: "
                          << ErrorText(instance.LastErrno()) << '\n';
                return 1;
            }
            std::cerr << "vopla: no second instance check: " << ErrorText(instance.LastErrno()) << '\n';
            break;   // the check itself is impossible here: a show can do without
        case CSecondInstance::Role::kFirst:
            break;
    }

    int result = 1;
    try {
        result = options.headlessB ? RunHeadless(options, instance, cleanB)
                                   : RunDesktop(options, instance, cleanB, countL, wordsZ);
    } catch (const std::exception& fault) {
        std::cerr << "Unknown exception caught before application core initialized: " << fault.what() << '\n';
    }
    if (!CThreadManager::LeftThreads().empty()) {   // what they use must not be torn down under them
        CLog::Get().Close();
        ::_exit(result);
    }
    return result;
}
