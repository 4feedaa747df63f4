#include "Widgets/XStepper.h"

#include <QAction>
#include <QHBoxLayout>
#include <QLabel>
#include <QStyle>
#include <QToolButton>
#include <QVBoxLayout>

#include "Widgets/ActionButton.h"
#include "Widgets/XIcons.h"

namespace {

QToolButton* MakeStep(QAction& action, IconKind icon) {
    auto* const buttonP = new QToolButton;
    BindButton(*buttonP, action);
    buttonP->setIcon(Icon(icon));
    buttonP->setIconSize({18, 18});
    buttonP->setAutoRepeat(true);
    buttonP->setFixedSize(28, 28);
    return buttonP;
}

}   // namespace

XStepper::XStepper(const QString& caption, QAction& down, QAction& reset, QAction& up, int valueWidth)
    : i_valueP(new QToolButton), i_caption(caption) {
    auto* const captionP = new QLabel(caption);
    captionP->setObjectName("caption");
    captionP->setAlignment(Qt::AlignHCenter);
    i_valueP->setObjectName("value");
    i_valueP->setFixedSize(valueWidth, 28);
    BindButton(*i_valueP, reset);

    auto* const rowP = new QHBoxLayout;
    rowP->setSpacing(0);
    rowP->addWidget(MakeStep(down, IconKind::kMinus));
    rowP->addWidget(i_valueP);
    rowP->addWidget(MakeStep(up, IconKind::kPlus));
    auto* const columnP = new QVBoxLayout(this);
    columnP->setContentsMargins(0, 0, 0, 0);
    columnP->setSpacing(1);
    columnP->addWidget(captionP);
    columnP->addLayout(rowP);
    SetValue("0", false);
}

void XStepper::SetValue(const QString& text, bool changedB) {
    if (i_valueP->text() == text) return;
    i_valueP->setText(text);
    i_valueP->setAccessibleName(tr("%1: %2, back to the original").arg(i_caption, text));
    i_valueP->setProperty("changed", changedB);
    i_valueP->style()->polish(i_valueP);   // the style sheet looks at the property
}
