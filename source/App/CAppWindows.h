#pragma once
#include <optional>
#include <string>
#include <vector>

#include "Graphics/CGraphicsPorts.h"
#include "Platform/CUserInterface.h"
#include "Values/PreferenceTable.h"

class CCFPrefDictionary;

/** The windows the application knows by number; the numbers are those of the preferences. */
enum class WindowKind : short {
    PREF_Wind_VIDEO = 0,
    PREF_Wind_BROWSER = 1,
    PREF_Wind_TASKS = 4,
    PREF_Wind_VIDEO2 = 9,
};
using enum WindowKind;

/** A window whose place is kept. */
struct WindowRow {
    /** Of a window that may fill a display: whether it does, and which, by its name. */
    struct FullScreen {
        BoolPref onB;
        StringPref display;
    };
    WindowKind kind;
    const char* nameZ;                           // in the keys of its place
    std::optional<FullScreen> fullScreen = {};   // the video windows have one
    bool shownFirstB = false;                    // at the first start, when no place is kept
};

/** The windows of the application, behind one interface: the desktop's, or none at all (headless, tests).
    Threads  main. */
class CAppWindows {
public:
    /** Where a window stands, for the preferences. */
    struct Place {
        short top = 0, left = 0, bottom = 0, right = 0;
        bool visibleB = false;
        bool fullScreenB = false;
        std::string display = {};   // of the full screen, by its name; empty for the one that the window is on
    };

    virtual ~CAppWindows() = default;
    /** Those there are, in the order in which they are made. */
    [[nodiscard]] virtual std::vector<WindowRow> Rows() const = 0;
    virtual void Create(WindowKind kind) = 0;
    virtual void Dispose(WindowKind kind) = 0;
    [[nodiscard]] virtual bool Exists(WindowKind kind) const = 0;
    virtual void Show(WindowKind kind) = 0;
    virtual void Hide(WindowKind kind) = 0;
    /** Brings a window to the front. */
    virtual void Select(WindowKind kind) = 0;
    /** Moves a window to where the preferences say it stood. */
    virtual void SetPlace(WindowKind kind, const Place& place) = 0;
    [[nodiscard]] virtual std::optional<Place> PlaceOf(WindowKind kind) const = 0;

    /** Does what the preferences say of the windows: at the start, and after each change. */
    virtual void FollowPreferences(const CCFPrefDictionary& /*preferences*/) {}
    /** The line of status in the browser window. */
    virtual void SetStatus(std::string_view text) = 0;
    /** No song of the list in the browser window is selected any more. */
    virtual void DeselectSongs() {}
    /** The library has, or has no more, changes that are not saved: the mark in the title bar. */
    virtual void SetDirtyMark(bool /*dirtyB*/) {}
    /** The list of tasks (CApp::Tasks) has changed: it is told again once the rows have been asked for. */
    virtual void TasksChanged() {}
    /** Something was told, or read (CApp::Notices). */
    virtual void NoticesChanged() {}
    /** A song plays: the display must not sleep. Told again and again; what holds already goes on. */
    virtual void KeepDisplayOn(bool neededB) = 0;

    /** The ports of the windows that exist: what songs are wired to. */
    [[nodiscard]] CGraphicsPorts& Ports() noexcept { return i_ports; }

private:
    CGraphicsPorts i_ports;
};
