#pragma once
#include <functional>

class CGraphicsPorts;
class CLibraryCommands;
class CNotices;
class CPlayControl;
class CPreferences;
class CSongDatabase;

/** What the main window shows and orders about; all outlive it. */
struct BrowserSetup {
    CSongDatabase& database;
    CPlayControl& play;
    CPreferences& prefs;
    CLibraryCommands& commands;
    CNotices& notices;
    CGraphicsPorts* portsP = nullptr;   // of the preview; null leaves it out
    /** CApp::ConfirmManualSongChange. */
    std::function<void(long, std::function<void()>)> ifInterruptible = [](long, const auto& then) { then(); };
};
