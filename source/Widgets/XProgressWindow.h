#pragma once
#include <QWidget>

#include "Platform/CUserInterface.h"

class QLabel;
class QProgressBar;

/** The splash with its progress line: at start, at quit, and for long tasks. Stays on top, takes no focus, and steps aside
    while a dialog wants an answer.
    Threads  main. */
class XProgressWindow final : public QWidget, public CProgressView {
    Q_OBJECT
public:
    explicit XProgressWindow(std::string_view title);

    void SetText(std::string_view text) override;
    void SetSteps(std::size_t done, std::size_t total) override;
    void Redraw() override;

protected:
    void paintEvent(QPaintEvent* eventP) override;
    void closeEvent(QCloseEvent* eventP) override;   // a task is not ended by closing its window
    bool eventFilter(QObject* watchedP, QEvent* eventP) override;

private:
    QLabel* i_textP;   // children, owned by Qt
    QProgressBar* i_barP;
};
