#include "Graphics/DeepBlit.h"

#include <utility>

#include "Core/Assertions.h"

namespace {

/** `value` times `scale`, truncated and kept in 0 to `scale`; what is not a number is 0. */
unsigned Scaled(float value, float scale) noexcept {
    // In float throughout: the product is rounded to nearest, so that n / 255.0 comes back as n and not as n - 1.
    const float product = value * scale;
    if (!(product > 0.0F)) return 0;
    return static_cast<unsigned>(std::min(product, scale));
}

/** Calls `each(source row, dest row, y)` for what both have. */
template <typename Each>
OSErr EachRow(const CPixels& source, CPixels& dest, Each each) {
    const CPixelsLock lockSource(source), lockDest(dest);
    if (const OSErr err = FirstOf(lockSource.Err(), lockDest.Err()); Failed(err)) return err;
    const int rows = std::min(source.bounds().Height(), dest.bounds().Height());
    for (int y = 0; y < rows; ++y) each(source.bounds().top + y, dest.bounds().top + y);
    return noErr;
}

}   // namespace

PixelF RGBtoHSV(const PixelF& rgb) noexcept {
    const float value = std::max({rgb.red, rgb.green, rgb.blue});
    if (value == 0.0F) return {rgb.alpha, 0.0F, 0.0F, 0.0F};
    const float delta = value - std::min({rgb.red, rgb.green, rgb.blue});
    const float saturation = delta / value;
    if (saturation == 0.0F) return {rgb.alpha, 0.0F, 0.0F, value};

    float hue = 0.0F;   // in this order: on a tie the later component decides
    if (rgb.red == value) hue = (rgb.green - rgb.blue) / delta;
    if (rgb.green == value) hue = (rgb.blue - rgb.red) / delta + 2.0F;
    if (rgb.blue == value) hue = (rgb.red - rgb.green) / delta + 4.0F;
    hue *= 60.0F;
    if (hue < 0.0F) hue += 360.0F;
    return {rgb.alpha, hue, saturation, value};
}

PixelF HSVtoRGB(const PixelF& hsv) noexcept {
    float hue = hsv.red;
    const float saturation = hsv.green, value = hsv.blue;
    if (saturation == 0.0F && hue == 0.0F) return {hsv.alpha, value, value, value};
    if (hue > 360.0F) hue -= 360.0F;
    const float sectors = hue * (1.0F / 60.0F);
    if (!(sectors > -1.0F && sectors < 6.0F)) return hsv;   // truncated, it is none of 0 to 5
    const int sector = static_cast<int>(sectors);
    const float part = sectors - static_cast<float>(sector);
    const float p = (1.0F - saturation) * value;
    const float q = (1.0F - saturation * part) * value;
    const float t = (1.0F - saturation * (1.0F - part)) * value;
    switch (sector) {
        case 0:
            return {hsv.alpha, value, t, p};
        case 1:
            return {hsv.alpha, q, value, p};
        case 2:
            return {hsv.alpha, p, value, t};
        case 3:
            return {hsv.alpha, p, q, value};
        case 4:
            return {hsv.alpha, t, p, value};
        default:
            return {hsv.alpha, value, p, q};
    }
}

RGBColor ToRGBColor(const PixelF& pixel) noexcept {
    const auto word = [](float value) { return static_cast<std::uint16_t>(Scaled(value, 65535.0F)); };
    return {word(pixel.red), word(pixel.green), word(pixel.blue)};
}

PixelF CP_DeepBlit32toF::Convert(Pixel32 pixel) const noexcept {
    const auto part = [pixel](unsigned shift) { return static_cast<float>(pixel >> shift & 0xFFU) / 255.0F; };
    return {part(24), part(16), part(8), part(0)};
}

Pixel32 CP_DeepBlitFto32::Convert(const PixelF& pixel) const noexcept {
    return Scaled(pixel.alpha, 255.0F) << 24 | Scaled(pixel.red, 255.0F) << 16 | Scaled(pixel.green, 255.0F) << 8 |
           Scaled(pixel.blue, 255.0F);
}

PixelF CP_RGBtoHSV::Convert(Pixel32 pixel) const noexcept { return RGBtoHSV(CP_DeepBlit32toF::Convert(pixel)); }

Pixel32 CP_HSVtoRGB::Convert(const PixelF& pixel) const noexcept { return CP_DeepBlitFto32::Convert(HSVtoRGB(pixel)); }

OSErr CP_DeepBlit32toF::Blit(const CPixels& source, CPixels& dest) const {
    if (!AssertWords(source.depth() == 32, "depth() == 32")) return paramErr;
    if (!AssertWords(dest.depth() == 128, "depth() == 128")) return paramErr;
    return EachRow(source, dest, [&](int fromY, int toY) {
        const std::span<const Pixel32> from = source.Row32(fromY);
        const std::span<PixelF> to = dest.RowF(toY);
        for (std::size_t x = 0; x < std::min(from.size(), to.size()); ++x) to[x] = Convert(from[x]);
    });
}

OSErr CP_DeepBlitFto32::Blit(const CPixels& source, CPixels& dest) const {
    if (!AssertWords(source.depth() == 128, "depth() == 128")) return paramErr;
    if (!AssertWords(dest.depth() == 32, "destP->depth() == 32")) return paramErr;
    return EachRow(source, dest, [&](int fromY, int toY) {
        const std::span<const PixelF> from = source.RowF(fromY);
        const std::span<Pixel32> to = dest.Row32(toY);
        for (std::size_t x = 0; x < std::min(from.size(), to.size()); ++x) to[x] = Convert(from[x]);
    });
}
