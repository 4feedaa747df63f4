#include "Shell/CAppWindows_Qt.h"

#include <QActionGroup>
#include <QApplication>
#include <QDBusConnection>
#include <QMenu>
#include <QScreen>
#include <QWidget>

#include "App/CApp.h"
#include "App/CTaskList.h"
#include "Core/Localize.h"
#include "Shell/FrameShapeChoice.h"
#include "Shell/VideoWindowMenu.h"
#include "Shell/XActions.h"
#include "Shell/XBrowserWindow.h"
#include "Shell/XTasksWindow.h"
#include "Shell/XVideoWindow.h"
#include "Widgets/CSleepInhibitor.h"
#include "Widgets/CWindowPlace.h"
#include "Widgets/QtText.h"
#include "Widgets/XLook.h"

namespace {
constexpr int kTasks_Milliseconds = 100;   // the eye follows no faster
}

CAppWindows_Qt::CAppWindows_Qt(std::function<void()> askToQuit)
    : i_askToQuit(std::move(askToQuit)),
      i_inhibitorP(std::make_unique<CSleepInhibitor>(QDBusConnection::sessionBus(), QDBusConnection::systemBus())) {
    i_tasksLook.setSingleShot(true);
    i_tasksLook.setInterval(kTasks_Milliseconds);
    QObject::connect(&i_tasksLook, &QTimer::timeout, &i_tasksLook, [this] { ShowTasks(); });
    i_activate.setSingleShot(true);
    QObject::connect(&i_activate, &QTimer::timeout, &i_activate, [this] {
        if (!i_selectedP.isNull()) i_selectedP->activateWindow();
    });
}

CAppWindows_Qt::~CAppWindows_Qt() = default;

QWidget* CAppWindows_Qt::Find(WindowKind kind) const {
    const auto found = i_windows.find(kind);
    return found == i_windows.end() ? nullptr : found->second.get();
}

// The browser first: the others stand beside it, and have its commands.
const CAppWindows_Qt::DeskWindow CAppWindows_Qt::kWindows[] = {
    {{PREF_Wind_BROWSER, "Browser", {}, true},
     std::nullopt,
     [](CAppWindows_Qt& windows, WindowKind) { return windows.MakeBrowser(); }},
    {{PREF_Wind_VIDEO2, "Video 2", WindowRow::FullScreen{"Full Screen2", "Full Screen2 Display"}},
     Command::kShowVideo2,
     [](CAppWindows_Qt& windows, WindowKind kind) { return windows.MakeVideo(kind); }},
    {{PREF_Wind_VIDEO, "Video", WindowRow::FullScreen{"Full Screen", "Full Screen Display"}, true},
     Command::kShowVideo,
     [](CAppWindows_Qt& windows, WindowKind kind) { return windows.MakeVideo(kind); }},
    {{PREF_Wind_TASKS, "Tasks"},
     Command::kShowTasks,
     [](CAppWindows_Qt& windows, WindowKind) { return windows.MakeTasks(); }},
};

std::vector<WindowRow> CAppWindows_Qt::Rows() const {
    std::vector<WindowRow> rows;
    for (const DeskWindow& window : kWindows) rows.push_back(window.row);
    return rows;
}

void CAppWindows_Qt::Create(WindowKind kind) {
    if (Exists(kind) || gApp == nullptr) return;
    for (const DeskWindow& window : kWindows)
        if (window.row.kind == kind) i_windows[kind] = window.makeP(*this, kind);
}

namespace {

void NoteResizing(bool resizingB) {
    if (gApp != nullptr) gApp->SetResizingWindow(resizingB);
}

}   // namespace

void CAppWindows_Qt::AskGraphicsCard() {
    const std::int64_t choice = gApp->Prefs().GetLong("Video Drawing (0=automatic, 1=processor, 2=OpenGL)");
    i_card.Ask(static_cast<CGraphicsCard::Choice>(
        std::clamp<std::int64_t>(choice, CGraphicsCard::kChoice_AUTOMATIC, CGraphicsCard::kChoice_OPENGL)));
}

std::unique_ptr<QWidget> CAppWindows_Qt::MakeBrowser() {
    AskGraphicsCard();   // it answers while the window is made
    if (XLook* const lookP = XLook::Get(); lookP != nullptr)
        lookP->Choose(static_cast<XLook::Choice>(gApp->Prefs().GetLong("Look (0=desktop, 1=dark, 2=light)")));
    auto window =
        std::make_unique<XBrowserWindow>(BrowserSetup{.database = gApp->Database(),
                                                      .play = gApp->Play(),
                                                      .prefs = gApp->Prefs(),
                                                      .commands = gApp->LibraryCommands(),
                                                      .notices = gApp->Notices(),
                                                      .portsP = &Ports(),
                                                      .ifInterruptible = [](long modeL, std::function<void()> then) {
                                                          gApp->ConfirmManualSongChange(modeL, std::move(then));
                                                      }});
    QObject::connect(window.get(), &XBrowserWindow::CloseAsked, window.get(), [this] { i_askToQuit(); });
    QObject::connect(window.get(), &XBrowserWindow::Resizing, window.get(), &NoteResizing);
    window->ShowTasks(gApp->Tasks().Rows());
    (void)CWindowPlace::Of(*window);   // also at the first start, when no place is kept
    XActions& actions = window->Actions();
    actions.On(Command::kFullScreen, [this] { ToggleFullScreen(); });
    actions.On(Command::kLeaveFullScreen, [this] { LeaveFullScreen(); });
    actions.On(Command::kNextDisplay, [this] { NextDisplay(); });
    QObject::connect(&window->DisplayMenu(), &QMenu::aboutToShow, window.get(), [this] { FillDisplays(); });
    for (const DeskWindow& other : kWindows)
        if (other.toggle) actions.On(*other.toggle, [this, kind = other.row.kind] { ToggleVisible(kind); });
    return window;
}

std::unique_ptr<QWidget> CAppWindows_Qt::MakeTasks() {
    auto window = std::make_unique<XTasksWindow>(gApp->Tasks());
    window->Follow(gApp->Tasks().Rows());
    (void)CWindowPlace::Of(*window);
    QObject::connect(window.get(), &XTasksWindow::CloseAsked, window.get(), [this] { Hide(PREF_Wind_TASKS); });
    if (XBrowserWindow* const browserP = Browser(); browserP != nullptr) browserP->Actions().AttachEverywhere(*window);
    return window;
}

void CAppWindows_Qt::TasksChanged() {
    if (!i_tasksLook.isActive()) i_tasksLook.start();
}

void CAppWindows_Qt::NoticesChanged() {
    if (XBrowserWindow* const browserP = Browser(); browserP != nullptr) browserP->NoticesChanged();
}

void CAppWindows_Qt::ShowTasks() {
    if (gApp == nullptr) return;
    const std::vector<TaskRow> rows = gApp->Tasks().Rows();
    if (auto* const windowP = qobject_cast<XTasksWindow*>(Find(PREF_Wind_TASKS)); windowP != nullptr)
        windowP->Follow(rows);
    if (XBrowserWindow* const browserP = Browser(); browserP != nullptr) browserP->ShowTasks(rows);
}

std::unique_ptr<QWidget> CAppWindows_Qt::MakeVideo(WindowKind kind) {
    AskGraphicsCard();
    auto window = std::make_unique<XVideoWindow>(static_cast<int>(kind), Ports(), i_card.Draws());
    XVideoWindow* const windowP = window.get();
    windowP->setAttribute(
        Qt::WA_ShowWithoutActivating);   // it comes and goes with the songs; the keys stay where they are
    windowP->setAccessibleName(kind == PREF_Wind_VIDEO ? QObject::tr("Video") : QObject::tr("Second video"));
    windowP->setAccessibleDescription(QObject::tr("The picture of the song"));
    QObject::connect(windowP, &XVideoWindow::CloseAsked, windowP, [this, kind] {
        if (kind == PREF_Wind_VIDEO && !Exists(PREF_Wind_BROWSER))
            i_askToQuit();   // the only one there is
        else
            Close(kind);
    });
    QObject::connect(windowP, &XVideoWindow::MenuAsked, windowP,
                     [this, windowP](const QPoint& global) { ShowVideoWindowMenu(*windowP, *this, global); });
    QObject::connect(windowP, &XVideoWindow::Resizing, windowP, &NoteResizing);
    // On a display of its own the picture leaves the keys to the browser; in front of it they would be out of sight. Some
    // window managers give them to whatever fills a display.
    // One that went to full screen from the browser gives the keys back when it leaves.
    QObject::connect(&windowP->Place(), &CWindowPlace::FullScreenChanged, windowP,
                     [this, windowP, fromBrowserB = false](bool fullB) mutable {
                         const QWidget* const activeP = QApplication::activeWindow();
                         const bool browserB = Browser() != nullptr && activeP == Browser();
                         const bool backB = !fullB && fromBrowserB && activeP == windowP;
                         if (backB || (fullB && browserB && IsBesideBrowser(*windowP))) Select(PREF_Wind_BROWSER);
                         fromBrowserB = fullB && browserB;
                     });
    if (XBrowserWindow* const browserP = Browser(); browserP != nullptr) {
        browserP->Actions().AttachEverywhere(*windowP);
        browserP->Actions().Attach(CommandScope::kVideo, *windowP);
        if (kind == PREF_Wind_VIDEO) windowP->Place().SetNormalBeside(*browserP);
    }
    windowP->SetOpen(kind == PREF_Wind_VIDEO);
    return window;
}

XBrowserWindow* CAppWindows_Qt::Browser() const { return qobject_cast<XBrowserWindow*>(Find(PREF_Wind_BROWSER)); }

XVideoWindow* CAppWindows_Qt::FrontVideo() const {
    // From the browser the main one.
    auto* const windowP = qobject_cast<XVideoWindow*>(QApplication::activeWindow());
    return windowP != nullptr ? windowP : qobject_cast<XVideoWindow*>(Find(PREF_Wind_VIDEO));
}

void CAppWindows_Qt::FillDisplays() {
    QMenu& menu = Browser()->DisplayMenu();
    qDeleteAll(menu.findChildren<QMenu*>());   // of the last time
    qDeleteAll(menu.findChildren<QActionGroup*>());
    menu.clear();
    if (auto* const windowP = qobject_cast<XVideoWindow*>(Find(PREF_Wind_VIDEO)); windowP != nullptr)
        FillDisplayMenu(menu, *windowP);
    auto* const secondP = qobject_cast<XVideoWindow*>(Find(PREF_Wind_VIDEO2));
    if (secondP != nullptr && secondP->IsOpen())
        FillDisplayMenu(*menu.addMenu(QCoreApplication::translate("CAppWindows", "&Second Video Window")), *secondP);
}

void CAppWindows_Qt::NextDisplay() {
    XVideoWindow* const windowP = FrontVideo();
    if (windowP == nullptr) return;
    const QStringList names = CWindowPlace::DisplayNames();
    if (names.size() < 2) return SetStatus(Localize("There is one display alone."));
    CWindowPlace& place = windowP->Place();
    const QString now = place.KeptDisplay().isEmpty() ? windowP->screen()->name() : place.KeptDisplay();
    const QString next = names[(names.indexOf(now) + 1) % names.size()];   // the first one when that is away
    place.ChooseDisplay(next);
    SetStatus(Localize("The full screen is on %1.", {next.toStdString()}, "the name of a display"));
}

void CAppWindows_Qt::ToggleFullScreen() {
    XVideoWindow* const windowP = FrontVideo();
    if (windowP == nullptr) return;
    if (windowP->IsFullScreen()) return windowP->SetFullScreen(false);
    windowP->show();
    windowP->SetFullScreen(true);
    if (!IsBesideBrowser(*windowP)) {
        windowP->raise();
        windowP->activateWindow();
    }
}

bool CAppWindows_Qt::IsBesideBrowser(const QWidget& window) const {
    const QWidget* const browserP = Browser();
    return browserP != nullptr && browserP->isVisible() && browserP->screen() != window.screen();
}

void CAppWindows_Qt::LeaveFullScreen() {
    for (const WindowKind kind : {PREF_Wind_VIDEO, PREF_Wind_VIDEO2})
        if (auto* const windowP = qobject_cast<XVideoWindow*>(Find(kind)); windowP != nullptr)
            windowP->SetFullScreen(false);
}

void CAppWindows_Qt::ToggleVisible(WindowKind kind) {
    const QWidget* const windowP = Find(kind);
    if (windowP == nullptr) return;
    if (windowP->isVisible()) return Close(kind);
    Show(kind);
    if (kind != PREF_Wind_VIDEO2) return Select(kind);
    Find(kind)->raise();   // it is for the room: the keys stay where they are
}

void CAppWindows_Qt::Dispose(WindowKind kind) { i_windows.erase(kind); }

bool CAppWindows_Qt::Exists(WindowKind kind) const { return Find(kind) != nullptr; }

void CAppWindows_Qt::Show(WindowKind kind) {
    QWidget* const windowP = Find(kind);
    if (windowP == nullptr) return;
    if (auto* const videoP = qobject_cast<XVideoWindow*>(windowP); videoP != nullptr) {
        videoP->SetOpen(true);
        const QWidget* const firstP = Find(PREF_Wind_VIDEO);
        const QWidget* const browserP = Browser();
        if (kind == PREF_Wind_VIDEO2 && !videoP->Place().HasPlace() && firstP != nullptr && browserP != nullptr)
            videoP->Place().SetNormalNextTo(*firstP, *browserP);
    }
    windowP->setVisible(true);
}

void CAppWindows_Qt::Hide(WindowKind kind) {
    if (QWidget* const windowP = Find(kind); windowP != nullptr) windowP->setVisible(false);
}

void CAppWindows_Qt::Close(WindowKind kind) {
    Hide(kind);
    auto* const videoP = qobject_cast<XVideoWindow*>(Find(kind));
    if (videoP != nullptr && kind == PREF_Wind_VIDEO2) videoP->SetOpen(false);   // the first one is always there
}

bool CAppWindows_Qt::IsOpen(WindowKind kind) const {
    const QWidget* const windowP = Find(kind);
    if (windowP == nullptr) return false;
    const auto* const videoP = qobject_cast<const XVideoWindow*>(windowP);
    return kind == PREF_Wind_VIDEO2 && videoP != nullptr ? videoP->IsOpen() : windowP->isVisible();
}

void CAppWindows_Qt::Select(WindowKind kind) {
    QWidget* const windowP = Find(kind);
    if (windowP == nullptr || !windowP->isVisible()) return;
    windowP->raise();
    // Once a turn, for the last one: windows that are just coming get the keys in the order in which they came.
    i_selectedP = windowP;
    i_activate.start(0);
}

void CAppWindows_Qt::SetPlace(WindowKind kind, const Place& place) {
    QWidget* const windowP = Find(kind);
    if (windowP == nullptr) return;
    const QRect wanted(place.left, place.top, place.right - place.left, place.bottom - place.top);
    CWindowPlace& windowPlace = PlaceFor(*windowP);
    if (!wanted.isEmpty()) windowPlace.SetNormal(wanted);
    windowPlace.ChooseDisplay(QtText(place.display));
    if (place.fullScreenB) windowPlace.RestoreFullScreen();
}

CWindowPlace& CAppWindows_Qt::PlaceFor(QWidget& window) {
    auto* const videoP = qobject_cast<XVideoWindow*>(&window);
    return videoP != nullptr ? videoP->Place() : CWindowPlace::Of(window);
}

std::optional<CAppWindows::Place> CAppWindows_Qt::PlaceOf(WindowKind kind) const {
    QWidget* const windowP = Find(kind);
    // One that was never on the screen, and never told where to be, has no place that is worth keeping.
    if (windowP == nullptr || (windowP->windowHandle() == nullptr && !windowP->testAttribute(Qt::WA_Moved)))
        return std::nullopt;
    const CWindowPlace& windowPlace = PlaceFor(*windowP);
    const QRect frame = windowPlace.Normal();
    const auto edge = [](int pixels) { return static_cast<short>(std::clamp(pixels, -32768, 32767)); };
    return Place{edge(frame.top()),
                 edge(frame.left()),
                 edge(frame.top() + frame.height()),
                 edge(frame.left() + frame.width()),
                 IsOpen(kind),
                 windowPlace.WantsFullScreen(),
                 windowPlace.KeptDisplay().toStdString()};
}

void CAppWindows_Qt::FollowPreferences(const CCFPrefDictionary& preferences) {
    if (XBrowserWindow* const browserP = Browser(); browserP != nullptr) browserP->FollowPreferences();
    Ports().SetFrameShape(ReadFrameShape(preferences));
    const bool transparentB = preferences.GetBool("Transparent Video Window");
    const auto opacity = static_cast<float>(std::clamp(preferences.GetFloat("Video Window Opacity"), 0.1, 1.0));
    for (const WindowKind kind : {PREF_Wind_VIDEO, PREF_Wind_VIDEO2}) {
        auto* const windowP = qobject_cast<XVideoWindow*>(Find(kind));
        if (windowP == nullptr) continue;
        windowP->SetAlwaysOnTop(preferences.GetBool("Always on top"));
        CGraphicsPort& port = windowP->Port();
        if (port.IsTransparent() == transparentB && port.Opacity() == opacity) continue;
        port.SetTransparent(transparentB);
        port.SetOpacity(opacity);
        port.ForceUpdate();
    }
}

void CAppWindows_Qt::SetStatus(std::string_view text) {
    if (XBrowserWindow* const windowP = Browser(); windowP != nullptr) windowP->SetStatus(QtText(text));
}

void CAppWindows_Qt::DeselectSongs() {
    if (XBrowserWindow* const windowP = Browser(); windowP != nullptr) windowP->Deselect();
}

void CAppWindows_Qt::SetDirtyMark(bool dirtyB) {
    if (XBrowserWindow* const windowP = Browser(); windowP != nullptr) windowP->setWindowModified(dirtyB);
}

void CAppWindows_Qt::KeepDisplayOn(bool neededB) { i_inhibitorP->Want(neededB); }
