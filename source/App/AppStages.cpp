#include "App/AppStages.h"

#include "App/CAlerts.h"
#include "App/CAppLibrary.h"
#include "App/CAppMeta.h"
#include "App/CAppPlay.h"
#include "App/CAppPreferences.h"
#include "App/CAppProgress.h"
#include "App/CAppSaves.h"
#include "App/CAppThreads.h"
#include "App/CAppWindowSet.h"
#include "App/IdleTimers.h"
#include "App/StartSteps.h"
#include "Core/Localize.h"
#include "Graphics/CHq4x.h"

namespace {

constexpr AppStage kStart[] = {
    {"", kMake<CAppThreads, CAppAlerts>},
    {"", kMake<CAppPreferences>},
    {"", &PurgeLeftovers},
    {"", &LogHeadline},
    {"", &LogSystemFacts},
    {"", &TestMediaLibrary},
    {"Thread Manager Initted"},
    {"Loading version tracker"},
    {"Initting Object Tracker"},
    {"Loading Plugins"},
    {"Initializing Undo System"},
    {"Allocating MetaData Traits Database", kMake<CAppMeta>},
    {"Creating Song Database", kMake<CAppSaves, CAppLibrary, CAppPlay>},
    {"Installing event handlers", kMake<CAppTimers>},
    {"Getting App Res Folder", &FindApplicationFolder},
    {"", kMake<CAppProgress>},
    {"Creating task manager"},
    {"Loading Icons"},
    {"Loading Database", kAct<&CAppLibrary::Load>},
    {"Allocating CDPedia"},
    {"Creating Clipboard"},
    {"Creating Vopla Windows"},
    {"creating model"},
    {"Creating Browser Window", kMake<CAppWindowSet>},
    {"Loading Menus"},
    {"Creating ShowScreens menu…"},
    {"Localizing Menus…"},
    {"Creating QuickTime Components menu…"},
    {"Finishing menu creation"},
    {"Initializing Fast CDG Upscaling", [](CApp&) { CHq4x::InitTables(); }},
    {"Building Venues", [](CApp& app) { app.SetStatus(Localize("Loading…")); }},
    {"Loading Zipper"},
    {"Initializing Microphone"},
    {"Showing Windows", kAct<&CAppWindowSet::Show>},
    {"Version Checking"},
    {"", kDrop<CAppProgress>},
    {"Mounting media"},
    {"Loading Music Stores"},
    {"Flushing Events", [](CApp& app) { app.MainLoop().FlushInput(); }},
    {"Sorting Library", kAct<&CAppLibrary::Sort>},
    {"", &MarkReady},
};

// Nothing is taken away that a later stage needs. What is not dropped here goes with the application object.
constexpr AppStage kQuit[] = {
    {"Quitting", [](CApp& app) { app.StopIdling(); }},
    {"Abort meta push que"},
    {"", kMake<CAppProgress>},
    {"Shutting down Web Server"},
    {"Clearing SMS Gateways"},
    {"Abort QT exporters"},
    {"Abort orphan encoding", kAct<&CAppLibrary::BeginPurge>},
    {"Waiting for cache purging to complete", kAct<&CAppLibrary::WaitForPurge>},
    {"Abort song importers and zip tasks", kAct<&CAppLibrary::AbortTasks>},
    {"Saving Database…", kAct<&CAppSaves::SaveLast>},
    {"Releasing Microphone"},
    {"Unloading Plugins"},
    {"Hide Windows", kAct<&CAppWindowSet::Hide>},
    {"Remove Timers", kDrop<CAppTimers>},
    {"removing music store manager"},
    {"closing prefs", kAct<&CAppPreferences::Close>},
    {"Delete zipper", kAct<&CAppLibrary::EndZipper>},
    {"Delete LAME"},
    {"closing QuickTime"},
    {"Release icons"},
    {"closing Clipboard"},
    {"", kDrop<CAppAlerts>},
    {"Deleting Undo System"},
    {"Shutting down thread manager", kDrop<CAppThreads>},
    {"Disposing Task Window", kAct<&CAppWindowSet::DisposeOthers>},
    {"Delete graphics", kAct<&CAppWindowSet::DisposeVideo>},
    {"Delete browser", kAct<&CAppWindowSet::DisposeBrowser>},
    {"closing database", kDrop<CAppWindowSet, CAppPlay, CAppLibrary, CAppSaves>},
    {"Deleting task manager"},
    {"Deleting MetaData Traits Database", kDrop<CAppMeta>},
    {"Delete Object Tracker"},
    {"Deleting CDPedia…"},
    {"Cleaning Up…"},
    {"Delete version tracker"},
    {"", kDrop<CAppProgress>},
};

}   // namespace

std::span<const AppStage> StartStages() noexcept { return kStart; }
std::span<const AppStage> QuitStages() noexcept { return kQuit; }
