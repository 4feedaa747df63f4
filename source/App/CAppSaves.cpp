#include "App/CAppSaves.h"

#include "App/CApp.h"
#include "App/CAppLibrary.h"
#include "App/CQuitSave.h"
#include "App/IdleTimers.h"
#include "App/SaveRules.h"
#include "Core/CLog.h"
#include "Platform/CClock.h"

void CAppSaves::NoteChange() {
    if (!i_sinceT) i_sinceT = CClock::Get().SteadyT();
}

bool CAppSaves::IsAnyDirty() const {
    bool dirtyB = false;
    i_app.Parts().ForEach("saving", [&](const CAppPart& part) { dirtyB = dirtyB || part.IsDirty(); });
    return dirtyB;
}

bool CAppSaves::IsWriting() const {
    bool writingB = false;
    i_app.Parts().ForEach("saving", [&](const CAppPart& part) { writingB = writingB || part.IsSaving(); });
    return writingB;
}

void CAppSaves::UserRests(CT_Timer& timer) {
    if (MayStart(false)) Start();
    if (!IsAnyDirty()) timer.SetFireInterval(kTimer_Off);
}

void CAppSaves::Idle() {
    if (!i_sinceT || CClock::Get().SteadyT() < *i_sinceT + kLate_T) return;
    if (MayStart(true)) Start();
}

bool CAppSaves::MayStart(bool lateB) const {
    const CAppLibrary* const libraryP = i_app.Parts().Find<CAppLibrary>();
    const SaveState state{.databaseDirtyB = IsAnyDirty(),
                          .addingToLibraryB = libraryP != nullptr && libraryP->IsAddingToLibrary(),
                          .initializingB = i_app.IsInitializing(),
                          .idleGraphicsB = i_app.IdlesGraphics(),
                          .resizingWindowB = i_app.IsResizingWindow(),
                          .shutdownB = i_app.IsShutdown(),
                          .lateB = lateB};
    const auto refusal = RefuseSave(state);
    if (refusal) LogF("Not saving because: %s is %s\n", refusal->nameZ, refusal->valueZ);
    // One that runs, or failed a moment ago, is not disturbed: twice a second somebody looks again.
    return !refusal && !IsWriting() && i_backOff.IsOver();
}

void CAppSaves::Start() {
    i_sinceT.reset();
    i_app.Parts().ForEach("saving", [this](CAppPart& part) {
        if (Failed(part.Save())) i_app.SetDirty(true);
    });
}

void CAppSaves::SaveLast() {
    // Others are told of what is flushed and written: what one of them throws costs a second try, and not the library.
    for (int n = 0; n < 2 && i_app.Parts().Find<CAppLibrary>() != nullptr; ++n) {
        try {
            CQuitSave(i_app).Run();
            break;
        } catch (const std::exception& fault) {
            LogF("### Error saving at quit: %s", fault.what());
        }
    }
    i_app.State().SetNoMoreSaves();
}
