#include "Shell/XVideoWindow.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>

#include "Graphics/CGraphicsPorts.h"

XVideoWindow::XVideoWindow(int screen, CGraphicsPorts& ports) : i_ports(ports), i_port(screen, *this, this) {
    setWindowTitle(screen == CGraphicsPort::kScreen_VIDEO ? "Vopla Video" : "Vopla Video 2");
    setAttribute(Qt::WA_OpaquePaintEvent);   // every pixel is painted: no flicker of the background
    setMinimumSize(150, 108);
    resize(900, 648);
    i_resizeEnd.setSingleShot(true);
    i_resizeEnd.setInterval(200);   // the toolkit tells no end: none for so long is one
    connect(&i_resizeEnd, &QTimer::timeout, this, [this] { emit Resizing(false); });
    i_ports.Enter(i_port);
}

XVideoWindow::~XVideoWindow() { i_ports.Leave(i_port); }

Rect XVideoWindow::Bounds() const { return MakeRect(0, 0, width(), height()); }

void XVideoWindow::Invalidate(const Rect& rect) { update(rect.left, rect.top, rect.Width(), rect.Height()); }

void XVideoWindow::PaintNow() {
    if (isVisible()) repaint();
}

void XVideoWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    i_context = std::make_unique<CPortContext_Qt>(painter);
    i_port.Redraw();
    i_context.reset();
}

void XVideoWindow::SetFullScreen(bool onB) {
    if (onB != isFullScreen()) setWindowState(windowState() ^ Qt::WindowFullScreen);
}

void XVideoWindow::SetAlwaysOnTop(bool onB) {
    if (onB == windowFlags().testFlag(Qt::WindowStaysOnTopHint)) return;
    const bool visibleB = isVisible();
    setWindowFlag(Qt::WindowStaysOnTopHint, onB);   // hides the window
    if (visibleB) show();
}

void XVideoWindow::ShowAndSelect() {
    show();
    raise();
    activateWindow();
}

void XVideoWindow::Hide() { hide(); }

OSErr XVideoWindow::SetOpacity(float opacity) {
    setWindowOpacity(static_cast<qreal>(opacity));
    return noErr;
}

OSErr XVideoWindow::SetTransparent(bool transparentB) {
    setAttribute(Qt::WA_TranslucentBackground, transparentB);
    return noErr;
}

void XVideoWindow::closeEvent(QCloseEvent* eventP) {
    emit CloseAsked();
    eventP->ignore();   // the quit sequence decides
}

void XVideoWindow::keyPressEvent(QKeyEvent* eventP) {
    const bool toggleB = eventP->key() == Qt::Key_F || eventP->key() == Qt::Key_F11;
    if (toggleB || (eventP->key() == Qt::Key_Escape && isFullScreen()))
        SetFullScreen(!isFullScreen());
    else
        QWidget::keyPressEvent(eventP);
}

void XVideoWindow::resizeEvent(QResizeEvent*) {
    if (!i_resizeEnd.isActive()) emit Resizing(true);
    i_resizeEnd.start();
}

void XVideoWindow::mouseDoubleClickEvent(QMouseEvent*) { SetFullScreen(!isFullScreen()); }
