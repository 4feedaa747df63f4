#include "Shell/XVideoWindow.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QPainter>

#include "Graphics/CPixels.h"

XVideoWindow::XVideoWindow() {
    setWindowTitle("Vopla Video");
    setAttribute(Qt::WA_OpaquePaintEvent);   // every pixel is painted: no flicker of the background
    setMinimumSize(150, 108);
    resize(900, 648);
    i_resizeEnd.setSingleShot(true);
    i_resizeEnd.setInterval(200);   // the toolkit tells no end: none for so long is one
    connect(&i_resizeEnd, &QTimer::timeout, this, [this] { emit Resizing(false); });
}

void XVideoWindow::Show(const CPixels& picture) {
    const Rect bounds = picture.bounds();
    i_picture = QImage(static_cast<const uchar*>(picture.base()), bounds.Width(), bounds.Height(),
                       static_cast<qsizetype>(picture.rowBytes()), QImage::Format_RGB32);
    update();
}

void XVideoWindow::Clear() {
    i_picture = QImage();
    update();
}

QRect XVideoWindow::Fitted() const {
    QRect fitted(QPoint(), i_picture.size().scaled(size(), Qt::KeepAspectRatio));
    fitted.moveCenter(rect().center());
    return fitted;
}

void XVideoWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    if (i_picture.isNull()) {
        painter.fillRect(rect(), Qt::black);
        return;
    }
    const QRect fitted = Fitted();
    if (fitted != rect()) {
        const QColor border = i_picture.pixelColor(0, 0);
        for (const QRect& bar : QRegion(rect()).subtracted(fitted)) painter.fillRect(bar, border);
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform, fitted.width() % i_picture.width() != 0);
    painter.drawImage(fitted, i_picture);
}

void XVideoWindow::closeEvent(QCloseEvent* eventP) {
    emit CloseAsked();
    eventP->ignore();   // the quit sequence decides
}

void XVideoWindow::ToggleFullScreen() { setWindowState(windowState() ^ Qt::WindowFullScreen); }

void XVideoWindow::keyPressEvent(QKeyEvent* eventP) {
    if (eventP->key() == Qt::Key_F11 || (eventP->key() == Qt::Key_Escape && isFullScreen()))
        ToggleFullScreen();
    else
        QWidget::keyPressEvent(eventP);
}

void XVideoWindow::resizeEvent(QResizeEvent*) {
    if (!i_resizeEnd.isActive()) emit Resizing(true);
    i_resizeEnd.start();
}

void XVideoWindow::mouseDoubleClickEvent(QMouseEvent*) { ToggleFullScreen(); }
