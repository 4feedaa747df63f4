#pragma once
#include <atomic>
#include <optional>

#include "App/CAppPart.h"
#include "Threads/CHandle.h"
#include "Values/CPreferences.h"

class CApp;

/** The preferences as the application has them: saved on a worker while it runs, and by Close at its end. They can be
    asked, and set, as long as any thread may do so. */
class CAppPreferences final : public CAppPart {
public:
    explicit CAppPreferences(CApp& app);

    [[nodiscard]] CPreferences& Prefs() noexcept { return i_prefs; }
    /** The last save; what is set later is lost. */
    void Close();

    [[nodiscard]] bool IsDirty() const override { return i_dirtyB; }
    OSErr Save() override;
    [[nodiscard]] bool IsSaving() const override { return i_writesB; }

private:
    class CT_SavePreferences;

    [[nodiscard]] PrefsOptions Options();
    void Changed();
    void Written(OSErr err);

    CApp& i_app;
    std::atomic<bool> i_dirtyB{false};
    bool i_writesB = false;
    bool i_toldB = false;   // that they cannot be written
    CPreferences i_prefs;
};
