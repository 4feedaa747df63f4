#include "Widgets/XElidedLabel.h"

#include <QPainter>

#include "Widgets/QtText.h"

XElidedLabel::XElidedLabel(const QString& name) : XValueLabel(name) {
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
}

void XElidedLabel::SetText(const QString& text) {
    SetValue(text);
    setToolTip(PlainToolTip(text));
}

void XElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(contentsRect(), static_cast<int>(alignment()),
                     fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()));
}
