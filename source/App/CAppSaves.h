#pragma once
#include <optional>

#include "Platform/OSErr.h"

class CApp;

/** When what has changed is written, library and preferences alike: as soon as the user rests for two seconds, and five
    seconds after the first change whether he rests or not. One save at a time, on workers; one back-off for both when
    something cannot be written.
    Threads  main.
    Owner    CApp. Whoever ends it waits until IsWriting says no. */
class CAppSaves {
public:
    explicit CAppSaves(CApp& app) : i_app(app) {}

    /** Something is not on the disc yet. */
    void NoteChange();
    /** Two seconds without a key or a move of the mouse. */
    void UserRests();
    /** Twice a second: what waits too long for the user's rest is written now. */
    void LookForLate();
    /** A worker writes the library or the preferences. */
    [[nodiscard]] bool IsWriting() const;

    /** A change is written after so many seconds, at the latest. The writing itself comes on top. */
    static constexpr double kLate_T = 5.0;

private:
    class CT_SavePreferences;

    [[nodiscard]] bool MayStart(bool lateB) const;
    void Start();
    void StartPreferences();
    void PreferencesWritten(OSErr err);

    CApp& i_app;
    std::optional<double> i_sinceT;   // the first change that no save has taken yet
    bool i_writesPrefsB = false;
    bool i_toldB = false;   // that the preferences cannot be written
};
