#include "Shell/XActions.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <QWidget>

namespace {

bool IsTextField(const QObject* objectP) {
    if (const auto* const comboP = qobject_cast<const QComboBox*>(objectP)) return comboP->isEditable();
    return qobject_cast<const QLineEdit*>(objectP) != nullptr || qobject_cast<const QTextEdit*>(objectP) != nullptr ||
           qobject_cast<const QPlainTextEdit*>(objectP) != nullptr ||
           qobject_cast<const QAbstractSpinBox*>(objectP) != nullptr;
}

bool IsPlainKey(const QKeyEvent& event) {
    constexpr Qt::KeyboardModifiers kCommanding = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    const bool functionB = event.key() >= Qt::Key_F1 && event.key() <= Qt::Key_F35;
    return (event.modifiers() & kCommanding) == 0 && !functionB;
}

}   // namespace

QString KeysText(const CKeyMap::Keys& keys) {
    QStringList texts;
    for (const QKeySequence& key : keys) texts << key.toString(QKeySequence::NativeText);
    return texts.join(", ");
}

XActions::XActions(CKeyMap& keys) : i_keys(keys) {
    for (const CommandRow& row : CommandTable()) {
        auto* const actionP = new QAction(row.titleZ, this);
        actionP->setObjectName(QString::fromUtf8(row.id.data(), static_cast<qsizetype>(row.id.size())));
        actionP->setShortcutContext(row.scope >= CommandScope::kSongs ? Qt::WidgetWithChildrenShortcut
                                                                      : Qt::WindowShortcut);
        i_actions[row.command] = actionP;
    }
    KeysChanged();
    qApp->installEventFilter(this);
}

XActions::~XActions() = default;

void XActions::On(Command command, std::function<void()> work) {
    connect(&Get(command), &QAction::triggered, this, [work = std::move(work)] { work(); });
}

void XActions::Attach(CommandScope scope, QWidget& widget) {
    for (const CommandRow& row : CommandTable())
        if (row.scope == scope) widget.addAction(&Get(row.command));
}

void XActions::AttachEverywhere(QWidget& window) { Attach(CommandScope::kEverywhere, window); }

void XActions::KeysChanged() {
    for (const CommandRow& row : CommandTable()) {
        CKeyMap::Keys keys = i_keys.KeysOf(row.command);
        keys.removeIf([&](const QKeySequence& key) { return !i_keys.ConflictsOf(row.command, key).empty(); });
        QAction& action = Get(row.command);
        action.setShortcuts(keys);
        const QString keyText = KeysText(keys);
        action.setToolTip(keyText.isEmpty() ? QString(row.toolTipZ) : QString("%1 (%2)").arg(row.toolTipZ, keyText));
        action.setStatusTip(row.toolTipZ);
    }
    emit Remapped();
}

bool XActions::eventFilter(QObject* watchedP, QEvent* eventP) {
    if (eventP->type() == QEvent::ShortcutOverride && IsTextField(watchedP) &&
        IsPlainKey(*static_cast<QKeyEvent*>(eventP))) {
        eventP->accept();
        return true;
    }
    if (eventP->type() == QEvent::KeyPress)
        if (auto* const buttonP = qobject_cast<QAbstractButton*>(watchedP);
            buttonP != nullptr && qobject_cast<QDialog*>(buttonP->window()) == nullptr) {
            const auto& press = *static_cast<QKeyEvent*>(eventP);
            // Space plays wherever the focus is, so Return is the key of buttons here.
            if ((press.key() == Qt::Key_Return || press.key() == Qt::Key_Enter) &&
                press.modifiers() == Qt::NoModifier && !press.isAutoRepeat()) {
                buttonP->click();
                return true;
            }
        }
    return QObject::eventFilter(watchedP, eventP);
}
