#pragma once
#include <QObject>
#include <QRect>
#include <QString>

class QScreen;
class QWidget;

/** Where a window stands, over displays that come and go: its place as a window, and the display of its full screen.
    A window whose display is not there stands where it can be seen; it goes back when the display comes, unless the
    user has moved it meanwhile. With its frame it fits what the desktop's panels leave: the frame is known once the
    window is shown, and looked at then.
    Threads  main.
    Owner    the window, as a member or a child. */
class CWindowPlace final : public QObject {
    Q_OBJECT
public:
    explicit CWindowPlace(QWidget& window, QObject* parentP = nullptr);
    /** The one that is a child of `window`, made when there is none. */
    [[nodiscard]] static CWindowPlace& Of(QWidget& window);

    /** Moves the window to `wanted`, the area of its content, or near the middle of a display when nobody could see it
        there. */
    void SetNormal(const QRect& wanted);
    /** For a window that has no place yet: in the middle of the first display but that of `other`; in the lower right
        corner of the only one, where it looks out from behind `other`. */
    void SetNormalBeside(const QWidget& other);
    /** For one of several windows for the room, which has no place yet: on a display that has neither `first` nor
        `browser`, else in the largest room that `first` leaves beside it, else in the corner of the browser's display. */
    void SetNormalNextTo(const QWidget& first, const QWidget& browser);
    /** It was told where to stand. */
    [[nodiscard]] bool HasPlace() const { return !i_wanted.isNull(); }
    /** The place to remember: the one that is wanted, also while it cannot be had or the window is in full screen. */
    [[nodiscard]] QRect Normal() const;

    [[nodiscard]] bool IsFullScreen() const { return i_fullB; }
    /** On the display that was chosen; on the window's own when that is not there. */
    void SetFullScreen(bool onB);
    /** In full screen, or it will be when its display is back. */
    [[nodiscard]] bool WantsFullScreen() const { return i_fullB || i_awaitingB; }
    /** In full screen on `display` when it is there, else as a window until it comes. */
    void RestoreFullScreen();

    /** The display of the full screen, by the name that the system gives it; empty for the window's own. */
    void ChooseDisplay(const QString& name);
    [[nodiscard]] const QString& Display() const { return i_display; }
    /** The one to remember: that of a full screen counts as chosen. */
    [[nodiscard]] const QString& KeptDisplay() const { return WantsFullScreen() ? i_fullOn : i_display; }
    /** The displays that are there. */
    [[nodiscard]] static QStringList DisplayNames();

signals:
    void FullScreenChanged(bool fullB);

protected:
    bool eventFilter(QObject* watchedP, QEvent* eventP) override;

private:
    void FitShown();
    void OnScreenAdded(QScreen* screenP);
    void OnScreenRemoved(QScreen* screenP);
    void Watch(QScreen* screenP);
    void PlaceNormal();
    void EnterOn(QScreen& screen);
    [[nodiscard]] static QScreen* FindScreen(const QString& name);

    QWidget& i_window;
    QRect i_wanted;      // as a window; null before the first SetNormal
    QRect i_placed;      // where PlaceNormal put it instead
    QString i_display;   // chosen by the operator
    QString i_fullOn;    // the display of the full screen that is, or that is awaited
    bool i_fullB = false;
    bool i_fittedB = false;     // with its frame
    bool i_awaitingB = false;   // goes to full screen when i_fullOn is back
};
