#include "App/CAppPreferences.h"

#include <memory>
#include <string>

#include "App/CApp.h"
#include "App/CAppSaves.h"
#include "App/CAppWindowSet.h"
#include "Core/CLog.h"
#include "Files/CSafeSave.h"
#include "Files/FSrFolders.h"
#include "Platform/CFolders.h"
#include "SongFiles/SongFolders.h"
#include "Threads/CT_Preemptive.h"

/** Writes what the main thread gathered. */
class CAppPreferences::CT_SavePreferences final : public CT_Preemptive {
public:
    CT_SavePreferences(CAppPreferences& part, CCFDictionary content)
        : CT_Preemptive(std::string(kSaveTask_Name).c_str()), i_part(part), i_content(std::move(content)) {}

protected:
    OSErr Operate(OSErr) override { return i_part.i_prefs.Write(i_content); }
    OSErr Completion(OSErr err) override {
        i_part.Written(err);
        return err;
    }

private:
    CAppPreferences& i_part;   // the quit waits for the end of the writing
    const CCFDictionary i_content;
};

CAppPreferences::CAppPreferences(CApp& app) : i_app(app), i_prefs(app.Setup().prefs, Options()) {}

PrefsOptions CAppPreferences::Options() {
    PrefsOptions options;
    options.musicFolder = DefaultMusicFolder(CFolders::Music() / "Vopla");
    options.cacheFolder = CFolders::Cache() / "Vopla";
    std::error_code err;   // without the file the browser shows its own columns
    if (const auto columns = i_app.Setup().resources / "Default Columns.plist"; std::filesystem::exists(columns, err))
        options.defaultColumns = columns;
    options.windows = [this] {
        const auto* const windowsP = i_app.Parts().Find<CAppWindowSet>();
        return windowsP == nullptr ? std::vector<WindowRecord>() : windowsP->Records();
    };
    options.atSave = [this] {
        const auto* const windowsP = i_app.Parts().Find<CAppWindowSet>();
        return windowsP == nullptr ? CCFDictionary() : windowsP->FullScreenKeys();
    };
    options.onDirty = [this] { Changed(); };
    options.saveAtEndB = false;
    return options;
}

void CAppPreferences::Changed() {
    if (!i_app.IsAppReady() || i_app.NoMoreSaves()) return;   // Close saves what the quit sets
    i_dirtyB = true;
    i_app.SetDirty(true);
}

OSErr CAppPreferences::Save() {
    i_dirtyB = false;
    const auto content = i_prefs.Gather();
    if (!content) return noErr;
    i_writesB = true;
    if (CT_Preemptive::Start(std::make_unique<CT_SavePreferences>(*this, *content)) == 0)
        Written(i_prefs.Write(*content));   // no thread can be had: then here
    return noErr;
}

void CAppPreferences::Written(OSErr err) {
    i_writesB = false;
    if (!Failed(err)) {
        i_toldB = false;
        return;
    }
    i_app.Saves().BackOff().NoteFailure();
    Changed();
    // Told once, then tried again in silence until it works: a full disk must not bury the show under words.
    if (!std::exchange(i_toldB, true)) (void)TellSaveError(err, CFileRef(i_app.Setup().prefs.file));
}

void CAppPreferences::Close() {
    // The last save is logged whatever the master switch says; the switches themselves live on in the log.
    const bool masterB = CLog::Get().IsOn(LogSwitch::kLogging);
    CLog::Get().SetSwitch(LogSwitch::kLogging, true);
    const OSErr err = i_prefs.Save();
    CLog::Get().SetSwitch(LogSwitch::kLogging, masterB);
    if (Failed(err)) Log("### Error saving the preferences at quit");
}
