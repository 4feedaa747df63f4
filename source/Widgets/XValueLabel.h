#pragma once
#include <QLabel>

/** Plain text that tells a value: screen readers hear its name with the value, and can ask for the value alone.
    Threads  main. */
class XValueLabel : public QLabel {
    Q_OBJECT
public:
    explicit XValueLabel(const QString& name);
    void SetValue(const QString& text);

private:
    const QString i_name;
};
