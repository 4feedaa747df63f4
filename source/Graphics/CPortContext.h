#pragma once
#include <cstdint>
#include <optional>

#include "Graphics/CPixels.h"

/** How a picture is drawn over what is there. */
struct PictureDraw {
    float alpha = 1.0F;                // fades all of it
    std::optional<RGBColor> leftOut;   // pixels of this colour are not drawn
    bool blendB = false;   // by the alpha of its pixels, which they are multiplied with; else they are opaque
};

/** What a port draws into: a window while it is painted, or pixels in memory.
    Units    pixels of the port's bounds.
    Threads  main.
    Errors   none: what cannot be drawn is left out and logged by the form. */
class CPortContext {
public:
    virtual ~CPortContext() = default;
    /** `rect` becomes `color` (the low 24 bits) at `alpha`; nothing of what was there stays, 0 is clear. */
    virtual void FillRect(const Rect& rect, Pixel32 color, std::uint8_t alpha) = 0;
    /** All of `source` (depth 32) over `to`, scaled. The pixels are good for the call. */
    virtual void DrawScaled(const CPixels& source, const Rect& to, const PictureDraw& how) = 0;
    /** Hands what was drawn to the platform. */
    virtual void Flush() {}
};
