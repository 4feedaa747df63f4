#pragma once
#include <functional>
#include <QOpenGLWidget>

class QPainter;

/** What lies over all of a video window when the graphics card draws it: paints by OpenGL what the window would paint.
    The mouse goes through it. Only where OpenGL is known to work (CGraphicsCard): the toolkit does not survive a window
    that has such a surface and no OpenGL.
    Threads  main. A child of the window. */
class XCardSurface final : public QOpenGLWidget {
public:
    /** `paint` draws everything, with each paint event. */
    XCardSurface(std::function<void(QPainter&)> paint, QWidget* parentP);

protected:
    void paintGL() override;

private:
    std::function<void(QPainter&)> i_paint;
};
