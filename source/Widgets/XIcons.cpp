#include "Widgets/XIcons.h"

#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>

#include "Widgets/XLook.h"

namespace {

QPolygonF Triangle(qreal left, qreal right, qreal top, qreal bottom) {
    return QPolygonF({{left, top}, {right, (top + bottom) / 2}, {left, bottom}});
}

/** In a square of 24 by 24, filled or stroked by the painter's brush and pen. */
void Draw(QPainter& painter, IconKind kind) {
    const QPen line(painter.pen().color(), 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    const auto fill = [&](const QPolygonF& shape) {
        painter.setPen(QPen(painter.pen().color(), 1.5, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
        painter.drawPolygon(shape);
    };
    const auto bar = [&](qreal x, qreal width) { painter.drawRoundedRect(QRectF(x, 5, width, 14), 1, 1); };
    const auto stroke = [&](const QPainterPath& path) { painter.strokePath(path, line); };
    QPainterPath path;
    switch (kind) {
        case IconKind::kPlay:
            return fill(Triangle(8, 19, 5.5, 18.5));
        case IconKind::kPause:
            bar(6.5, 4);
            return bar(13.5, 4);
        case IconKind::kStop:
            painter.drawRoundedRect(QRectF(6, 6, 12, 12), 1.5, 1.5);
            return;
        case IconKind::kNext:
            fill(Triangle(6, 15, 6, 18));
            return bar(16, 2.5);
        case IconKind::kPrevious:
            fill(Triangle(18, 9, 6, 18));
            return bar(5.5, 2.5);
        case IconKind::kRewind:
            fill(Triangle(12, 4, 6.5, 17.5));
            return fill(Triangle(20, 12, 6.5, 17.5));
        case IconKind::kPlus:
            path.moveTo(12, 6);
            path.lineTo(12, 18);
            [[fallthrough]];
        case IconKind::kMinus:
            path.moveTo(6, 12);
            path.lineTo(18, 12);
            return stroke(path);
        case IconKind::kVolume:
        case IconKind::kMuted:
            fill(QPolygonF({{4, 9.5}, {7.5, 9.5}, {12, 5.5}, {12, 18.5}, {7.5, 14.5}, {4, 14.5}}));
            if (kind == IconKind::kMuted) {
                path.moveTo(15.5, 9.5);
                path.lineTo(20.5, 14.5);
                path.moveTo(20.5, 9.5);
                path.lineTo(15.5, 14.5);
            } else {
                path.arcMoveTo(QRectF(11, 8, 7, 8), -50);
                path.arcTo(QRectF(11, 8, 7, 8), -50, 100);
                path.arcMoveTo(QRectF(9, 5, 12.5, 14), -50);
                path.arcTo(QRectF(9, 5, 12.5, 14), -50, 100);
            }
            return stroke(path);
        case IconKind::kOneLevel:   // three that end at one line
            for (const qreal x : {6., 12., 18.}) {
                path.moveTo(x, 10);
                path.lineTo(x, 19);
            }
            path.moveTo(3.5, 6);
            path.lineTo(20.5, 6);
            return stroke(path);
        case IconKind::kFullScreen:
            for (const auto& [x, y, dx, dy] :
                 {std::tuple{4., 4., 5., 5.}, {20., 4., -5., 5.}, {4., 20., 5., -5.}, {20., 20., -5., -5.}}) {
                path.moveTo(x + dx, y);
                path.lineTo(x, y);
                path.lineTo(x, y + dy);
            }
            return stroke(path);
        case IconKind::kOutput:
            painter.setBrush(Qt::NoBrush);
            painter.setPen(line);
            painter.drawRoundedRect(QRectF(6, 3, 12, 18), 2.5, 2.5);
            painter.drawEllipse(QPointF(12, 14.5), 3, 3);
            painter.drawPoint(QPointF(12, 7.5));
            return;
        case IconKind::kColumns:
            for (const qreal x : {5., 12., 19.}) {
                path.moveTo(x, 5);
                path.lineTo(x, 19);
            }
            return stroke(path);
        case IconKind::kPicture:
            painter.setBrush(Qt::NoBrush);
            painter.setPen(line);
            painter.drawRoundedRect(QRectF(3.5, 5, 17, 12), 2, 2);
            path.moveTo(8, 20.5);
            path.lineTo(16, 20.5);
            return stroke(path);
        case IconKind::kSearch:
            path.addEllipse(QPointF(10.5, 10.5), 5.5, 5.5);
            path.moveTo(14.8, 14.8);
            path.lineTo(20, 20);
            return stroke(path);
        case IconKind::kList:
            for (const qreal y : {6.5, 12., 17.5}) {
                path.moveTo(5, y);
                path.lineTo(19, y);
            }
            return stroke(path);
        case IconKind::kLibrary:
            path.addEllipse(QPointF(8, 17.5), 2.8, 2.2);
            path.moveTo(10.8, 17.5);
            path.lineTo(10.8, 5.5);
            path.lineTo(19, 4);
            path.lineTo(19, 15.5);
            path.addEllipse(QPointF(16.2, 15.7), 2.8, 2.2);
            return stroke(path);
    }
}

class DrawnIcon final : public QIconEngine {
public:
    DrawnIcon(IconKind kind, IconInk ink) : i_kind(kind), i_ink(ink) {}

    void paint(QPainter* painterP, const QRect& rect, QIcon::Mode mode, QIcon::State) override {
        const XLook::Colors& colors = XLook::Now();
        const QColor color = mode == QIcon::Disabled                                  ? colors.quiet
                             : mode == QIcon::Selected || i_ink == IconInk::kOnAccent ? colors.accentText
                             : i_ink == IconInk::kPlaying                             ? colors.playing
                                                                                      : colors.text;
        painterP->save();
        painterP->setRenderHint(QPainter::Antialiasing);
        painterP->translate(rect.topLeft());
        painterP->scale(rect.width() / 24.0, rect.height() / 24.0);
        painterP->setPen(QPen(color, 0.01));
        painterP->setBrush(color);
        Draw(*painterP, i_kind);
        painterP->restore();
    }
    QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
        QPixmap pixmap(size);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }
    QIconEngine* clone() const override { return new DrawnIcon(i_kind, i_ink); }

private:
    IconKind i_kind;
    IconInk i_ink;
};

}   // namespace

QIcon Icon(IconKind kind, IconInk ink) { return QIcon(new DrawnIcon(kind, ink)); }
