#pragma once
#include <optional>

#include "Graphics/Geometry.h"

class CPixels;

/** A place that shows the picture: the list of ports, or one port alone.
    Threads  the main thread. `picture` is only good for the call. */
class CGraphicsTarget {
public:
    virtual ~CGraphicsTarget() = default;
    /** The picture changed: every port that shows it refreshes. `forceB`: the two video windows also set their
        transparency from the port's opacity and redraw. */
    virtual void Refresh(const CPixels& picture, bool forceB) = 0;
};

/** One port that is drawn alone. */
class CGraphicsPortTarget {
public:
    virtual ~CGraphicsPortTarget() = default;
    [[nodiscard]] virtual float Opacity() const = 0;
    [[nodiscard]] virtual bool IsTransparent() const = 0;
    /** Draws at 0, 0; pixels of the colour `transparent` are left out. */
    virtual void Draw(const CPixels& picture, const std::optional<RGBColor>& transparent) = 0;
};
