#include "Widgets/XCardSurface.h"

#include <QPainter>

XCardSurface::XCardSurface(std::function<void(QPainter&)> paint, QWidget* parentP)
    : QOpenGLWidget(parentP), i_paint(std::move(paint)) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFocusPolicy(Qt::NoFocus);
}

void XCardSurface::paintGL() {
    QPainter painter(this);
    i_paint(painter);
}
