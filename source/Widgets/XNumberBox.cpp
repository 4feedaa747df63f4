#include "Widgets/XNumberBox.h"

QValidator::State XNumberBox::validate(QString& text, int& at) const {
    const QString mark = locale().decimalPoint();
    text.replace(mark == "," ? '.' : ',', mark);
    return QDoubleSpinBox::validate(text, at);
}
