#include "Shell/XVideoWindow.h"

#include <QCloseEvent>
#include <QContextMenuEvent>
#include <QPainter>
#include <QWindow>

#include "Core/CLog.h"
#include "Graphics/CGraphicsPorts.h"
#include "Widgets/DisplayAbilities.h"
#include "Widgets/XCardSurface.h"

namespace {
constexpr int kResizeEnd_Milliseconds = 200;   // the toolkit tells no end: none for so long is one
constexpr int kPointerRest_Milliseconds = 2000;
}   // namespace

XVideoWindow::XVideoWindow(int screen, CGraphicsPorts& ports, bool cardB)
    : i_place(*this),
      i_ports(ports),
      i_port(screen, *this, this, screen == CGraphicsPort::kScreen_VIDEO ? "Video" : "Video 2") {
    setWindowTitle(screen == CGraphicsPort::kScreen_VIDEO ? tr("Vopla Video") : tr("Vopla Video 2"));
    setAccessibleName(windowTitle());
    setAttribute(Qt::WA_OpaquePaintEvent);   // every pixel is painted: no flicker of the background
    setMouseTracking(true);
    setMinimumSize(150, 108);
    resize(900, 648);
    for (QTimer* const timerP : {&i_resizeEnd, &i_pointerRest}) timerP->setSingleShot(true);
    i_resizeEnd.setInterval(kResizeEnd_Milliseconds);
    i_pointerRest.setInterval(kPointerRest_Milliseconds);
    connect(&i_resizeEnd, &QTimer::timeout, this, [this] { emit Resizing(false); });
    connect(&i_pointerRest, &QTimer::timeout, this, [this] {
        if (IsFullScreen()) setCursor(Qt::BlankCursor);
    });
    connect(&i_place, &CWindowPlace::FullScreenChanged, this, &XVideoWindow::ShowPointer);
    if (cardB) i_cardP = new XCardSurface([this](QPainter& painter) { DrawPort(painter); }, this);
}

XVideoWindow::~XVideoWindow() { SetOpen(false); }

void XVideoWindow::SetOpen(bool openB) {
    if (std::exchange(i_openB, openB) == openB) return;
    openB ? i_ports.Enter(i_port) : i_ports.Leave(i_port);
}

Rect XVideoWindow::Bounds() const { return MakeRect(0, 0, width(), height()); }

void XVideoWindow::Invalidate(const Rect& rect) {
    if (i_cardP != nullptr)
        i_cardP->update();   // it draws all of it, always
    else
        update(rect.left, rect.top, rect.Width(), rect.Height());
}

void XVideoWindow::PaintNow() {
    if (isVisible()) i_cardP != nullptr ? i_cardP->repaint() : repaint();
}

void XVideoWindow::paintEvent(QPaintEvent*) {
    if (i_cardP != nullptr) return;   // it covers the window
    QPainter painter(this);
    DrawPort(painter);
}

void XVideoWindow::DrawPort(QPainter& painter) {
    i_context = std::make_unique<CPortContext_Qt>(painter);
    i_port.Redraw();
    i_context.reset();
}

void XVideoWindow::SetAlwaysOnTop(bool onB) {
    if (onB == windowFlags().testFlag(Qt::WindowStaysOnTopHint)) return;
    // By the handle: setWindowFlags would hide the window, in front of the room.
    if (QWindow* const handleP = windowHandle(); handleP != nullptr) handleP->setFlag(Qt::WindowStaysOnTopHint, onB);
    overrideWindowFlags(windowFlags().setFlag(Qt::WindowStaysOnTopHint, onB));
}

void XVideoWindow::ShowAndSelect() {
    show();
    raise();
    if (i_port.Screen() == CGraphicsPort::kScreen_VIDEO) activateWindow();   // the second one never takes the keys
}

OSErr XVideoWindow::SetOpacity(float opacity) {
    if (static_cast<float>(windowOpacity()) == opacity) return noErr;
    if (!AbilitiesOfDisplay().opacityB) {
        if (!std::exchange(i_refusalToldB, true)) Log(AbilitiesOfDisplay().why.toStdString());
        return paramErr;
    }
    setWindowOpacity(static_cast<qreal>(opacity));
    return noErr;
}

OSErr XVideoWindow::SetTransparent(bool transparentB) {
    if (testAttribute(Qt::WA_TranslucentBackground) == transparentB) return noErr;
    if (transparentB && !AbilitiesOfDisplay().transparentB) {
        if (!std::exchange(i_refusalToldB, true)) Log(AbilitiesOfDisplay().why.toStdString());
        return paramErr;
    }
    if (transparentB) delete std::exchange(i_cardP, nullptr);   // what it leaves clear would be black
    // A window has its kind of pixels from its birth on.
    const bool visibleB = isVisible();
    hide();
    destroy();
    setAttribute(Qt::WA_TranslucentBackground, transparentB);
    setAttribute(Qt::WA_NoSystemBackground, transparentB);
    if (visibleB) show();
    return noErr;
}

void XVideoWindow::closeEvent(QCloseEvent* eventP) {
    emit CloseAsked();
    eventP->ignore();   // who listens decides
}

void XVideoWindow::contextMenuEvent(QContextMenuEvent* eventP) { emit MenuAsked(eventP->globalPos()); }

void XVideoWindow::mouseDoubleClickEvent(QMouseEvent*) { SetFullScreen(!IsFullScreen()); }

void XVideoWindow::mouseMoveEvent(QMouseEvent*) { ShowPointer(); }

void XVideoWindow::ShowPointer() {
    unsetCursor();
    if (IsFullScreen())
        i_pointerRest.start();
    else
        i_pointerRest.stop();
}

void XVideoWindow::resizeEvent(QResizeEvent*) {
    if (i_cardP != nullptr) i_cardP->setGeometry(rect());
    if (!i_resizeEnd.isActive()) emit Resizing(true);
    i_resizeEnd.start();
}
