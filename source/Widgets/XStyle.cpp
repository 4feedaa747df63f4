#include "Widgets/XStyle.h"

#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyleFactory>
#include <QStyleOption>
#include <QTabBar>

#include "Widgets/XLook.h"

namespace {

constexpr int kIndicator = 17;    // pixels of a mark
constexpr int kBox_Height = 30;   // of what opens, or holds a number, at the least
constexpr qreal kBox_Radius = 6;
constexpr int kDrop_Width = 2;
constexpr qreal kDisabled_Opacity = 0.45;

/** A chevron in the middle of `rect`. */
void DrawChevron(QPainter& painter, const QRectF& rect, bool upB, const QColor& color) {
    const QPointF middle = rect.center();
    const qreal half = upB ? -2 : 2;
    QPainterPath path(middle + QPointF(-4, -half));
    path.lineTo(middle + QPointF(0, half));
    path.lineTo(middle + QPointF(4, -half));
    painter.strokePath(path, QPen(color, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
}

/** The frame of a box, in the accent when it has the keys. */
void DrawBox(QPainter& painter, const QRect& rect, QStyle::State state, const QColor& ground) {
    const XLook::Colors& colors = XLook::Now();
    const bool focusB = state.testFlag(QStyle::State_HasFocus);
    const bool overB = state.testFlag(QStyle::State_MouseOver) && state.testFlag(QStyle::State_Enabled);
    painter.setPen(focusB ? colors.accent : overB ? colors.quiet : colors.line);
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(rect).adjusted(0.5, 0.5, -0.5, -0.5), kBox_Radius, kBox_Radius);
}

/** Where something that is dragged would go: a line, or a frame, over the whole row and not the cell alone. */
void DrawDropMark(QPainter& painter, const QStyleOption& option, const QWidget* widgetP) {
    const auto* const viewP = qobject_cast<const QAbstractItemView*>(widgetP);
    QRectF rect = option.rect;
    if (viewP != nullptr) {
        rect.setLeft(1);
        rect.setRight(viewP->viewport()->width() - 1);
    }
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(XLook::Now().accent, kDrop_Width));
    painter.setBrush(Qt::NoBrush);
    if (option.rect.height() <= kDrop_Width)
        painter.drawLine(rect.topLeft(), rect.topRight());
    else
        painter.drawRoundedRect(rect, 4, 4);
    painter.restore();
}

void DrawMark(QPainter& painter, const QStyleOption& option, bool roundB) {
    const XLook::Colors& colors = XLook::Now();
    const bool onB = option.state.testFlag(QStyle::State_On), mixB = option.state.testFlag(QStyle::State_NoChange);
    if (!option.state.testFlag(QStyle::State_Enabled)) painter.setOpacity(kDisabled_Opacity);
    const QRectF rect = QRectF(option.rect).adjusted(1, 1, -1, -1);
    const qreal radius = roundB ? rect.height() / 2 : 4;
    painter.setPen(QPen(onB || mixB ? colors.accent : colors.quiet, 1.2));
    painter.setBrush(onB || mixB ? colors.accent : colors.field);
    painter.drawRoundedRect(rect, radius, radius);
    const QPen line(colors.accentText, 2, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    const auto at = [&](qreal x, qreal y) { return rect.topLeft() + QPointF(rect.width() * x, rect.height() * y); };
    QPainterPath path;
    if (roundB && onB) {
        painter.setPen(Qt::NoPen);
        painter.setBrush(colors.accentText);
        painter.drawEllipse(rect.center(), rect.width() * 0.22, rect.height() * 0.22);
    } else if (mixB) {
        path.moveTo(at(0.25, 0.5));
        path.lineTo(at(0.75, 0.5));
        painter.strokePath(path, line);
    } else if (onB) {
        path.moveTo(at(0.24, 0.52));
        path.lineTo(at(0.43, 0.71));
        path.lineTo(at(0.77, 0.3));
        painter.strokePath(path, line);
    }
}

}   // namespace

XStyle::XStyle() : QProxyStyle(QStyleFactory::create("Fusion")) {}

void XStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* optionP, QPainter* painterP,
                           const QWidget* widgetP) const {
    if (element == PE_FrameFocusRect && qobject_cast<const QTabBar*>(widgetP) != nullptr) return;   // its colour tells
    if (element == PE_IndicatorItemViewItemDrop) return DrawDropMark(*painterP, *optionP, widgetP);
    const bool roundB = element == PE_IndicatorRadioButton;
    if (!roundB && element != PE_IndicatorCheckBox && element != PE_FrameFocusRect)
        return QProxyStyle::drawPrimitive(element, optionP, painterP, widgetP);
    painterP->save();
    painterP->setRenderHint(QPainter::Antialiasing);
    if (element == PE_FrameFocusRect) {
        painterP->setPen(XLook::Now().accent);
        painterP->setBrush(Qt::NoBrush);
        painterP->drawRoundedRect(QRectF(optionP->rect).adjusted(0.5, 0.5, -0.5, -0.5), 4, 4);
    } else {
        DrawMark(*painterP, *optionP, roundB);
    }
    painterP->restore();
}

void XStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex* optionP, QPainter* painterP,
                                const QWidget* widgetP) const {
    const bool comboB = control == CC_ComboBox, spinB = control == CC_SpinBox;
    if (!comboB && !spinB) return QProxyStyle::drawComplexControl(control, optionP, painterP, widgetP);
    const XLook::Colors& colors = XLook::Now();
    const bool enabledB = optionP->state.testFlag(State_Enabled);
    painterP->save();
    painterP->setRenderHint(QPainter::Antialiasing);
    if (!enabledB) painterP->setOpacity(kDisabled_Opacity);
    DrawBox(*painterP, optionP->rect, optionP->state, comboB ? colors.raised : colors.field);
    const auto part = [&](SubControl which) {
        return QRectF(proxy()->subControlRect(control, optionP, which, widgetP));
    };
    if (comboB) {
        DrawChevron(*painterP, part(SC_ComboBoxArrow), false, colors.quiet);
    } else {
        const auto* const spinP = qstyleoption_cast<const QStyleOptionSpinBox*>(optionP);
        const auto ink = [&](SubControl which, QAbstractSpinBox::StepEnabledFlag step) {
            const bool ableB = spinP != nullptr && spinP->stepEnabled.testFlag(step);
            const bool overB = optionP->activeSubControls.testFlag(which) && optionP->state.testFlag(State_MouseOver);
            return !ableB ? colors.line : overB ? colors.text : colors.quiet;
        };
        DrawChevron(*painterP, part(SC_SpinBoxUp), true, ink(SC_SpinBoxUp, QAbstractSpinBox::StepUpEnabled));
        DrawChevron(*painterP, part(SC_SpinBoxDown), false, ink(SC_SpinBoxDown, QAbstractSpinBox::StepDownEnabled));
    }
    painterP->restore();
}

int XStyle::pixelMetric(PixelMetric metric, const QStyleOption* optionP, const QWidget* widgetP) const {
    switch (metric) {
        case PM_IndicatorWidth:
        case PM_IndicatorHeight:
        case PM_ExclusiveIndicatorWidth:
        case PM_ExclusiveIndicatorHeight:
            return kIndicator;
        case PM_CheckBoxLabelSpacing:
        case PM_RadioButtonLabelSpacing:
            return 9;
        default:
            return QProxyStyle::pixelMetric(metric, optionP, widgetP);
    }
}

QSize XStyle::sizeFromContents(ContentsType type, const QStyleOption* optionP, const QSize& size,
                               const QWidget* widgetP) const {
    QSize wanted = QProxyStyle::sizeFromContents(type, optionP, size, widgetP);
    if (type == CT_ComboBox || type == CT_SpinBox) wanted.setHeight(std::max(wanted.height(), kBox_Height));
    return wanted;
}

int XStyle::styleHint(StyleHint hint, const QStyleOption* optionP, const QWidget* widgetP,
                      QStyleHintReturn* returnP) const {
    return hint == SH_ComboBox_AllowWheelScrolling ? 0 : QProxyStyle::styleHint(hint, optionP, widgetP, returnP);
}

void XStyle::polish(QWidget* widgetP) {
    QProxyStyle::polish(widgetP);
    if (qobject_cast<QAbstractSpinBox*>(widgetP) == nullptr) return;
    widgetP->setFocusPolicy(Qt::StrongFocus);   // not by the wheel
    widgetP->installEventFilter(this);
}

bool XStyle::eventFilter(QObject* watchedP, QEvent* eventP) {
    const auto* const boxP = eventP->type() == QEvent::Wheel ? qobject_cast<QAbstractSpinBox*>(watchedP) : nullptr;
    if (boxP == nullptr || boxP->hasFocus()) return QProxyStyle::eventFilter(watchedP, eventP);
    eventP->ignore();   // the page rolls
    return true;
}
