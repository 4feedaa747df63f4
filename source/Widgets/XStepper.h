#pragma once
#include <QWidget>

class QAction;
class QToolButton;

/** A value with a step down, a step up, and itself in between as the button that sets it back. The three are commands:
    they have keys and words of their own.
    Threads  main. */
class XStepper final : public QWidget {
    Q_OBJECT
public:
    XStepper(const QString& caption, QAction& down, QAction& reset, QAction& up, int valueWidth);
    /** `changedB`: it is not what the song was recorded with. */
    void SetValue(const QString& text, bool changedB);

private:
    QToolButton* i_valueP;   // a child
    QString i_caption;
};
