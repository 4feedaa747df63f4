#pragma once
#include <functional>
#include <QPoint>

class CAppWindows_Qt;
class CPreferences;
class QMenu;
class QWidget;
class XVideoWindow;

/** The menu of a video window: full screen and its display, what the preferences say of it. An entry that the display
    system cannot do is there, but off, and says why. Main thread; waits for the user's choice. */
void ShowVideoWindowMenu(XVideoWindow& window, CAppWindows_Qt& windows, const QPoint& global);
/** The displays for the full screen of `window`, by their names; the one that was chosen is marked. Main thread. */
void FillDisplayMenu(QMenu& menu, XVideoWindow& window);
/** Asks, beside the show, for the picture or the movie that the video windows show between songs, keeps it in the
    preferences, and calls `chosen`. Main thread; `parent` owns the dialog. */
void ChooseBreakPicture(QWidget& parent, CPreferences& prefs, std::function<void()> chosen = {});
