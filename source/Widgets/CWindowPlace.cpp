#include "Widgets/CWindowPlace.h"

#include <algorithm>
#include <QGuiApplication>
#include <QScreen>
#include <QStringList>
#include <QTimer>
#include <QWidget>
#include <QWindow>

namespace {

/** Enough of a window to see that it is there, and to take hold of it. */
constexpr QSize kSeen_Least{64, 32};
/** Room for a picture that is worth looking at. */
constexpr QSize kRoom_Least{240, 172};
/** Beside another window whose frame is known; its own is taken for the same. */
constexpr int kBeside_Gap = 4;

bool IsSeen(const QRect& rect) {
    for (const QScreen* const screenP : QGuiApplication::screens()) {
        const QRect both = screenP->availableGeometry().intersected(rect);
        if (both.width() >= kSeen_Least.width() && both.height() >= kSeen_Least.height()) return true;
    }
    return false;
}

/** The display that has most of it; null when none has any. */
const QScreen* ScreenOf(const QRect& rect) {
    const QScreen* bestP = nullptr;
    qint64 mostL = 0;
    for (const QScreen* const screenP : QGuiApplication::screens()) {
        const QRect both = screenP->availableGeometry().intersected(rect);
        const qint64 areaL = both.isEmpty() ? 0 : qint64{both.width()} * both.height();
        if (areaL <= mostL) continue;
        mostL = areaL;
        bestP = screenP;
    }
    return bestP;
}

/** What the desktop draws around the content; nothing as long as that is not known. */
QMargins FrameOf(const QWidget& window) {
    const QWindow* const handleP = window.windowHandle();
    return handleP == nullptr ? QMargins() : handleP->frameMargins();
}

bool IsWhollySeen(const QRect& rect) {
    QRegion hidden(rect);
    for (const QScreen* const screenP : QGuiApplication::screens()) hidden -= screenP->availableGeometry();
    return hidden.isEmpty();
}

QRect MovedInto(QRect place, const QRect& area) {
    place.setSize(place.size().boundedTo(area.size()));
    place.moveLeft(std::clamp(place.left(), area.left(), area.right() + 1 - place.width()));
    place.moveTop(std::clamp(place.top(), area.top(), area.bottom() + 1 - place.height()));
    return place;
}

/** Where the content of a window stands that was at `wanted` when displays, panels and frame were others: there, when all
    of the window can be seen; else on the display that has most of it, as large as that lets it be. */
QRect Fitted(const QRect& wanted, const QMargins& frame) {
    if (IsWhollySeen(wanted.marginsAdded(frame))) return wanted;
    const bool seenB = IsSeen(wanted);
    const QScreen* const screenP = seenB ? ScreenOf(wanted) : QGuiApplication::primaryScreen();
    if (screenP == nullptr) return wanted;
    const QRect area = screenP->availableGeometry().marginsRemoved(frame);
    QRect place = wanted;
    if (!seenB) place.moveCenter(area.center());
    return MovedInto(place, area);
}

/** The largest of the four rooms that `taken` leaves in `area`. */
QRect RoomBeside(const QRect& taken, const QRect& area) {
    const QRect rooms[] = {QRect(area.topLeft(), QPoint(taken.left() - 1, area.bottom())),
                           QRect(QPoint(taken.right() + 1, area.top()), area.bottomRight()),
                           QRect(area.topLeft(), QPoint(area.right(), taken.top() - 1)),
                           QRect(QPoint(area.left(), taken.bottom() + 1), area.bottomRight())};
    const auto sizeOf = [](const QRect& room) { return room.isEmpty() ? 0 : qint64{room.width()} * room.height(); };
    return std::ranges::max(rooms, {}, sizeOf);
}

}   // namespace

CWindowPlace::CWindowPlace(QWidget& window, QObject* parentP) : QObject(parentP), i_window(window) {
    connect(qApp, &QGuiApplication::screenAdded, this, &CWindowPlace::OnScreenAdded);
    connect(qApp, &QGuiApplication::screenRemoved, this, &CWindowPlace::OnScreenRemoved);
    for (QScreen* const screenP : QGuiApplication::screens()) Watch(screenP);
    i_window.installEventFilter(this);
}

bool CWindowPlace::eventFilter(QObject* watchedP, QEvent* eventP) {
    // The desktop has put its frame around the window when it lets it paint for the first time.
    QWindow* const handleP = i_window.windowHandle();
    if (watchedP == &i_window && eventP->type() == QEvent::Show && !i_fittedB && handleP != nullptr)
        handleP->installEventFilter(this);
    else if (watchedP == handleP && handleP != nullptr && eventP->type() == QEvent::Expose && !i_fittedB &&
             handleP->isExposed()) {
        i_fittedB = true;
        handleP->removeEventFilter(this);
        QTimer::singleShot(0, this, &CWindowPlace::FitShown);
    }
    return QObject::eventFilter(watchedP, eventP);
}

void CWindowPlace::FitShown() {
    if (i_fullB || (i_window.windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen)) != 0) return;
    if (Fitted(i_window.geometry(), FrameOf(i_window)) == i_window.geometry()) return;
    if (i_placed.isNull()) i_wanted = i_window.geometry();   // the desktop chose the place, or kept to the one wanted
    PlaceNormal();
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

void CWindowPlace::SetNormalBeside(const QWidget& other) {
    const QList<QScreen*> screens = QGuiApplication::screens();
    const auto found =
        std::ranges::find_if(screens, [&other](const QScreen* screenP) { return screenP != other.screen(); });
    const bool aloneB = found == screens.end();
    const QRect room = (aloneB ? other.screen() : *found)->availableGeometry();
    QRect place(QPoint(), i_window.size().boundedTo(room.size()));
    if (aloneB)
        place.moveBottomRight(room.bottomRight());
    else
        place.moveCenter(room.center());
    SetNormal(place);
}

void CWindowPlace::SetNormalNextTo(const QWidget& first, const QWidget& browser) {
    for (const QScreen* const screenP : QGuiApplication::screens()) {
        if (screenP == first.screen() || screenP == browser.screen()) continue;
        QRect place(QPoint(), i_window.size().boundedTo(screenP->availableSize()));
        place.moveCenter(screenP->availableGeometry().center());
        return SetNormal(place);
    }
    const QMargins frame = FrameOf(first) + kBeside_Gap;
    QRect room = RoomBeside(first.frameGeometry(), first.screen()->availableGeometry()).marginsRemoved(frame);
    if (room.width() < kRoom_Least.width() || room.height() < kRoom_Least.height()) {
        // The first one has its display: this one stands small in the corner of the browser's.
        room = browser.screen()->availableGeometry().marginsRemoved(frame);
        room.setTopLeft(room.center());
    }
    QRect place(QPoint(), i_window.size());
    if (place.width() > room.width() || place.height() > room.height())
        place.setSize(place.size().scaled(room.size(), Qt::KeepAspectRatio));
    place.moveBottomRight(room.bottomRight());
    SetNormal(place);
}

QRect CWindowPlace::Normal() const {
    if (i_fullB && !i_wanted.isNull()) return i_wanted;
    const QRect now = i_fullB ? i_window.normalGeometry() : i_window.geometry();
    return !i_placed.isNull() && now == i_placed ? i_wanted : now;
}

void CWindowPlace::PlaceNormal() {
    i_wanted = i_wanted.isNull() ? i_window.geometry() : i_wanted;
    if (i_wanted.isEmpty()) return;
    const QRect place = Fitted(i_wanted, FrameOf(i_window));
    i_placed = place == i_wanted ? QRect() : place;
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
        if (awayB && Fitted(i_wanted, FrameOf(i_window)) != i_placed) PlaceNormal();
    });
}
