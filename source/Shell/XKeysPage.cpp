#include "Shell/XKeysPage.h"

#include <QHBoxLayout>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "Shell/XActions.h"
#include "Widgets/XLook.h"

namespace {

constexpr int kCommand_Role = Qt::UserRole;

QString Titles(const std::vector<Command>& commands) {
    QStringList titles;
    for (const Command command : commands) titles << QString("“%1”").arg(QObject::tr(RowOf(command).titleZ));
    return titles.join(", ");
}

}   // namespace

/** Takes any key that is pressed in it; Tab and Escape are left to the dialog. */
class XKeysPage::KeyField final : public QLineEdit {
public:
    explicit KeyField(std::function<void(QKeySequence)> pressed) : i_pressed(std::move(pressed)) {
        setReadOnly(true);
        setPlaceholderText(tr("Press the new key here"));
        setAccessibleName(tr("New key"));
        setAccessibleDescription(tr("The next key that is pressed becomes one of the command's"));
    }

protected:
    bool event(QEvent* eventP) override {
        if (eventP->type() == QEvent::ShortcutOverride) eventP->accept();
        return QLineEdit::event(eventP);
    }
    void keyPressEvent(QKeyEvent* eventP) override {
        const int key = eventP->key();
        const bool ownB = key != Qt::Key_Tab && key != Qt::Key_Backtab && key != Qt::Key_Escape;
        const bool modifierB = key == 0 || key == Qt::Key_unknown ||
                               (key >= Qt::Key_Shift && key <= Qt::Key_ScrollLock) || key == Qt::Key_AltGr;
        if (!ownB) return eventP->ignore();
        if (modifierB) return;
        // "?" is a key of its own, whatever had to be held for it.
        Qt::KeyboardModifiers modifiers = eventP->modifiers() & ~Qt::KeypadModifier;
        if (!eventP->text().isEmpty() && eventP->text().at(0).isPrint() && !eventP->text().at(0).isLetter() &&
            key != Qt::Key_Space)
            modifiers &= ~Qt::ShiftModifier;
        i_pressed(QKeySequence(QKeyCombination(modifiers, static_cast<Qt::Key>(key))));
    }

private:
    std::function<void(QKeySequence)> i_pressed;
};

XKeysPage::XKeysPage(CKeyMap map)
    : i_map(std::move(map)),
      i_treeP(new QTreeWidget),
      i_fieldP(new KeyField([this](const QKeySequence& key) {
          if (Selected() == nullptr) return;
          const auto command = static_cast<Command>(Selected()->data(0, kCommand_Role).toInt());
          CKeyMap::Keys keys = i_map.KeysOf(command);
          keys.append(key);
          Take(keys);
      })),
      i_wordsP(new QLabel) {
    i_treeP->setHeaderLabels({tr("Command"), tr("Keys")});
    i_treeP->setRootIsDecorated(false);
    i_treeP->setAlternatingRowColors(true);
    i_treeP->setAccessibleName(tr("Commands"));
    i_treeP->setAccessibleDescription(tr("Every command with its keys"));
    i_treeP->header()->setSectionResizeMode(0, QHeaderView::Stretch);
    i_treeP->header()->resizeSection(1, 200);
    i_treeP->header()->setStretchLastSection(false);
    i_treeP->header()->setAccessibleName(tr("Columns"));
    i_wordsP->setObjectName("warning");
    i_wordsP->setWordWrap(true);
    i_wordsP->setMinimumHeight(34);
    i_wordsP->setAccessibleName(tr("Conflict"));
    auto* const clearP = new QPushButton(tr("No Key"));
    auto* const factoryP = new QPushButton(tr("Factory Key"));
    auto* const allP = new QPushButton(tr("All Factory Keys"));
    for (QPushButton* const buttonP : {clearP, factoryP, allP}) {
        buttonP->setAutoDefault(false);
        buttonP->setAccessibleName(buttonP->text());
    }
    clearP->setAccessibleDescription(tr("Takes all keys from the command"));
    factoryP->setAccessibleDescription(tr("Gives the command the keys it came with"));
    allP->setAccessibleDescription(tr("Gives every command the keys it came with"));
    auto* const rowP = new QHBoxLayout;
    rowP->addWidget(i_fieldP, 1);
    rowP->addWidget(clearP);
    rowP->addWidget(factoryP);
    rowP->addWidget(allP);
    auto* const columnP = new QVBoxLayout(this);
    columnP->addWidget(i_treeP, 1);
    columnP->addWidget(i_wordsP);
    columnP->addLayout(rowP);
    connect(i_treeP, &QTreeWidget::currentItemChanged, this, &XKeysPage::OnSelected);
    connect(clearP, &QPushButton::clicked, this, [this] { Take({}); });
    connect(factoryP, &QPushButton::clicked, this, [this] {
        if (Selected() != nullptr)
            Take(CKeyMap::FactoryKeys(static_cast<Command>(Selected()->data(0, kCommand_Role).toInt())));
    });
    connect(allP, &QPushButton::clicked, this, [this] {
        i_map = CKeyMap();
        ShowRows();
        emit MapChanged();
    });
    for (const CommandRow& row : CommandTable()) {
        auto* const itemP = new QTreeWidgetItem(i_treeP);
        itemP->setText(0, QString("%1: %2").arg(tr(TitleOf(row.group)), tr(row.titleZ)));
        itemP->setData(0, kCommand_Role, static_cast<int>(row.command));
    }
    i_treeP->setCurrentItem(i_treeP->topLevelItem(0));
    ShowRows();
    if (XLook* const lookP = XLook::Get(); lookP != nullptr)
        connect(lookP, &XLook::Changed, this, &XKeysPage::ShowRows);
}

QTreeWidgetItem* XKeysPage::Selected() const { return i_treeP->currentItem(); }

void XKeysPage::Take(const CKeyMap::Keys& keys) {
    if (Selected() == nullptr) return;
    i_map.SetKeys(static_cast<Command>(Selected()->data(0, kCommand_Role).toInt()), keys);
    ShowRows();
    emit MapChanged();
}

void XKeysPage::ShowRow(QTreeWidgetItem& item) {
    const auto command = static_cast<Command>(item.data(0, kCommand_Role).toInt());
    const std::vector<Command> conflicts = i_map.ConflictsOf(command);
    item.setText(1, KeysText(i_map.KeysOf(command)));
    item.setData(1, Qt::ForegroundRole, conflicts.empty() ? QVariant() : QVariant(XLook::Now().warning));
    item.setToolTip(1, conflicts.empty() ? QString() : tr("Also: %1").arg(Titles(conflicts)));
}

void XKeysPage::ShowRows() {
    for (int n = 0; n < i_treeP->topLevelItemCount(); ++n) ShowRow(*i_treeP->topLevelItem(n));
    OnSelected();
}

void XKeysPage::OnSelected() {
    if (Selected() == nullptr) return;
    const auto conflicts = i_map.ConflictsOf(static_cast<Command>(Selected()->data(0, kCommand_Role).toInt()));
    i_wordsP->setText(conflicts.empty() ? QString()
                                        : tr("%1 has the same key: it works for neither.").arg(Titles(conflicts)));
    const CommandRow& row = RowOf(static_cast<Command>(Selected()->data(0, kCommand_Role).toInt()));
    if (conflicts.empty() && std::ranges::any_of(i_map.KeysOf(row.command), [&](const QKeySequence& key) {
            return IsTypedOutsideVideo(row, key);
        }))
        i_wordsP->setText(
            tr("A key without Ctrl or Alt works in the video windows; in the others it is typed, unless "
               "“Single-key commands” is on."));
}
