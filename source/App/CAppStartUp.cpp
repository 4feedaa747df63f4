#include "App/CAppStartUp.h"

#include "App/CAlerts.h"
#include "App/CAppLibrary.h"
#include "App/CAppPlay.h"
#include "App/CAppSaves.h"
#include "App/CAppWindows.h"
#include "App/CBreakScreen.h"
#include "App/CCoverArt.h"
#include "App/CGoBackNotice.h"
#include "App/CScopedInitializing.h"
#include "App/IdleTimers.h"
#include "App/LocalTime.h"
#include "App/MemoryWarning.h"
#include "App/SystemFacts.h"
#include "Audio/CSpoolPump.h"
#include "Core/CLog.h"
#include "Core/FaultText.h"
#include "Files/CFileRef.h"
#include "Files/CFolderKinds.h"
#include "Files/FSrFolders.h"
#include "Graphics/CHq4x.h"
#include "Meta/CMetaManager.h"
#include "Platform/CClock.h"
#include "Platform/CFolders.h"
#include "Platform/CMainLoop.h"
#include "SongFiles/SongFolders.h"
#include "Threads/CThreadManager.h"
#include "Threads/ThreadInfo.h"
#include "Values/CPreferences.h"

namespace {
constexpr const char* kPref_MoveArticles = "Move 'The' to end of Artits title";
}   // namespace

// The order is the contract: what stands further down may rely on all above it.
const CAppStartUp::Stage CAppStartUp::kStages[] = {
    {"", &CAppStartUp::TagMainThread},
    {"", &CAppStartUp::CreateThreadManager},
    {"", &CAppStartUp::LoadPreferences},
    {"", &CAppStartUp::PurgeLeftovers},
    {"", &CAppStartUp::LogHeadline},
    {"", &CAppStartUp::LogSystemFacts},
    {"", &CAppStartUp::TestMediaLibrary},
    {"Thread Manager Initted", &CAppStartUp::NotYet},
    {"Loading version tracker", &CAppStartUp::NotYet},
    {"Initting Object Tracker", &CAppStartUp::NotYet},
    {"Loading Plugins", &CAppStartUp::NotYet},
    {"Initializing Undo System", &CAppStartUp::NotYet},
    {"Allocating MetaData Traits Database", &CAppStartUp::CreateMetaManager},
    {"Creating Song Database", &CAppStartUp::CreateDatabase},
    {"Installing event handlers", &CAppStartUp::InstallIdleTimers},
    {"Getting App Res Folder", &CAppStartUp::FindApplicationFolder},
    {"", &CAppStartUp::OpenProgress},
    {"Creating task manager", &CAppStartUp::NotYet},
    {"Loading Icons", &CAppStartUp::NotYet},
    {"Loading Database", &CAppStartUp::LoadDatabase},
    {"Allocating CDPedia", &CAppStartUp::NotYet},
    {"Creating Clipboard", &CAppStartUp::NotYet},
    {"Creating Vopla Windows", &CAppStartUp::NotYet},
    {"creating model", &CAppStartUp::NotYet},
    {"Creating Browser Window", &CAppStartUp::CreateWindows},
    {"Loading Menus", &CAppStartUp::NotYet},
    {"Creating ShowScreens menu…", &CAppStartUp::NotYet},
    {"Localizing Menus…", &CAppStartUp::NotYet},
    {"Creating QuickTime Components menu…", &CAppStartUp::NotYet},
    {"Finishing menu creation", &CAppStartUp::NotYet},
    {"Initializing Fast CDG Upscaling", &CAppStartUp::BuildUpscalingTables},
    {"Building Venues", &CAppStartUp::BuildVenues},
    {"Loading Zipper", &CAppStartUp::NotYet},
    {"Initializing Microphone", &CAppStartUp::NotYet},
    {"Showing Windows", &CAppStartUp::ShowWindows},
    {"Version Checking", &CAppStartUp::NotYet},
    {"", &CAppStartUp::CloseProgress},
    {"Mounting media", &CAppStartUp::NotYet},
    {"Loading Music Stores", &CAppStartUp::NotYet},
    {"Flushing Events", &CAppStartUp::FlushEvents},
    {"Sorting Library", &CAppStartUp::SortLibrary},
    {"", &CAppStartUp::MarkReady},
};

CAppStartUp::CAppStartUp(CApp& app) : i_app(app) {}
CAppStartUp::~CAppStartUp() = default;

void CAppStartUp::Run() {
    for (const Stage& stage : kStages) {
        if (!stage.words.empty()) Say(stage.words);
        (this->*stage.act)();
    }
}

void CAppStartUp::Say(std::string_view words) { i_app.ShowProgress(words); }

void CAppStartUp::TagMainThread() {
    TagThread(0, false);
    i_initializing = std::make_unique<CScopedInitializing>(i_app, true);
}

void CAppStartUp::CreateThreadManager() {
    CSpoolPump::AllowAll();
    i_app.i_threads = std::make_unique<CThreadManager>();
    i_app.i_alerts = std::make_unique<CAlerts>(i_app.Ui());
}

void CAppStartUp::LoadPreferences() {
    PrefsOptions options;
    options.musicFolder = DefaultMusicFolder(CFolders::Music() / "Vopla");
    options.cacheFolder = CFolders::Cache() / "Vopla";
    std::error_code err;   // the columns come with the browser: until then there is no such file
    if (const auto columns = i_app.i_setup.resources / "Default Columns.plist"; std::filesystem::exists(columns, err))
        options.defaultColumns = columns;
    options.windows = [this_app = &i_app] { return this_app->WindowRecords(); };
    options.atSave = [this_app = &i_app] { return this_app->FullScreenKeys(); };
    options.onDirty = [this_app = &i_app] {
        if (!this_app->IsAppReady()) return;
        this_app->SetDirty(true);
        this_app->PostEvent(PostEventCode("Pref"));   // whoever set it may be any thread, and be in the middle of more
        this_app->i_metaManager->SetMoveArticles(this_app->Prefs().GetBool(kPref_MoveArticles));
        this_app->Database().SetSettings(ReadLibrarySettings(this_app->Prefs()));
    };
    i_app.i_prefs = std::make_unique<CPreferences>(i_app.i_setup.prefs, std::move(options));
}

void CAppStartUp::CreateMetaManager() {
    MetaSetup setup;
    setup.traits.showSingerIDB = i_app.Prefs().GetBool("Show Singer ID");
    setup.moveArticlesB = i_app.Prefs().GetBool(kPref_MoveArticles);
    setup.software = CApp::DisplayName();
    i_app.i_metaManager = std::make_unique<CMetaManager>(std::move(setup));
}

void CAppStartUp::CreateDatabase() {
    i_app.i_library = std::make_unique<CAppLibrary>(i_app);
    i_app.i_saves = std::make_unique<CAppSaves>(i_app);
    i_app.i_play = std::make_unique<CAppPlay>(i_app);
}

/** What a crash left in the temporary places, ours and those beside the files that we save. */
void CAppStartUp::PurgeLeftovers() {
    const CFileRef folders[] = {CFileRef(i_app.i_setup.prefs.file).GetParent(), CFileRef(i_app.Prefs().MusicFolder())};
    PurgeTemporary(folders);
}

void CAppStartUp::LogHeadline() { LogF("%s %s", "-------------------- New Vopla", "Log --------------------\n"); }

void CAppStartUp::LogSystemFacts() {
    Log(CApp::DisplayName());
    LogF("Date/Time:     %s\n", LocalTimeText().c_str());
    for (const std::string& line : SystemFactLines()) Log(line);
}

void CAppStartUp::TestMediaLibrary() {
    if (MediaLibraryVersion() >= kMediaLibrary_Minimum) return;
    FatalAlert("Vopla requires FFmpeg 5.0 or greater.");
}

void CAppStartUp::FindApplicationFolder() {
    std::error_code err;
    if (std::filesystem::is_directory(i_app.i_setup.resources, err)) return;
    Log("Failed!");
    FatalAlert("Could not get app bundle");
}

void CAppStartUp::InstallIdleTimers() {
    // The save timer first: SetDirty reaches it as element 0.
    i_app.i_timers = {new CT_IdleTimer_Save(i_app), new CT_Timer_LogTime(), new CT_IdleTimer_NoSleep(i_app),
                      new CT_Timer_VideoRefresh(i_app), new CT_IdleTimer_App(i_app)};   // owned by the map of forks
}

void CAppStartUp::OpenProgress() { i_app.i_curScope = i_app.Ui().OpenProgress("Initializing " + CApp::DisplayName()); }

void CAppStartUp::LoadDatabase() {
    CFileRef root;
    if (!FindMusicFolder(root)) {
        i_app.i_startFailure = "The music folder, which holds the library, was not found.";
        return;
    }
    OSErr err = i_app.Folders().Hold(FolderKind::kDatabase, root);
    if (!Failed(err)) err = i_app.i_library->Load({root, i_app.Prefs().MusicFolder(), i_app.Prefs().CacheFolder()});
    i_app.i_libraryLoadedB = !Failed(LogStep(err, "loading the library"));
    if (i_app.i_libraryLoadedB) return;
    const CLibraryStore* const storeP = i_app.i_library->Store();   // null: another program has the lock
    const std::string why = storeP == nullptr              ? "it is in use by another program"
                            : storeP->Report().tooNewB     ? "a later version of Vopla made it"
                            : Failed(storeP->Report().err) ? storeP->Report().problems.back()
                                                           : FaultText(err, FaultOf::kFolder, {});
    i_app.i_startFailure = "The library in “" + root.GetPath().string() + "” was not opened: " + why;
}

/** The root of the library, or false when the user would rather quit. */
bool CAppStartUp::FindMusicFolder(CFileRef& root) {
    enum Button : std::size_t { kQuit, kTryAgain, kFindIt };
    for (;;) {
        const OSErr err = i_app.Folders().Find(FolderKind::kRoot, root);
        if (!Failed(err)) return true;
        if (Failed(LogStep(err, "finding the music folder")) && i_app.IsShutdown()) return false;

        const std::string name = kApp_ProductName;
        Question question;
        question.title.append("“").append(name).append("” folder not found");
        question.text = "There was a problem locating your “" + name +
                        "” folder.  Is it perhaps an alias to an offline volume? " +
                        FaultText(err, FaultOf::kFolder, root.GetPath().string());
        question.buttons = {"Quit", "Try again", "Find it"};
        question.defaultIndex = kTryAgain;
        question.safeIndex = kQuit;   // nobody in front: it must not ask for ever
        const std::size_t button = i_app.Ui().Ask(question).buttonIndex;
        if (button == kQuit) return false;
        CFileRef chosen;
        if (button == kFindIt)
            if (const auto folder = i_app.Ui().ChooseFolder(question.title); folder.has_value())
                chosen = CFileRef(*folder);
        i_app.Folders().ForgetRoot(chosen);   // an empty choice is "Try again"
    }
}

void CAppStartUp::CreateWindows() {
    for (const WindowKind kind : {PREF_Wind_BROWSER, PREF_Wind_VIDEO2, PREF_Wind_VIDEO, PREF_Wind_TASKS})
        i_app.Windows().Create(kind);
    i_app.i_break = std::make_unique<CBreakScreen>(i_app.Windows().Ports(), i_app.MainLoop());
    i_app.i_goBack = std::make_unique<CGoBackNotice>(i_app.Play(), i_app.Notices());
    i_app.i_covers = std::make_unique<CCoverArt>(i_app.Play(), i_app.Windows().Ports());
    i_app.FollowPreferences();
    i_app.i_hasMainWindowB.store(true, std::memory_order_release);
}

void CAppStartUp::BuildUpscalingTables() { CHq4x::InitTables(); }

void CAppStartUp::ShowWindows() {
    if (!i_app.i_libraryLoadedB) return;
    i_app.ShowWindowsAsSaved();
}

void CAppStartUp::BuildVenues() { i_app.SetStatus("Loading…"); }

void CAppStartUp::CloseProgress() {
    i_app.i_curScope.reset();
    i_initializing.reset();
}

void CAppStartUp::FlushEvents() { i_app.MainLoop().FlushInput(); }

/** The order by slot, which others fall back on, is made on a worker before somebody waits for it. */
void CAppStartUp::SortLibrary() {
    CPlayList& library = i_app.Database().Library();
    const SortSpec shown = library.Spec();
    if (library.Count() > 1) library.SetSort(shown.empty() ? SortSpec{{CM_Key_SORT_INDEX}} : shown);
}

void CAppStartUp::MarkReady() {
    if (!i_app.i_setup.lastQuitCleanB) Log("the last session did not end with its quit: it may have crashed");
    i_app.SetStatus("Ready!");
    i_app.i_appReadyB.store(true, std::memory_order_release);
    i_app.i_alerts->AppReady();
    if (i_app.i_libraryLoadedB) {
        i_app.i_library->AfterStart();
        WarnOfMemory();
    }
    Log("Ready!");
}

void CAppStartUp::WarnOfMemory() {
    constexpr std::string_view kToldKey = "Date of last RAM warning";
    const auto freeL = FreeMemory();
    const CFDate now{CClock::Get().AbsoluteT()};
    const auto warning = freeL ? MemoryWarning(*freeL, i_app.Prefs().GetDate(kToldKey), now) : std::nullopt;
    if (!warning) return;
    i_app.Prefs().Set(kToldKey, CCFValue(now));
    CAlerts::Queue("Your computer is short of memory.", *warning);   // the start is not held up by it
}
