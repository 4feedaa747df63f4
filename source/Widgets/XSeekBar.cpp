#include "Widgets/XSeekBar.h"

#include <algorithm>
#include <QMouseEvent>
#include <QPainter>

#include "Widgets/XLook.h"

namespace {

constexpr int kHandle_Radius = 8;
constexpr long kStep_300ths = 1500, kPage_300ths = 9000;

}   // namespace

XSeekBar::XSeekBar() : QSlider(Qt::Horizontal) {
    setRange(0, 0);
    setSingleStep(kStep_300ths);
    setPageStep(kPage_300ths);
    setMinimumHeight(24);
    setFocusPolicy(Qt::StrongFocus);
    setAccessibleName(tr("Position"));
    setAccessibleDescription(tr("Where in the song it plays"));
    setEnabled(false);
    // From the keyboard and from assistive programs.
    connect(this, &QSlider::actionTriggered, this, [this] { emit SeekAsked(sliderPosition()); });
}

long XSeekBar::TimeAt(int x, int width, long end300) {
    const int groove = width - 2 * kHandle_Radius;
    if (groove <= 0 || end300 <= 0) return 0;
    const long long at = std::clamp(x - kHandle_Radius, 0, groove);
    return static_cast<long>((at * end300 + groove / 2) / groove);
}

int XSeekBar::XOf(long time300, int width, long end300) {
    const int groove = std::max(0, width - 2 * kHandle_Radius);
    if (end300 <= 0) return kHandle_Radius;
    const long long at = std::clamp(time300, 0L, end300);
    return kHandle_Radius + static_cast<int>((at * groove + end300 / 2) / end300);
}

void XSeekBar::SetTime300(long time300, long end300) {
    if (i_draggingB) return;
    const int end = static_cast<int>(std::clamp(end300, 0L, 0x7FFFFFFFL));
    setEnabled(end > 0);
    if (maximum() != end) setMaximum(end);
    setValue(static_cast<int>(std::clamp(time300, 0L, static_cast<long>(end))));
}

void XSeekBar::DragTo(int x) {
    setValue(static_cast<int>(TimeAt(x, width(), maximum())));
    emit Dragged(value());
}

void XSeekBar::mousePressEvent(QMouseEvent* eventP) {
    if (eventP->button() != Qt::LeftButton || maximum() == 0) return eventP->ignore();
    i_draggingB = true;
    DragTo(static_cast<int>(eventP->position().x()));
}

void XSeekBar::mouseMoveEvent(QMouseEvent* eventP) {
    if (i_draggingB) DragTo(static_cast<int>(eventP->position().x()));
}

void XSeekBar::mouseReleaseEvent(QMouseEvent* eventP) {
    if (eventP->button() != Qt::LeftButton || !std::exchange(i_draggingB, false)) return;
    emit SeekAsked(value());
}

void XSeekBar::wheelEvent(QWheelEvent* eventP) { eventP->ignore(); }   // a song is not lost to a touch of the wheel

void XSeekBar::paintEvent(QPaintEvent*) {
    const XLook::Colors& colors = XLook::Now();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    const int x = XOf(value(), width(), maximum());
    const QRectF groove(kHandle_Radius, height() / 2.0 - 3, width() - 2 * kHandle_Radius, 6);
    painter.setBrush(colors.line);
    painter.drawRoundedRect(groove, 3, 3);
    if (!isEnabled()) return;
    painter.setBrush(colors.accent);
    painter.drawRoundedRect(QRectF(groove.left(), groove.top(), x - groove.left(), groove.height()), 3, 3);
    painter.setBrush(colors.text);
    painter.drawEllipse(QPointF(x, height() / 2.0), kHandle_Radius - 1, kHandle_Radius - 1);
    if (hasFocus()) {
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(colors.accent, 2));
        painter.drawEllipse(QPointF(x, height() / 2.0), kHandle_Radius + 1.5, kHandle_Radius + 1.5);
    }
}
