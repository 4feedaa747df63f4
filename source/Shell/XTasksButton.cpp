#include "Shell/XTasksButton.h"

#include "Shell/XTasksWindow.h"
#include "Widgets/ActionButton.h"

namespace {
constexpr int kLate_Milliseconds = 500;
}   // namespace

XTasksButton::XTasksButton(QAction& showTasks) {
    setObjectName("tasks");
    BindButton(*this, showTasks);
    hide();
    i_late.setSingleShot(true);
    i_late.setInterval(kLate_Milliseconds);
    connect(&i_late, &QTimer::timeout, this, &QWidget::show);
}

void XTasksButton::Follow(const std::vector<TaskRow>& rows) {
    if (rows.empty()) {
        i_late.stop();
        return hide();
    }
    const TaskRow& first = rows.front();
    QString text = TaskTitle(first);
    if (const int share = TaskShare(first); share >= 0) text += QString(" %1 %").arg(share / 10);
    if (rows.size() > 1) text += tr(", %1 more").arg(rows.size() - 1);
    setText(text);
    setAccessibleName(tr("Tasks: %1").arg(text));
    if (!isVisible() && !i_late.isActive()) i_late.start();
}
