#include "App/TVoplaApp.h"

#include <iostream>

#include "App/CAlerts.h"
#include "App/PreferenceRequest.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Core/Localize.h"
#include "Library/CSongDatabase.h"
#include "Platform/CMainLoop.h"
#include "Platform/CUserInterface.h"
#include "Play/CPlayControl.h"
#include "SongFiles/AddFilesToLibrary.h"
#include "Threads/WaitMode.h"

TVoplaApp* gVoplaApp = nullptr;

namespace {

constexpr long kInitLevel_Globals = 2;
/** The loop wakes at least 20 times a second, whatever else happens. */
constexpr std::uint32_t kHeartbeat_Milliseconds = 50;

/** Behind each path: none has it, and a name may well have a line's end. */
constexpr char kBehindPath = '\0';

}   // namespace

std::string LaunchText(const LaunchFiles& files) {
    std::string text;
    for (const std::string& file : files) (text += file) += kBehindPath;
    return text;
}

LaunchFiles LaunchFilesOf(std::string_view text) {
    LaunchFiles files;
    while (!text.empty()) {
        const std::string_view file = text.substr(0, text.find(kBehindPath));
        if (!file.empty()) files.emplace_back(file);
        text.remove_prefix(std::min(file.size() + 1, text.size()));
    }
    return files;
}

TVoplaApp::TVoplaApp(const AppSetup& setup) : i_setup(setup) { gVoplaApp = this; }

TVoplaApp::~TVoplaApp() { gVoplaApp = nullptr; }

void TVoplaApp::StartUp() {
    const auto splash = i_setup.ui.OpenProgress(CApp::DisplayName());
    for (const char* const stageZ : {"Initializing COM", "Allocating File Manager", "Initializing Globals"}) {
        splash->SetText(stageZ);
        Log(stageZ);
    }
    i_initLevelL = kInitLevel_Globals;
    splash->SetText("Allocating App Globals");
    i_app = std::make_unique<CApp>(i_setup);
    splash->SetText("Catching Breath");
}

int TVoplaApp::Run(const LaunchFiles& files) {
    if (!i_app->IsLibraryLoaded()) {   // the user would rather quit, or was told why it cannot be
        std::cerr << "vopla: " << i_app->StartFailure() << '\n';
        return 1;
    }
    const CMainLoop::TimerID heartbeat = i_setup.loop.SetTimer(0, kHeartbeat_Milliseconds, [] {});
    i_earlyFiles.insert(i_earlyFiles.begin(), files.begin(), files.end());
    OpenFiles(std::exchange(i_earlyFiles, {}));
    while (!i_quitB && !i_quitWantedB) i_app->RunLoopPass();
    i_app->PrepareToQuit();
    i_setup.loop.KillTimer(heartbeat);
    return 0;
}

void TVoplaApp::ShutDown() {
    if (i_quitWantedB && i_app != nullptr) i_app->QuitWithoutAsking();
    i_app.reset();
    i_initLevelL = 0;
}

void TVoplaApp::RequestQuit(QuitAsk ask) {
    i_setup.loop.Post([this, ask] {
        if (ask == QuitAsk::kNobody) {   // also one that came during the start-up or under a question
            i_quitWantedB = true;
            if (gApp != nullptr) gApp->QuitWithoutAsking();
            i_setup.ui.DismissDialogs();
            return;
        }
        if (i_app != nullptr) i_app->ConfirmManualSongChange(3, [this] { i_quitB = true; });
    });
}

void TVoplaApp::OnSecondInstance(const LaunchFiles& files) {
    i_setup.loop.Post([this, files] {
        Log("got launch file msg");
        if (i_app == nullptr) {   // still starting: opened once the application is up
            i_earlyFiles.insert(i_earlyFiles.end(), files.begin(), files.end());
            return;
        }
        if (files.empty()) {
            MessageAlert(Localize("You can't run more than one copy of Vopla at once!"));
            return;
        }
        for (const std::string& file : files) Log(file);
        OpenFiles(files);
    });
}

std::string TVoplaApp::OnRequest(std::string_view request) {
    const auto deed = [this, request = std::string(request)] {
        const bool readyB = i_app != nullptr && i_app->IsAppReady() && !i_app->IsShutdown();
        if (!readyB) return PreferenceAnswerText(opWrErr, "the host that runs is just starting or ending: try again");
        return AnswerPreferenceRequest(request, i_app->Prefs());
    };
    return i_requests.Answer(deed, PreferenceAnswerText(opWrErr, "the host that runs is busy: try again"));
}

void TVoplaApp::OpenFiles(const LaunchFiles& files) {
    if (files.empty() || i_app == nullptr || i_app->IsInitializing() || i_app->IsShutdown()) return;
    const std::string& name = files.front();
    const auto tell = [name](const std::string& why) {
        MessageAlert(Localize("The file could not be opened: %1", {name}), why);
    };
    const auto done = [this, name, tell](const AddedFiles& added) {
        if (i_app == nullptr || i_app->IsShutdown()) return;   // it came while the application went
        if (added.songs.empty())
            return tell(added.refused.empty() ? FaultText(fnfErr, name) : added.refused.front().Reason());
        if (!added.refused.empty()) MessageAlert(Localize("Some files could not be added."), added.RefusedText());
        ShowOpened(added.songs);
    };
    if (const OSErr err = AddFilesToLibrary(i_app->Database(), {files.begin(), files.end()}, done); Failed(err))
        tell(FaultText(err, name));
}

void TVoplaApp::ShowOpened(const std::vector<SongID>& songs) {
    const CSong* const songP = i_app->Database().GetSong(songs.front());
    if (songP == nullptr) return;
    const std::string name = songP->Name().UTF8();
    const bool playB = songs.size() == 1 && i_app->Play().State() == PlayState::kIdle &&
                       i_app->Prefs().GetBool("Auto-play when you add single song to Library");
    if (!playB)
        i_app->SetStatus(songs.size() == 1 ? Localize("“%1” is in the library", {name})
                                           : Localize("%1 songs are in the library", {std::to_string(songs.size())}));
    else if (Failed(i_app->Play().Play(kPlaylistID_Library, songP->LibraryItem())))
        LogF("not played: %s", name.c_str());   // told by the control
}
