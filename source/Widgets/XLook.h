#pragma once
#include <QObject>
#include <QPalette>

class QDBusVariant;

/** The look of the desktop: one palette and one style sheet, dark or light.
    Threads  main. One, beside the application object; it lives as long as there are windows. */
class XLook final : public QObject {
    Q_OBJECT
public:
    enum class Choice : int { kDesktop = 0, kDark = 1, kLight = 2 };

    /** `style` parts that the program draws by itself. */
    struct Colors {
        QColor window, raised, field, stripe, line, text, quiet, accent, accentText, playing, warning;
    };

    XLook();
    ~XLook() override;
    void Choose(Choice choice);
    [[nodiscard]] bool IsDark() const { return i_darkB; }
    [[nodiscard]] static const Colors& Now();
    [[nodiscard]] static XLook* Get();

signals:
    /** All windows have the new palette. */
    void Changed();

private slots:
    /** The desktop's own setting, whenever it changes. */
    void OnDesktopSetting(const QString& space, const QString& key, const QDBusVariant& value);

private:
    void AskDesktop();
    void Apply();

    Choice i_choice = Choice::kDesktop;
    bool i_desktopDarkB = false;
    bool i_darkB = false;
    bool i_appliedB = false;
};
