#include "Shell/CPortContext_Qt.h"

#include <QPainter>

namespace {

QRect QtRect(const Rect& rect) { return {rect.left, rect.top, rect.Width(), rect.Height()}; }

/** The picture with the pixels of that colour clear. */
QImage WithHoles(const QImage& picture, const RGBColor& leftOut) {
    QImage holed(picture.size(), QImage::Format_ARGB32_Premultiplied);
    const Pixel32 out = PackColor(leftOut);
    for (int y = 0; y < picture.height(); ++y) {
        const auto* const fromP = reinterpret_cast<const Pixel32*>(picture.constScanLine(y));
        auto* const toP = reinterpret_cast<Pixel32*>(holed.scanLine(y));
        for (int x = 0; x < picture.width(); ++x) {
            const Pixel32 pixel = fromP[x] | 0xFF000000U;
            toP[x] = pixel == out ? 0 : pixel;
        }
    }
    return holed;
}

}   // namespace

void CPortContext_Qt::FillRect(const Rect& rect, Pixel32 color, std::uint8_t alpha) {
    const auto part = [color](unsigned shift) { return static_cast<int>(color >> shift & 0xFFU); };
    i_painter.setCompositionMode(QPainter::CompositionMode_Source);
    i_painter.fillRect(QtRect(rect), QColor(part(16), part(8), part(0), alpha));
    i_painter.setCompositionMode(QPainter::CompositionMode_SourceOver);
}

void CPortContext_Qt::DrawScaled(const CPixels& source, const Rect& to, const PictureDraw& how) {
    const CPixelsLock lock(source);
    if (Failed(lock.Err())) return;   // logged where there was no memory
    const Rect bounds = source.bounds();
    QImage picture(source.base(), bounds.Width(), bounds.Height(), static_cast<qsizetype>(source.rowBytes()),
                   how.blendB ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    if (how.leftOut) picture = WithHoles(picture, *how.leftOut);
    const bool wholeB = to.Width() % bounds.Width() == 0 && to.Height() % bounds.Height() == 0;
    i_painter.setRenderHint(QPainter::SmoothPixmapTransform, !wholeB);
    i_painter.setOpacity(static_cast<qreal>(how.alpha));
    i_painter.drawImage(QtRect(to), picture);
    i_painter.setOpacity(1);
}
