#include "App/CAppSaves.h"

#include "App/CApp.h"
#include "App/CAppLibrary.h"
#include "App/SaveRules.h"
#include "Core/CLog.h"
#include "Files/CSafeSave.h"
#include "Platform/CClock.h"
#include "Threads/CT_Preemptive.h"

/** Writes the preferences. The application's end waits for it. */
class CAppSaves::CT_SavePreferences final : public CT_Preemptive {
public:
    CT_SavePreferences(CAppSaves& saves, CCFDictionary content)
        : CT_Preemptive(std::string(kSaveTask_Name).c_str()),
          i_saves(saves),
          i_prefs(saves.i_app.Prefs()),
          i_content(std::move(content)) {}

protected:
    OSErr Operate(OSErr) override { return i_prefs.Write(i_content); }
    OSErr Completion(OSErr err) override {
        i_saves.PreferencesWritten(err);
        return err;
    }

private:
    CAppSaves& i_saves;
    CPreferences& i_prefs;
    const CCFDictionary i_content;
};

void CAppSaves::NoteChange() {
    if (!i_sinceT) i_sinceT = CClock::Get().SteadyT();
}

bool CAppSaves::IsWriting() const { return i_writesPrefsB || (i_app.i_library && i_app.i_library->IsSaving()); }

void CAppSaves::UserRests() {
    if (MayStart(false)) Start();
}

void CAppSaves::LookForLate() {
    if (!i_sinceT || CClock::Get().SteadyT() < *i_sinceT + kLate_T) return;
    if (MayStart(true)) Start();
}

bool CAppSaves::MayStart(bool lateB) const {
    const SaveState state{.databaseDirtyB = i_app.i_library->IsDirty(),
                          .addingToLibraryB = i_app.i_library->IsAddingToLibrary(),
                          .initializingB = i_app.IsInitializing(),
                          .idleGraphicsB = i_app.i_idleGraphicsB,
                          .resizingWindowB = i_app.i_resizing_windB,
                          .shutdownB = i_app.IsShutdown(),
                          .lateB = lateB};
    const auto refusal = RefuseSave(state);
    if (refusal) LogF("Not saving because: %s is %s\n", refusal->nameZ, refusal->valueZ);
    // One that runs, or failed a moment ago, is not disturbed: twice a second somebody looks again.
    return !refusal && !IsWriting() && i_app.i_library->BackOff().IsOver();
}

void CAppSaves::Start() {
    i_sinceT.reset();
    if (Failed(i_app.i_library->Save(false))) i_app.SetDirty(true);
    StartPreferences();
}

void CAppSaves::StartPreferences() {
    auto content = i_app.Prefs().Gather();
    if (!content) return;
    i_writesPrefsB = true;
    auto taskP = std::make_unique<CT_SavePreferences>(*this, *content);
    if (CT_Preemptive::Start(std::move(taskP)) != 0) return;
    PreferencesWritten(i_app.Prefs().Write(*content));   // no thread can be had: then here
}

void CAppSaves::PreferencesWritten(OSErr err) {
    i_writesPrefsB = false;
    if (!Failed(err)) {
        i_toldB = false;
        return;
    }
    i_app.i_library->BackOff().NoteFailure();
    i_app.SetDirty(true);
    // Told once, then tried again in silence until it works: a full disk must not bury the show under words.
    if (!std::exchange(i_toldB, true)) (void)TellSaveError(err, CFileRef(i_app.i_setup.prefs.file));
}
