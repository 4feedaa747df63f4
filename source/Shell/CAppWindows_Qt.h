#pragma once
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <QPointer>
#include <QTimer>

#include "App/CAppWindows.h"
#include "Shell/Commands.h"
#include "Widgets/CGraphicsCard.h"

class CSleepInhibitor;
class CWindowPlace;
class QWidget;
class XBrowserWindow;
class XTasksWindow;
class XVideoWindow;

/** The windows of the desktop. Closing the browser window, or the video window while there is no browser window, asks the
    application to quit.
    Threads  main. Owns its windows. */
class CAppWindows_Qt final : public CAppWindows {
public:
    /** `askToQuit` is called when the user closes the last window that can be worked with. */
    explicit CAppWindows_Qt(std::function<void()> askToQuit);
    ~CAppWindows_Qt() override;

    std::vector<WindowRow> Rows() const override;
    void Create(WindowKind kind) override;
    void Dispose(WindowKind kind) override;
    bool Exists(WindowKind kind) const override;
    void Show(WindowKind kind) override;
    void Hide(WindowKind kind) override;
    void Select(WindowKind kind) override;
    /** Hides it for good: playing does not show the second video window again until Show does. */
    void Close(WindowKind kind);
    /** Visible; for the second video window in use, though a pause may hide it. */
    [[nodiscard]] bool IsOpen(WindowKind kind) const;
    void SetPlace(WindowKind kind, const Place& place) override;
    std::optional<Place> PlaceOf(WindowKind kind) const override;
    void FollowPreferences(const CCFPrefDictionary& preferences) override;
    void SetStatus(std::string_view text) override;
    void DeselectSongs() override;
    void SetDirtyMark(bool dirtyB) override;
    void TasksChanged() override;
    void NoticesChanged() override;
    void KeepDisplayOn(bool neededB) override;

private:
    /** A window of the desktop: its row, the command that shows and hides it, how it is made. */
    struct DeskWindow {
        WindowRow row;
        std::optional<Command> toggle;
        std::unique_ptr<QWidget> (*makeP)(CAppWindows_Qt& windows, WindowKind kind);
    };
    static const DeskWindow kWindows[];

    [[nodiscard]] QWidget* Find(WindowKind kind) const;
    [[nodiscard]] XBrowserWindow* Browser() const;
    void AskGraphicsCard();
    [[nodiscard]] std::unique_ptr<QWidget> MakeBrowser();
    [[nodiscard]] std::unique_ptr<QWidget> MakeVideo(WindowKind kind);
    [[nodiscard]] std::unique_ptr<QWidget> MakeTasks();
    void ShowTasks();
    void ToggleFullScreen();
    void LeaveFullScreen();
    void FillDisplays();
    void NextDisplay();
    [[nodiscard]] XVideoWindow* FrontVideo() const;
    void ToggleVisible(WindowKind kind);
    /** It is on another display than the browser window. */
    [[nodiscard]] bool IsBesideBrowser(const QWidget& window) const;
    [[nodiscard]] static CWindowPlace& PlaceFor(QWidget& window);

    std::function<void()> i_askToQuit;
    const std::unique_ptr<CSleepInhibitor> i_inhibitorP;
    std::map<WindowKind, std::unique_ptr<QWidget>> i_windows;
    CGraphicsCard i_card;
    QPointer<QWidget> i_selectedP;   // gets the keys when i_activate fires
    QTimer i_activate;
    QTimer i_tasksLook;   // the list of tasks has changed, and is looked at when it fires
};
