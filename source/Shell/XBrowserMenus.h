#pragma once
#include <QObject>

class CPlayControl;
class QMainWindow;
class QMenu;
class XActions;

/** The main window's menu bar: which command stands in which menu. The deed of a command is registered by its owner.
    Threads  main. A child of the window; actions and play control outlive it. */
class XBrowserMenus final : public QObject {
    Q_OBJECT
public:
    XBrowserMenus(QMainWindow& window, XActions& actions, const CPlayControl& play);

    /** The displays of the full screen; filled by who has the video windows, when it opens. */
    [[nodiscard]] QMenu& Displays() const { return *i_displaysP; }

private:
    /** Both shifts of the picture, each under the words that say how far it is. */
    void FillSlips(QMenu& menu);

    XActions& i_actions;
    const CPlayControl& i_play;
    QMenu* i_displaysP = nullptr;
};
