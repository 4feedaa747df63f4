#include "Shell/XActions.h"

#include <QAbstractButton>
#include <QAbstractSpinBox>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFileDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenu>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTextEdit>
#include <QToolButton>
#include <QWidget>

#include "Shell/XVideoWindow.h"
#include "Widgets/XSeekBar.h"

namespace {

bool IsTextField(const QObject* objectP) {
    if (const auto* const comboP = qobject_cast<const QComboBox*>(objectP)) return comboP->isEditable();
    return qobject_cast<const QLineEdit*>(objectP) != nullptr || qobject_cast<const QTextEdit*>(objectP) != nullptr ||
           qobject_cast<const QPlainTextEdit*>(objectP) != nullptr ||
           qobject_cast<const QAbstractSpinBox*>(objectP) != nullptr;
}

constexpr Qt::KeyboardModifiers kCommanding = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;

bool IsFunctionKey(int key) { return key >= Qt::Key_F1 && key <= Qt::Key_F35; }

bool IsPlainKey(const QKeyEvent& press) {
    return (press.modifiers() & kCommanding) == 0 && !IsFunctionKey(press.key());
}

/** A dialog, or a panel that is opened over a window. */
bool StandsBesideShow(const QWidget& window) {
    return qobject_cast<const QDialog*>(&window) != nullptr || window.objectName() == "popup";
}

}   // namespace

bool IsTypedOutsideVideo(const CommandRow& row, const QKeySequence& key) {
    const QKeyCombination first = key[0];
    if ((first.keyboardModifiers() & kCommanding) != 0 || IsFunctionKey(first.key()) || first.key() == Qt::Key_Space ||
        row.command == Command::kFullScreen)
        return false;
    return IsOfShow(row) || QChar::isLetterOrNumber(static_cast<char32_t>(first.key()));
}

QString KeysText(const CKeyMap::Keys& keys) {
    QStringList texts;
    for (const QKeySequence& key : keys) texts << key.toString(QKeySequence::NativeText);
    return texts.join(", ");
}

XActions::XActions(CKeyMap& keys) : i_keys(keys) {
    for (const CommandRow& row : CommandTable()) {
        auto* const actionP = new QAction(tr(row.titleZ), this);
        actionP->setObjectName(QString::fromUtf8(row.id.data(), static_cast<qsizetype>(row.id.size())));
        actionP->setShortcutContext(row.scope >= CommandScope::kSongs ? Qt::WidgetWithChildrenShortcut
                                                                      : Qt::WindowShortcut);
        i_actions[row.command] = actionP;
    }
    KeysChanged();
    qApp->installEventFilter(this);
}

XActions::~XActions() = default;

void XActions::On(Command command, std::function<void()> work, std::function<bool()> ifB) {
    connect(&Get(command), &QAction::triggered, this, [work = std::move(work)] { work(); });
    if (ifB) i_rules[command] = std::move(ifB);
}

void XActions::Refresh() {
    for (const auto& [command, ifB] : i_rules) Get(command).setEnabled(ifB());
}

void XActions::Attach(CommandScope scope, QWidget& widget) {
    for (const CommandRow& row : CommandTable())
        if (row.scope == scope) widget.addAction(&Get(row.command));
}

void XActions::AttachEverywhere(QWidget& window) {
    Attach(CommandScope::kEverywhere, window);
    if (qobject_cast<QFileDialog*>(&window) == nullptr) return;
    // The toolkit's dialogs have keys of their own (Alt and the arrows, Ctrl+Up), by which neither would work.
    for (auto* const buttonP : window.findChildren<QToolButton*>()) buttonP->setShortcut({});
    for (auto* const actionP : window.findChildren<QAction*>()) actionP->setShortcuts(QList<QKeySequence>());
}

void XActions::SetSingleKeys(bool onB) {
    if (std::exchange(i_singleKeysB, onB) != onB) KeysChanged();
}

void XActions::KeysChanged() {
    for (const CommandRow& row : CommandTable()) {
        CKeyMap::Keys keys = i_keys.KeysOf(row.command);
        keys.removeIf([&](const QKeySequence& key) { return !i_keys.ConflictsOf(row.command, key).empty(); });
        QAction& action = Get(row.command);
        action.setShortcuts(keys);
        if (!i_singleKeysB) keys.removeIf([&](const QKeySequence& key) { return IsTypedOutsideVideo(row, key); });
        const QString keyText = KeysText(keys);   // those that work where the tool tip is seen
        action.setToolTip(keyText.isEmpty() ? tr(row.toolTipZ) : QString("%1 (%2)").arg(tr(row.toolTipZ), keyText));
        action.setStatusTip(tr(row.toolTipZ));
    }
    emit Remapped();
}

const CommandRow* XActions::CommandOf(const QKeyEvent& press) const {
    const auto key = static_cast<Qt::Key>(press.key());
    const Qt::KeyboardModifiers modifiers = press.modifiers() & ~Qt::KeypadModifier;
    // "?" is a key of its own, whatever has to be held for it.
    const QKeySequence held(QKeyCombination(modifiers, key));
    const QKeySequence alone(QKeyCombination(modifiers & ~Qt::ShiftModifier, key));
    for (const CommandRow& row : CommandTable()) {
        const CKeyMap::Keys& keys = i_keys.KeysOf(row.command);
        if (keys.contains(held) || (key > Qt::Key_Space && key < Qt::Key_Escape && keys.contains(alone))) return &row;
    }
    return nullptr;
}

bool XActions::IsTyped(const QKeyEvent& press) const {
    if (!IsPlainKey(press) || press.key() == Qt::Key_Space) return false;
    const CommandRow* const rowP = CommandOf(press);
    if (rowP != nullptr && rowP->command == Command::kFullScreen) return false;
    if (i_singleKeysB) return false;
    const bool letterB = !press.text().isEmpty() && press.text().at(0).isLetterOrNumber();
    return letterB || (rowP != nullptr && IsOfShow(*rowP));
}

bool XActions::TakesFromMenu(const QKeyEvent& press) {
    if (IsPlainKey(press) && press.key() != Qt::Key_Space) return false;   // a letter chooses from the menu
    const CommandRow* const rowP = CommandOf(press);
    if (rowP == nullptr || rowP->scope != CommandScope::kEverywhere || Get(rowP->command).shortcuts().isEmpty())
        return false;
    while (QWidget* const popupP = QApplication::activePopupWidget())
        if (!popupP->close()) break;
    // Not from inside the menu's own loop.
    QMetaObject::invokeMethod(&Get(rowP->command), &QAction::trigger, Qt::QueuedConnection);
    return true;
}

bool XActions::eventFilter(QObject* watchedP, QEvent* eventP) {
    auto* const widgetP = qobject_cast<QWidget*>(watchedP);
    if (widgetP == nullptr) return false;
    if (eventP->type() == QEvent::Show && widgetP->isWindow() && StandsBesideShow(*widgetP) &&
        !widgetP->actions().contains(&Get(Command::kPlayPause)))
        AttachEverywhere(*widgetP);   // the show goes on, whatever is open
    if (eventP->type() == QEvent::FocusIn) {
        const Qt::FocusReason reason = static_cast<QFocusEvent*>(eventP)->reason();
        i_tabbedP = reason == Qt::TabFocusReason || reason == Qt::BacktabFocusReason ? watchedP : nullptr;
    }
    if (eventP->type() == QEvent::ShortcutOverride) {
        const auto& press = *static_cast<QKeyEvent*>(eventP);
        const bool boxB =
            press.key() == Qt::Key_Space && i_tabbedP == watchedP &&
            (qobject_cast<QCheckBox*>(watchedP) != nullptr || qobject_cast<QRadioButton*>(watchedP) != nullptr);
        const bool arrowB = press.key() == Qt::Key_Left || press.key() == Qt::Key_Right;
        const bool roomB = qobject_cast<XVideoWindow*>(widgetP->window()) != nullptr ||
                           (arrowB && qobject_cast<XSeekBar*>(watchedP) != nullptr);
        if (IsPlainKey(press) && (IsTextField(watchedP) || boxB || (!roomB && IsTyped(press)))) {
            eventP->accept();
            return true;
        }
    }
    if (eventP->type() == QEvent::KeyPress && qobject_cast<QMenu*>(widgetP) != nullptr &&
        TakesFromMenu(*static_cast<QKeyEvent*>(eventP)))
        return true;
    if (eventP->type() == QEvent::KeyPress)
        if (auto* const buttonP = qobject_cast<QAbstractButton*>(watchedP); buttonP != nullptr) {
            const auto& press = *static_cast<QKeyEvent*>(eventP);
            // Space plays wherever the focus is, so Return is the key of buttons here; boxes of a dialog leave it to its
            // default button.
            const bool boxB =
                qobject_cast<QPushButton*>(buttonP) == nullptr && qobject_cast<QToolButton*>(buttonP) == nullptr;
            if ((press.key() == Qt::Key_Return || press.key() == Qt::Key_Enter) &&
                press.modifiers() == Qt::NoModifier && !press.isAutoRepeat() &&
                !(boxB && qobject_cast<QDialog*>(buttonP->window()) != nullptr)) {
                buttonP->click();
                return true;
            }
        }
    return QObject::eventFilter(watchedP, eventP);
}
