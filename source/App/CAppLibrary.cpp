#include "App/CAppLibrary.h"

#include "App/CAppWindows.h"
#include "Core/CAlerts.h"
#include "Core/CApp.h"

CAppLibrary::CAppLibrary(CApp& app) : i_app(app), i_database(*this) {
    i_database.SetSettings(ReadLibrarySettings(app.Prefs()));
}
CAppLibrary::~CAppLibrary() = default;

bool CAppLibrary::IsReady() const { return i_app.IsAppReady() && !i_app.NoMoreSaves(); }

void CAppLibrary::DirtyChanged(bool dirtyB) {
    i_app.Windows().SetDirtyMark(dirtyB);
    if (dirtyB) i_app.SetDirty(true);
}

void CAppLibrary::StopPlayback() { i_app.StopCurrentSong(); }

bool CAppLibrary::IsDateAddedReal() const { return i_app.Prefs().GetBool("Date Added Field *really* Updated"); }

void CAppLibrary::AskLater(const Question& question, std::function<void(const Answer&)> answered) {
    CAlerts::Queue(question, std::move(answered));
}

void CAppLibrary::StopWarning(std::string_view preference) { i_app.Prefs().Set(preference, CCFValue(false)); }

OSErr CAppLibrary::Save(bool /*fullB*/) {
    i_othersDirtyB = false;
    i_database.SetDirty(false, "not dirty");
    return noErr;
}
