#include "Widgets/ActionButton.h"

#include <QAction>
#include <QToolButton>

void BindButton(QToolButton& button, QAction& action) {
    const auto follow = [&button, &action] {
        button.setToolTip(action.toolTip());
        button.setEnabled(action.isEnabled());
    };
    QObject::connect(&action, &QAction::changed, &button, follow);
    QObject::connect(&button, &QToolButton::clicked, &action, &QAction::trigger);
    button.setAccessibleName(action.text());
    button.setAccessibleDescription(action.statusTip());
    follow();
}
