#include "App/StartSteps.h"

#include <filesystem>

#include "App/CAlerts.h"
#include "App/CApp.h"
#include "App/CAppParts.h"
#include "App/LocalTime.h"
#include "App/MemoryWarning.h"
#include "App/SystemFacts.h"
#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Files/CFileRef.h"
#include "Files/FSrFolders.h"
#include "Platform/CClock.h"

void PurgeLeftovers(CApp& app) {
    const CFileRef folders[] = {CFileRef(app.Setup().prefs.file).GetParent(), CFileRef(app.Prefs().MusicFolder())};
    PurgeTemporary(folders);
}

void LogHeadline(CApp& /*app*/) { LogF("%s %s", "-------------------- New Vopla", "Log --------------------\n"); }

void LogSystemFacts(CApp& /*app*/) {
    Log(CApp::DisplayName());
    LogF("Date/Time:     %s\n", LocalTimeText().c_str());
    for (const std::string& line : SystemFactLines()) Log(line);
}

void TestMediaLibrary(CApp& /*app*/) {
    if (MediaLibraryVersion() >= kMediaLibrary_Minimum) return;
    FatalAlert(Localize("Vopla requires FFmpeg 5.0 or greater."));
}

void FindApplicationFolder(CApp& app) {
    std::error_code err;
    if (std::filesystem::is_directory(app.Setup().resources, err)) return;
    Log("Failed!");
    FatalAlert(Localize("Could not get app bundle"));
}

namespace {

constexpr DatePref kPref_MemoryTold = "Date of last RAM warning";

void WarnOfMemory(CPreferences& prefs) {
    const auto freeL = FreeMemory();
    const CFDate now{CClock::Get().AbsoluteT()};
    const auto warning = freeL ? MemoryWarning(*freeL, prefs.GetDate(kPref_MemoryTold), now) : std::nullopt;
    if (!warning) return;
    prefs.SetDate(kPref_MemoryTold, now);
    CAlerts::Queue(Localize("Your computer is short of memory."), *warning);   // the start is not held up by it
}

}   // namespace

void MarkReady(CApp& app) {
    if (!app.Setup().lastQuitCleanB) Log("the last session did not end with its quit: it may have crashed");
    app.SetStatus(Localize("Ready!"));
    app.State().SetReady();
    app.Parts().ForEach("getting ready", [](CAppPart& part) { part.Ready(); });
    if (app.IsLibraryLoaded()) WarnOfMemory(app.Prefs());
    Log("Ready!");
}
