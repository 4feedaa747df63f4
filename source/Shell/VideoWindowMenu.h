#pragma once
#include <QPoint>

class CAppWindows_Qt;
class XVideoWindow;

/** The menu of a video window: full screen and its display, what the preferences say of it. What the display system
   cannot do is there, but off, and says why. Main thread; waits for the user's choice. */
void ShowVideoWindowMenu(XVideoWindow& window, CAppWindows_Qt& windows, const QPoint& global);
