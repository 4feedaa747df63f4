#pragma once
#include <map>
#include <QTimer>
#include <QWidget>

#include "App/CTaskList.h"

class QLabel;
class QScrollArea;
class QVBoxLayout;

/** What works in the background: a line each, how far it is, and a button that ends it.
    Threads  main.
    Owner    CAppWindows_Qt; `tasks` outlives it. */
class XTasksWindow final : public QWidget {
    Q_OBJECT
public:
    explicit XTasksWindow(CTaskList& tasks);
    /** The list has changed: the lines follow within a moment. */
    void Follow(const std::vector<TaskRow>& rows);

signals:
    void CloseAsked();

protected:
    void closeEvent(QCloseEvent* eventP) override;
    void keyPressEvent(QKeyEvent* eventP) override;

private:
    class XTaskLine;

    CTaskList& i_tasks;
    std::map<TaskID, XTaskLine*> i_lines;   // children
    QVBoxLayout* i_columnP;
    QLabel* i_emptyP;
};

/** What a line says of itself: "Find missing", "12 of 300". */
[[nodiscard]] QString TaskTitle(const TaskRow& row);
/** Per mille; -1 when nobody knows. */
[[nodiscard]] int TaskShare(const TaskRow& row);
