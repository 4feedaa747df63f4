#include "Graphics/CPortContext_Offscreen.h"

#include "Core/CLog.h"
#include "Graphics/COffscreen.h"
#include "Graphics/PixelCopy.h"

void CPortContext_Offscreen::FillRect(const Rect& rect, Pixel32 color, std::uint8_t alpha) {
    const Pixel32 pixel = alpha == 0 ? 0 : (color & 0xFFFFFFU) | static_cast<Pixel32>(alpha) << 24;
    static_cast<void>(LogStep(i_pixels.Fill32(rect, pixel), "filling a port"));
}

void CPortContext_Offscreen::DrawScaled(const CPixels& source, const Rect& to, const PictureDraw& how) {
    const OSErr err = how.alpha == 1.0F && !how.blendB
                          ? CopyPixels(source, i_pixels, source.bounds(), to, how.leftOut)
                          : CopyPixelsAlpha(source, i_pixels, source.bounds(), to, how.alpha, how.leftOut);
    static_cast<void>(LogStep(err, "drawing into a port"));
}
