#pragma once
#include "Graphics/CPixels.h"

/** Value is the largest component, 0 to 1; saturation 0 to 1; hue 0 to 360 degrees. They stand in the places of red
    (hue), green (saturation) and blue (value). Alpha is carried along. */
[[nodiscard]] PixelF RGBtoHSV(const PixelF& rgb) noexcept;
/** Back again. A hue outside the six sectors leaves the colour as it stands. */
[[nodiscard]] PixelF HSVtoRGB(const PixelF& hsv) noexcept;
/** Each component times 65535.0, truncated; one outside 0 to 1 gives the end of the range. */
[[nodiscard]] RGBColor ToRGBColor(const PixelF& pixel) noexcept;

/** Depth 32 to depth 128, pixel by pixel: each byte divided by 255.0. A subclass goes on from there.
    Both buffers are walked from their top left pixels, as far as both have pixels.
    Errors   paramErr (and an assertion) for another depth, memFullErr when a buffer cannot be locked. */
class CP_DeepBlit32toF {
public:
    CP_DeepBlit32toF() = default;
    virtual ~CP_DeepBlit32toF() = default;
    OSErr Blit(const CPixels& source, CPixels& dest) const;

    /** One pixel. */
    [[nodiscard]] virtual PixelF Convert(Pixel32 pixel) const noexcept;

    CP_DeepBlit32toF(const CP_DeepBlit32toF&) = delete;
    CP_DeepBlit32toF& operator=(const CP_DeepBlit32toF&) = delete;
};

/** Depth 128 to depth 32: each float times 255.0, truncated; one outside 0 to 1 gives the end of the range.
    Errors   as CP_DeepBlit32toF. */
class CP_DeepBlitFto32 {
public:
    CP_DeepBlitFto32() = default;
    virtual ~CP_DeepBlitFto32() = default;
    OSErr Blit(const CPixels& source, CPixels& dest) const;

    [[nodiscard]] virtual Pixel32 Convert(const PixelF& pixel) const noexcept;

    CP_DeepBlitFto32(const CP_DeepBlitFto32&) = delete;
    CP_DeepBlitFto32& operator=(const CP_DeepBlitFto32&) = delete;
};

/** Depth 32 to hue, saturation and value at depth 128. */
class CP_RGBtoHSV final : public CP_DeepBlit32toF {
public:
    [[nodiscard]] PixelF Convert(Pixel32 pixel) const noexcept override;
};

/** Hue, saturation and value at depth 128 to depth 32. */
class CP_HSVtoRGB final : public CP_DeepBlitFto32 {
public:
    [[nodiscard]] Pixel32 Convert(const PixelF& pixel) const noexcept override;
};
