#include "Shell/CAppWindows_Qt.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>

#include "Core/CApp.h"
#include "Shell/QtText.h"
#include "Shell/XVideoWindow.h"

CAppWindows_Qt::CAppWindows_Qt(std::function<void()> askToQuit) : i_askToQuit(std::move(askToQuit)) {}

CAppWindows_Qt::~CAppWindows_Qt() = default;

QWidget* CAppWindows_Qt::Find(WindowKind kind) const {
    const auto found = i_windows.find(kind);
    return found == i_windows.end() ? nullptr : found->second.get();
}

void CAppWindows_Qt::Create(WindowKind kind) {
    // The browser and the tasks have no content yet: an empty window would only be in the way.
    if ((kind != PREF_Wind_VIDEO && kind != PREF_Wind_VIDEO2) || Exists(kind)) return;
    auto window = std::make_unique<XVideoWindow>(static_cast<int>(kind), Ports());
    if (kind == PREF_Wind_VIDEO)
        QObject::connect(window.get(), &XVideoWindow::CloseAsked, window.get(), [this] { i_askToQuit(); });
    else
        QObject::connect(window.get(), &XVideoWindow::CloseAsked, window.get(), &QWidget::hide);
    QObject::connect(window.get(), &XVideoWindow::Resizing, window.get(), [](bool resizingB) {
        if (gApp != nullptr) gApp->SetResizingWindow(resizingB);
    });
    i_windows[kind] = std::move(window);
}

void CAppWindows_Qt::Dispose(WindowKind kind) { i_windows.erase(kind); }

bool CAppWindows_Qt::Exists(WindowKind kind) const { return Find(kind) != nullptr; }

void CAppWindows_Qt::Show(WindowKind kind) {
    if (QWidget* const windowP = Find(kind); windowP != nullptr) windowP->setVisible(true);
}

void CAppWindows_Qt::Hide(WindowKind kind) {
    if (QWidget* const windowP = Find(kind); windowP != nullptr) windowP->setVisible(false);
}

void CAppWindows_Qt::Select(WindowKind kind) {
    QWidget* const windowP = Find(kind);
    if (windowP == nullptr || !windowP->isVisible()) return;
    windowP->raise();
    windowP->activateWindow();
}

void CAppWindows_Qt::SetPlace(WindowKind kind, const Place& place) {
    QWidget* const windowP = Find(kind);
    if (windowP == nullptr) return;
    const QRect wanted(place.left, place.top, place.right - place.left, place.bottom - place.top);
    // A display that was unplugged meanwhile must not swallow its window.
    for (const QScreen* const screenP : QGuiApplication::screens())
        if (!wanted.isEmpty() && screenP->availableGeometry().intersects(wanted)) windowP->setGeometry(wanted);
    windowP->setWindowState(place.fullScreenB ? Qt::WindowFullScreen : Qt::WindowNoState);
}

std::optional<CAppWindows::Place> CAppWindows_Qt::PlaceOf(WindowKind kind) const {
    const QWidget* const windowP = Find(kind);
    if (windowP == nullptr) return std::nullopt;
    const QRect frame = windowP->isFullScreen() ? windowP->normalGeometry() : windowP->geometry();
    const auto edge = [](int pixels) { return static_cast<short>(std::clamp(pixels, -32768, 32767)); };
    return Place{edge(frame.top()),    edge(frame.left()),   edge(frame.top() + frame.height()),
                 edge(frame.left() + frame.width()), windowP->isVisible(), windowP->isFullScreen()};
}

void CAppWindows_Qt::SetStatus(std::string_view text) {
    if (QWidget* const windowP = Find(PREF_Wind_VIDEO); windowP != nullptr)
        windowP->setWindowTitle(text.empty() ? "Vopla Video" : "Vopla Video - " + QtText(text));
}

void CAppWindows_Qt::KeepDisplayOn() {
    // Every desktop's screen saver listens to this name; one that does not is no error.
    auto message = QDBusMessage::createMethodCall("org.freedesktop.ScreenSaver", "/org/freedesktop/ScreenSaver",
                                                  "org.freedesktop.ScreenSaver", "SimulateUserActivity");
    if (QDBusConnection::sessionBus().isConnected()) QDBusConnection::sessionBus().call(message, QDBus::NoBlock);
}
