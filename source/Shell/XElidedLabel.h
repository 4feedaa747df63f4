#pragma once
#include <QLabel>

/** One line of plain text, shortened with "…" where it does not fit; the whole of it is the tool tip. */
class XElidedLabel final : public QLabel {
    Q_OBJECT
public:
    XElidedLabel();
    void SetText(const QString& text);
    QSize minimumSizeHint() const override { return {40, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent* eventP) override;
};
