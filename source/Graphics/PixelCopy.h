#pragma once
#include "Graphics/CPixels.h"

enum class CopyMode {
    kCopy,
    kTransparent,   // pixels of the source's transparent colour leave the destination as it is
};

/** Copies `from` of `source` to `to` of `dest`, scaled by the sizes of the two (nearest pixel, no smoothing). Depth 4
    to 32 goes through the colour table; else the depths are equal, 4, 32 or 128. The part of either rectangle outside
    its buffer is not touched; the scale stays that of the whole rectangles. Both may be one buffer.
    Errors   paramErr for other depths; memFullErr when a buffer cannot be locked. */
OSErr CopyPixels(const CPixels& source, CPixels& dest, const Rect& from, const Rect& to,
                 CopyMode mode = CopyMode::kCopy);

/** The same; what is left out is `leftOut`, whatever transparent colour the source has. */
OSErr CopyPixels(const CPixels& source, CPixels& dest, const Rect& from, const Rect& to,
                 const std::optional<RGBColor>& leftOut);

/** The same to depth 32 with everything faded by `alpha` (0.0 to 1.0) over what is there. Pixels are taken as
    multiplied with their alpha, as Cairo has them; colours of depth 4 are opaque. */
OSErr CopyPixelsAlpha(const CPixels& source, CPixels& dest, const Rect& from, const Rect& to, float alpha,
                      CopyMode mode = CopyMode::kCopy);
OSErr CopyPixelsAlpha(const CPixels& source, CPixels& dest, const Rect& from, const Rect& to, float alpha,
                      const std::optional<RGBColor>& leftOut);
