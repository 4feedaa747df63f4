#pragma once
#include <QDoubleSpinBox>

/** A box for a number with a fraction: shown with the mark of the user's language, typed with that or the other one. */
class XNumberBox final : public QDoubleSpinBox {
public:
    using QDoubleSpinBox::QDoubleSpinBox;

protected:
    /** Thousands are not parted in these boxes: each point and comma stands before the fraction. */
    QValidator::State validate(QString& text, int& at) const override;
};
