#pragma once
#include <QImage>

#include "Graphics/CPortContext.h"

class QPainter;

/** Draws into a window while it is painted. Pictures are shown where they lie, without a copy, unless a colour is left
   out. Scaled by whole numbers, each pixel becomes a square; else pixels are mixed, or some would be wider than others.
    Threads  main. Lives as long as the paint event. */
class CPortContext_Qt final : public CPortContext {
public:
    explicit CPortContext_Qt(QPainter& painter) : i_painter(painter) {}
    void FillRect(const Rect& rect, Pixel32 color, std::uint8_t alpha) override;
    void DrawScaled(const CPixels& source, const Rect& to, const PictureDraw& how) override;

private:
    QPainter& i_painter;
};
