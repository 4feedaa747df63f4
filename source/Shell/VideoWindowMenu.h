#pragma once
#include <QPoint>

class CAppWindows_Qt;
class CPreferences;
class QWidget;
class XVideoWindow;

/** The menu of a video window: full screen and its display, what the preferences say of it. What the display system
   cannot do is there, but off, and says why. Main thread; waits for the user's choice. */
void ShowVideoWindowMenu(XVideoWindow& window, CAppWindows_Qt& windows, const QPoint& global);
/** Asks for the picture or the movie that the video windows show between songs, and keeps it in the preferences. Main
    thread; waits for the user. */
void ChooseBreakPicture(QWidget& parent, CPreferences& prefs);
