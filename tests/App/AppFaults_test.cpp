#include <atomic>
#include <stdexcept>

#include "App/AppTest.h"
#include "Library/CSongDatabase.h"
#include "Platform/ScriptedClock.h"
#include "Threads/CThreadManager.h"

// Subsystems that fail while the application starts or quits: what was changed is saved all the same.

namespace {

/** Windows, and a progress window, that throw at a chosen call. */
class Throwing final : public CAppWindows {
public:
    void Call() const {
        if (callsL++ == throwAtL) throw std::runtime_error("a window that fails");
    }
    std::vector<WindowRow> Rows() const override {
        Call();
        return {{PREF_Wind_BROWSER, "Browser", {}, true}, {PREF_Wind_TASKS, "Tasks"}};
    }
    void Create(WindowKind) override { Call(); }
    void Dispose(WindowKind) override { Call(); }
    bool Exists(WindowKind) const override { return true; }
    void Show(WindowKind) override { Call(); }
    void Hide(WindowKind) override { Call(); }
    void Select(WindowKind) override { Call(); }
    void SetPlace(WindowKind, const Place&) override { Call(); }
    std::optional<Place> PlaceOf(WindowKind) const override {
        Call();
        return Place{1, 2, 300, 400, true};
    }
    void FollowPreferences(const CCFPrefDictionary&) override { Call(); }
    void SetStatus(std::string_view) override { Call(); }
    void SetDirtyMark(bool) override { Call(); }
    void KeepDisplayOn(bool) override { Call(); }

    mutable long callsL = 0;
    long throwAtL = -1;
};

class AppFaults : public AppTest {
protected:
    AppFaults() {
        i_ui.atProgress = [this](std::string_view) { i_throwing.Call(); };
    }
    AppSetup SetupThatFails() {
        return {.loop = i_loop,
                .ui = i_ui,
                .windows = i_throwing,
                .resources = MakeSetup().resources,
                .prefs = MakeSetup().prefs};
    }
    /** The n-th call from now on throws; never for -1. */
    void ThrowAt(long n) {
        i_throwing.callsL = 0;
        i_throwing.throwAtL = n;
    }
    std::size_t SavedSongs() {
        ThrowAt(-1);
        CApp app(SetupThatFails());
        return app.Database().Library().Count();
    }
    ScriptedClock i_clock;
    Throwing i_throwing;
};

TEST_F(AppFaults, TheQuitSavesWhoeverFails) {
    std::size_t songsL = 0;
    for (long n = 0, callsL = 1; n < callsL; ++n) {
        SCOPED_TRACE(n);
        ThrowAt(-1);
        {
            CApp app(SetupThatFails());
            (void)app.Database().AddSongToLibrary(*app.Database().CreateSong());
            ++songsL;
            ThrowAt(n);
        }
        callsL = i_throwing.callsL;
        ASSERT_EQ(gApp, nullptr);
        ASSERT_EQ(SavedSongs(), songsL);
        ASSERT_NE(LogText().find("Done: Saving Preferences"), std::string::npos);
    }
    EXPECT_GT(songsL, 30U);   // each stage that has words is one call at least
}

TEST_F(AppFaults, AStartThatFailsLeavesTheLibraryAsItIs) {
    {
        CApp app(SetupThatFails());
        (void)app.Database().AddSongToLibrary(*app.Database().CreateSong());
    }
    long failedL = 0;
    for (long n = 0;; ++n) {
        SCOPED_TRACE(n);
        ThrowAt(n);
        try {
            const CApp app(SetupThatFails());
            if (i_throwing.callsL <= n) break;   // the start is over, and nothing threw
        } catch (const std::runtime_error&) {
            ++failedL;
        }
        ASSERT_EQ(gApp, nullptr);
    }
    EXPECT_GT(failedL, 20);
    EXPECT_EQ(SavedSongs(), 1U);
}

TEST_F(AppFaults, WorkersSetPreferencesUntilTheirLastMoment) {
    std::atomic<long> setL = 0;
    {
        CApp app(SetupThatFails());
        const auto work = [&setL, &prefs = app.Prefs()](void*) {
            while (!CThreadManager::IsKilling()) prefs.SetLong("Number of undos", ++setL % 100);
            return noErr;
        };
        for (int n = 0; n < 3; ++n)
            ASSERT_NE(CThreadManager::Fork(
                          ForkKind::kPreemptive, work, [](void*, OSErr err) { return err; }, nullptr, "setter"),
                      0);
        while (setL < 100) app.RunLoopPass();
    }
    EXPECT_NE(LogText().find("Quit Successful"), std::string::npos);
    CApp again(SetupThatFails());
    EXPECT_NE(again.Prefs().GetLong("Number of undos"), 99);   // the default: some of what they set was saved
}

}   // namespace
