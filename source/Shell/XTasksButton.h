#pragma once
#include <QTimer>
#include <QToolButton>
#include <vector>

#include "App/CTaskList.h"

class QAction;

/** In the status line: what works in the background, while there is anything; a click opens the tasks window.
    A task that is soon over is not worth a button, so it comes half a second late.
    Threads  main. */
class XTasksButton final : public QToolButton {
    Q_OBJECT
public:
    explicit XTasksButton(QAction& showTasks);
    void Follow(const std::vector<TaskRow>& rows);

private:
    QTimer i_late;
};
