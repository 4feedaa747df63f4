#pragma once

class CCFPrefDictionary;

/** What a song does. */
enum class PlayMode : int { kStop = 0, kPause = 1, kPlay = 2 };

/** The video window, as far as playing moves it. Main thread. */
class CPlayWindow {
public:
    virtual ~CPlayWindow() = default;
    [[nodiscard]] virtual bool IsFullScreen() const = 0;
    [[nodiscard]] virtual bool IsVisible() const = 0;
    virtual void SetFullScreen(bool onB) = 0;
    virtual void SetAlwaysOnTop(bool onB) = 0;
    /** Shows it and brings it to the front. */
    virtual void ShowAndSelect() = 0;
    virtual void Hide() = 0;
};

/** How the video window follows play and pause. */
struct CPlayWindowRule {
    bool autoFullScreenB = false;
    bool bringToFrontB = true;
    bool hideOnPauseB = false;
    bool alwaysOnTopB = false;

    [[nodiscard]] static CPlayWindowRule Read(const CCFPrefDictionary& preferences);
    void Apply(PlayMode mode, CPlayWindow& window) const;

private:
    void ApplyFullScreen(PlayMode mode, CPlayWindow& window) const;
    void ApplyWindow(PlayMode mode, CPlayWindow& window) const;
};
