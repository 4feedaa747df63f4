#include "Widgets/XValueLabel.h"

#include <QAccessibleWidget>

namespace {

/** The toolkit's form for labels has a name and no value. */
class ValueInterface final : public QAccessibleWidget {
public:
    explicit ValueInterface(QWidget* widgetP) : QAccessibleWidget(widgetP, QAccessible::StaticText) {}
    QString text(QAccessible::Text what) const override {
        const auto* const labelP = qobject_cast<const QLabel*>(widget());
        return what == QAccessible::Value && labelP != nullptr ? labelP->text() : QAccessibleWidget::text(what);
    }
};

QAccessibleInterface* MakeInterface(const QString& className, QObject* objectP) {
    auto* const labelP = className == "XValueLabel" ? qobject_cast<XValueLabel*>(objectP) : nullptr;
    return labelP == nullptr ? nullptr : new ValueInterface(labelP);   // the toolkit owns it
}

}   // namespace

XValueLabel::XValueLabel(const QString& name) : i_name(name) {
    QAccessible::installFactory(&MakeInterface);   // once, however often it is asked
    setTextFormat(Qt::PlainText);
    setAccessibleName(name);
}

void XValueLabel::SetValue(const QString& text) {
    if (text == this->text()) return;
    setText(text);
    if (!i_name.isEmpty()) setAccessibleName(text.isEmpty() ? i_name : QString("%1: %2").arg(i_name, text));
}
