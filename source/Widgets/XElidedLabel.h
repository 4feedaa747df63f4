#pragma once
#include "Widgets/XValueLabel.h"

/** One line of plain text, shortened with "…" where it does not fit; the whole of it is the tool tip. */
class XElidedLabel final : public XValueLabel {
    Q_OBJECT
public:
    /** `name` is what screen readers hear in front of the text; without one they hear the text alone. */
    explicit XElidedLabel(const QString& name = {});
    void SetText(const QString& text);
    QSize minimumSizeHint() const override { return {40, QLabel::minimumSizeHint().height()}; }

protected:
    void paintEvent(QPaintEvent* eventP) override;
};
