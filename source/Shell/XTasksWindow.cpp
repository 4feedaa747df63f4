#include "Shell/XTasksWindow.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QVBoxLayout>

#include "Widgets/QtText.h"
#include "Widgets/XElidedLabel.h"

namespace {
constexpr int kShare_Whole = 1000;
}

QString TaskTitle(const TaskRow& row) {
    QString title = QtText(row.name);
    if (!title.isEmpty()) title[0] = title[0].toUpper();
    return title;
}

int TaskShare(const TaskRow& row) {
    return row.totalL <= 0
               ? -1
               : static_cast<int>(static_cast<double>(row.doneL) / static_cast<double>(row.totalL) * kShare_Whole);
}

/** One task. */
class XTasksWindow::XTaskLine final : public QWidget {
public:
    explicit XTaskLine(const std::function<void()>& cancel)
        : i_titleP(new QLabel), i_textP(new XElidedLabel), i_barP(new QProgressBar), i_cancelP(new QPushButton) {
        i_titleP->setTextFormat(Qt::PlainText);
        i_textP->setObjectName("quiet");
        i_barP->setTextVisible(false);
        i_barP->setFixedHeight(6);
        i_barP->setAccessibleName(tr("Progress"));
        i_cancelP->setText(tr("Cancel"));
        i_cancelP->setAutoDefault(false);
        QObject::connect(i_cancelP, &QPushButton::clicked, this, cancel);
        auto* const wordsP = new QVBoxLayout;
        wordsP->setSpacing(4);
        wordsP->addWidget(i_titleP);
        wordsP->addWidget(i_barP);
        wordsP->addWidget(i_textP);
        auto* const rowP = new QHBoxLayout(this);
        rowP->setContentsMargins(0, 0, 0, 0);
        rowP->setSpacing(16);
        rowP->addLayout(wordsP, 1);
        rowP->addWidget(i_cancelP, 0, Qt::AlignVCenter);
    }

    void Show(const TaskRow& row) {
        const QString title = TaskTitle(row);
        i_titleP->setText(title);
        const QString steps = row.totalL > 0 ? tr("%1 of %2")
                                                   .arg(QLocale().toString(static_cast<qlonglong>(row.doneL)),
                                                        QLocale().toString(static_cast<qlonglong>(row.totalL)))
                                             : QString();
        i_textP->SetText(row.cancelledB ? tr("Ending…") : row.text.empty() ? steps : QtText(row.text));
        const int share = TaskShare(row);
        i_barP->setRange(0, share < 0 ? 0 : kShare_Whole);
        i_barP->setValue(std::max(0, share));
        i_barP->setAccessibleDescription(title);
        i_cancelP->setEnabled(!row.cancelledB);
        i_cancelP->setAccessibleName(tr("Cancel %1").arg(title));
        i_cancelP->setAccessibleDescription(tr("Ends the task as soon as it can; files stay whole"));
    }

private:
    QLabel* i_titleP;   // children
    XElidedLabel* i_textP;
    QProgressBar* i_barP;
    QPushButton* i_cancelP;
};

XTasksWindow::XTasksWindow(CTaskList& tasks) : i_tasks(tasks), i_columnP(new QVBoxLayout), i_emptyP(new QLabel) {
    setObjectName("tasks");
    setWindowTitle(tr("Vopla Tasks"));
    setAccessibleName(windowTitle());
    setAccessibleDescription(tr("What works in the background"));
    resize(460, 260);
    setMinimumSize(320, 140);
    i_emptyP->setObjectName("quiet");
    i_emptyP->setAlignment(Qt::AlignCenter);
    i_emptyP->setText(tr("Nothing runs in the background."));
    auto* const sheetP = new QWidget;
    i_columnP->setContentsMargins(20, 16, 20, 16);
    i_columnP->setSpacing(14);
    i_columnP->addWidget(i_emptyP, 1);
    i_columnP->addStretch();
    sheetP->setLayout(i_columnP);
    auto* const areaP = new QScrollArea;
    areaP->setFrameShape(QFrame::NoFrame);
    areaP->setWidgetResizable(true);
    areaP->setWidget(sheetP);
    areaP->setAccessibleName(tr("Tasks"));
    areaP->setAccessibleDescription(tr("A line for each task"));
    auto* const columnP = new QVBoxLayout(this);
    columnP->setContentsMargins(0, 0, 0, 0);
    columnP->addWidget(areaP);
}

void XTasksWindow::Follow(const std::vector<TaskRow>& rows) {
    std::map<TaskID, XTaskLine*> left = i_lines;
    for (const TaskRow& row : rows) {
        XTaskLine*& lineP = i_lines[row.id];
        if (lineP == nullptr) {
            lineP = new XTaskLine([this, id = row.id] {
                i_tasks.Cancel(id);
                Follow(i_tasks.Rows());
            });
            i_columnP->insertWidget(i_columnP->count() - 1, lineP);
        }
        lineP->Show(row);
        left.erase(row.id);
    }
    for (const auto& [id, lineP] : left) {
        i_lines.erase(id);
        lineP->hide();
        lineP->deleteLater();   // its button may be what called us
    }
    i_emptyP->setVisible(rows.empty());
}

void XTasksWindow::closeEvent(QCloseEvent* eventP) {
    emit CloseAsked();
    eventP->ignore();   // who listens decides
}

void XTasksWindow::keyPressEvent(QKeyEvent* eventP) {
    if (eventP->key() == Qt::Key_Escape) return emit CloseAsked();
    QWidget::keyPressEvent(eventP);
}
