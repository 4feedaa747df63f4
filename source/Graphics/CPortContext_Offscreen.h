#pragma once
#include "Graphics/CPortContext.h"

class COffscreen;

/** Draws into an offscreen of depth 32: pictures for tests, for exports, for a host without a screen.
    Owner    the offscreen outlives it. */
class CPortContext_Offscreen final : public CPortContext {
public:
    explicit CPortContext_Offscreen(COffscreen& pixels) : i_pixels(pixels) {}
    void FillRect(const Rect& rect, Pixel32 color, std::uint8_t alpha) override;
    /** The nearest pixel, without smoothing. */
    void DrawScaled(const CPixels& source, const Rect& to, const PictureDraw& how) override;

private:
    COffscreen& i_pixels;
};
