#include "Shell/XPreviewPane.h"

#include <QPainter>

#include "Graphics/CGraphicsPorts.h"

XPreviewPane::XPreviewPane(CGraphicsPorts& ports, QWidget* parentP) : QWidget(parentP), i_ports(ports), i_port(*this) {
    setAttribute(Qt::WA_OpaquePaintEvent);
    setMinimumSize(100, 72);
    setAccessibleName(tr("Preview"));
    setAccessibleDescription(tr("What the video window shows"));
    i_ports.Enter(i_port);
}

XPreviewPane::~XPreviewPane() { i_ports.Leave(i_port); }

Rect XPreviewPane::Bounds() const { return MakeRect(0, 0, width(), height()); }

void XPreviewPane::Invalidate(const Rect& rect) { update(rect.left, rect.top, rect.Width(), rect.Height()); }

void XPreviewPane::PaintNow() {
    if (isVisible()) repaint();
}

void XPreviewPane::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    i_context = std::make_unique<CPortContext_Qt>(painter);
    i_port.Redraw();
    i_context.reset();
}
