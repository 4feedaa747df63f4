#pragma once
#include "App/CApp.h"
#include "App/CAppPart.h"
#include "Play/CPlayControl.h"
#include "Play/CPlayHost.h"
#include "Play/CPlayWatcher.h"
#include "Values/CPreferences.h"

/** Playing as the application has it: owns the control, and answers what it asks of those above it. Goes before the
    library. */
class CAppPlay final : public CAppPart, private CPlayHost, private CPlayWatcher {
public:
    explicit CAppPlay(CApp& app);
    ~CAppPlay() override;

    [[nodiscard]] CPlayControl& Control() noexcept { return i_control; }
    /** When a picture was drawn last. */
    [[nodiscard]] double DrawnT() const { return Show()->drawnT; }

private:
    CSongDatabase& Database() override;
    CCFPrefDictionary& Preferences() override;
    CUserInterface& Ui() override;
    [[nodiscard]] bool PlaysOnAnyDevice() const override { return true; }
    CGraphicsPorts& Ports() override;
    [[nodiscard]] bool IsUnpacking(SongID song) override;
    void ShowMessage(std::string_view text) override;
    void Deselect() override;
    void Stop() override;
    /** The library leaves the files of the song that plays alone. */
    void PlayChanged() override;

    CApp& i_app;
    CPreferences& i_prefs;   // asked on other threads, too
    CPlayControl i_control;
    std::unique_ptr<CPrefFollower> i_follower;
};
