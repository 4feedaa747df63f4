#pragma once
#include <memory>
#include <optional>
#include <vector>

#include "App/CAppPart.h"
#include "App/CAppWindows.h"
#include "Values/CPreferences.h"

class CApp;
class CBreakScreen;
class CCoverArt;
class CGoBackNotice;

/** The windows as the application has them: made, shown where they stood, hidden and disposed of at their stages; and what
    they show beside songs. */
class CAppWindowSet final : public CAppPart {
public:
    explicit CAppWindowSet(CApp& app);
    ~CAppWindowSet() override;

    void Show();
    void Hide();
    // The video windows go between the others.
    void DisposeOthers();
    void DisposeVideo();
    void DisposeBrowser();

    /** Where the windows stand; from Hide on, where they stood before. */
    [[nodiscard]] std::vector<WindowRecord> Records() const;
    [[nodiscard]] CCFDictionary FullScreenKeys() const;

    /** A display on which a song is sung must not sleep. */
    void Idle() override;
    void KeepAwake();

private:
    CApp& i_app;
    CAppWindows& i_windows;
    const std::vector<WindowRow> i_rows;                      // made in this order, hidden and disposed of in the other
    bool i_displayOnB = false;                                // as the windows were told
    std::optional<std::vector<WindowRecord>> i_lastRecords;   // from Hide on
    CCFDictionary i_lastFullScreen;
    // While there are windows to see them.
    std::unique_ptr<CBreakScreen> i_break;
    std::unique_ptr<CCoverArt> i_covers;
    std::unique_ptr<CGoBackNotice> i_goBack;
    std::vector<std::unique_ptr<CPrefFollower>> i_followers;
};
