#include "Graphics/CPlayWindowRule.h"

#include "Values/CCFPrefDictionary.h"

CPlayWindowRule CPlayWindowRule::Read(const CCFPrefDictionary& preferences) {
    return {.autoFullScreenB = preferences.GetBool("Auto Full Screen During Play"),
            .bringToFrontB = preferences.GetBool("Bring Video Window to front when playing"),
            .hideOnPauseB = preferences.GetBool("Hide on pause"),
            .alwaysOnTopB = preferences.GetBool("Always on top")};
}

void CPlayWindowRule::Apply(PlayMode mode, CPlayWindow& window) const {
    autoFullScreenB ? ApplyFullScreen(mode, window) : ApplyWindow(mode, window);
}

void CPlayWindowRule::ApplyFullScreen(PlayMode mode, CPlayWindow& window) const {
    // Where it is what it shall be, it takes the focus from nobody who types.
    if ((window.IsFullScreen() && window.IsVisible()) == (mode == PlayMode::kPlay)) return;
    if (mode == PlayMode::kPlay) {
        if (!window.IsFullScreen()) window.SetFullScreen(true);
        if (bringToFrontB || hideOnPauseB || !window.IsVisible()) window.ShowAndSelect();
        return;
    }
    if (hideOnPauseB) window.Hide();
    if (hideOnPauseB || mode != PlayMode::kPause) window.SetFullScreen(false);
}

void CPlayWindowRule::ApplyWindow(PlayMode mode, CPlayWindow& window) const {
    window.SetAlwaysOnTop(alwaysOnTopB);
    if (mode == PlayMode::kPlay) {
        if (!window.IsVisible() && bringToFrontB) window.ShowAndSelect();
    } else if (window.IsVisible() && hideOnPauseB) {
        window.Hide();
        window.SetFullScreen(false);
    }
}
