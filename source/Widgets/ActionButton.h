#pragma once
class QAction;
class QToolButton;

/** `button` gives the command and follows its tool tip and whether it can be given; picture and words stay its own,
    which those of QToolButton::setDefaultAction do not. Named for screen readers. */
void BindButton(QToolButton& button, QAction& action);
