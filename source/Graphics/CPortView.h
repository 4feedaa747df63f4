#pragma once
#include "Graphics/Geometry.h"

class CPortContext;

/** The drawing area of a window that a port fills.
    Threads  main.
    Owner    the window; it outlives its port. */
class CPortView {
public:
    virtual ~CPortView() = default;
    /** The area of the content, at 0, 0; empty while the window has no size. */
    [[nodiscard]] virtual Rect Bounds() const = 0;
    /** `rect` is painted with the next paint event. */
    virtual void Invalidate(const Rect& rect) = 0;
    /** Paints at once what is invalid. */
    virtual void PaintNow() = 0;
    /** Where to draw; null but inside a paint event. */
    [[nodiscard]] virtual CPortContext* Context() = 0;
};
