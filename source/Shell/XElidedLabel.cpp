#include "Shell/XElidedLabel.h"

#include <QPainter>

#include "Shell/QtText.h"

XElidedLabel::XElidedLabel() {
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
}

void XElidedLabel::SetText(const QString& text) {
    setText(text);
    setToolTip(PlainToolTip(text));
}

void XElidedLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setPen(palette().color(QPalette::WindowText));
    painter.drawText(contentsRect(), static_cast<int>(alignment()),
                     fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width()));
}
