#include "Shell/CWindowPlace.h"

#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace {

/** Enough of a window to see that it is there, and to take hold of it. */
constexpr QSize kSeen_Least{64, 32};

bool IsSeen(const QRect& rect) {
    for (const QScreen* const screenP : QGuiApplication::screens()) {
        const QRect both = screenP->availableGeometry().intersected(rect);
        if (both.width() >= kSeen_Least.width() && both.height() >= kSeen_Least.height()) return true;
    }
    return false;
}

}   // namespace

CWindowPlace::CWindowPlace(QWidget& window, QObject* parentP) : QObject(parentP), i_window(window) {
    connect(qApp, &QGuiApplication::screenAdded, this, &CWindowPlace::OnScreenAdded);
    connect(qApp, &QGuiApplication::screenRemoved, this, &CWindowPlace::OnScreenRemoved);
    for (QScreen* const screenP : QGuiApplication::screens()) Watch(screenP);
}

CWindowPlace& CWindowPlace::Of(QWidget& window) {
    auto* const placeP = window.findChild<CWindowPlace*>({}, Qt::FindDirectChildrenOnly);
    return placeP != nullptr ? *placeP : *new CWindowPlace(window, &window);
}

QStringList CWindowPlace::DisplayNames() {
    QStringList names;
    for (const QScreen* const screenP : QGuiApplication::screens()) names += screenP->name();
    return names;
}

QScreen* CWindowPlace::FindScreen(const QString& name) {
    for (QScreen* const screenP : QGuiApplication::screens())
        if (screenP->name() == name) return screenP;
    return nullptr;
}

/** A display that changes its size takes the full screen with it, also where no window manager sees to it. */
void CWindowPlace::Watch(QScreen* screenP) {
    connect(screenP, &QScreen::geometryChanged, this, [this, screenP](const QRect& geometry) {
        if (i_fullB && i_fullOn == screenP->name())
            i_window.setGeometry(geometry);
        else if (!i_fullB)
            PlaceNormal();
    });
}

void CWindowPlace::SetNormal(const QRect& wanted) {
    i_wanted = wanted;
    i_placed = {};
    if (!i_fullB) PlaceNormal();
}

QRect CWindowPlace::Normal() const {
    if (i_fullB && !i_wanted.isNull()) return i_wanted;
    const QRect now = i_fullB ? i_window.normalGeometry() : i_window.geometry();
    return !i_placed.isNull() && now == i_placed ? i_wanted : now;
}

void CWindowPlace::PlaceNormal() {
    i_wanted = i_wanted.isNull() ? i_window.geometry() : i_wanted;
    if (i_wanted.isEmpty()) return;
    QRect place = i_wanted;
    i_placed = {};
    if (const QScreen* const screenP = QGuiApplication::primaryScreen(); !IsSeen(place) && screenP != nullptr) {
        const QRect area = screenP->availableGeometry();
        place.setSize(place.size().boundedTo(area.size()));
        place.moveCenter(area.center());
        i_placed = place;
    }
    i_window.setGeometry(place);
}

void CWindowPlace::EnterOn(QScreen& screen) {
    if (!i_fullB) i_wanted = Normal();
    i_fullB = true;
    i_awaitingB = false;
    i_fullOn = screen.name();
    if (QWindow* const handleP = i_window.windowHandle(); handleP != nullptr) handleP->setScreen(&screen);
    // Where windows cannot be moved the screen that was set decides; elsewhere the place does, also without a window
    // manager.
    i_window.setGeometry(screen.geometry());
    i_window.setWindowState(Qt::WindowFullScreen);
    emit FullScreenChanged(true);
}

void CWindowPlace::SetFullScreen(bool onB) {
    if (onB) {
        QScreen* const chosenP = FindScreen(i_display);
        QScreen* const screenP = chosenP != nullptr ? chosenP : i_window.screen();
        if (screenP != nullptr && !(i_fullB && i_fullOn == screenP->name())) EnterOn(*screenP);
        return;
    }
    i_awaitingB = false;
    if (!i_fullB) return;
    i_fullB = false;
    i_window.setWindowState(Qt::WindowNoState);
    PlaceNormal();
    emit FullScreenChanged(false);
}

void CWindowPlace::RestoreFullScreen() {
    if (QScreen* const screenP = FindScreen(i_display); screenP != nullptr || i_display.isEmpty()) {
        SetFullScreen(true);
        return;
    }
    i_fullOn = i_display;
    i_awaitingB = true;
}

void CWindowPlace::ChooseDisplay(const QString& name) {
    i_display = name;
    if (i_fullB && !name.isEmpty()) SetFullScreen(true);
}

void CWindowPlace::OnScreenRemoved(QScreen* screenP) {
    const QString name = screenP->name();
    const bool stoodThereB = !i_fullB && screenP->geometry().contains(i_window.geometry().center());
    if (stoodThereB) i_wanted = Normal();
    // Later: the toolkit moves the window off the display once it has told us.
    QTimer::singleShot(0, this, [this, name, stoodThereB] {
        if (i_fullB && i_fullOn == name && FindScreen(name) == nullptr) {
            SetFullScreen(false);
            i_awaitingB = true;
        } else if (stoodThereB && !i_fullB) {
            PlaceNormal();
        }
    });
}

void CWindowPlace::OnScreenAdded(QScreen* screenP) {
    Watch(screenP);
    const QString name = screenP->name();
    QTimer::singleShot(0, this, [this, name] {
        QScreen* const nowP = FindScreen(name);
        if (nowP == nullptr) return;
        if (i_awaitingB && i_fullOn == name) return EnterOn(*nowP);
        const bool awayB = !i_fullB && !i_placed.isNull() && i_window.geometry() == i_placed;
        if (awayB && IsSeen(i_wanted)) PlaceNormal();
    });
}
