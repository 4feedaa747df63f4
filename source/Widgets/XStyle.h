#pragma once
#include <QProxyStyle>

/** Draws what a style sheet cannot without picture files: the marks of check boxes and radio buttons, boxes that open
    and boxes of numbers, in the colours of the look of now. A wheel that rolls over a page changes none of them. All
    else is Fusion's.
    Threads  main.
    Owner    the toolkit. */
class XStyle final : public QProxyStyle {
public:
    XStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* optionP, QPainter* painterP,
                       const QWidget* widgetP) const override;
    void drawComplexControl(ComplexControl control, const QStyleOptionComplex* optionP, QPainter* painterP,
                            const QWidget* widgetP) const override;
    int pixelMetric(PixelMetric metric, const QStyleOption* optionP, const QWidget* widgetP) const override;
    int styleHint(StyleHint hint, const QStyleOption* optionP, const QWidget* widgetP,
                  QStyleHintReturn* returnP) const override;
    using QProxyStyle::polish;
    void polish(QWidget* widgetP) override;
    QSize sizeFromContents(ContentsType type, const QStyleOption* optionP, const QSize& size,
                           const QWidget* widgetP) const override;

protected:
    bool eventFilter(QObject* watchedP, QEvent* eventP) override;
};
