#include "Shell/XListPicker.h"

#include <QDialogButtonBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

#include "Shell/CTextFilter.h"
#include "Widgets/CWindowPlace.h"
#include "Widgets/QtText.h"
#include "Widgets/XIcons.h"

namespace {
constexpr int kNewList = 0;   // no list has this id
}

XListPicker::XListPicker(CSongDatabase& database, const QString& title, QWidget* parentP)
    : QDialog(parentP), i_database(database), i_nameP(new QLineEdit), i_listsP(new QListWidget) {
    setWindowTitle(title);
    setAccessibleName(title);
    setAttribute(Qt::WA_DeleteOnClose);
    i_nameP->setPlaceholderText(tr("Name of a list, or of a new one"));
    i_nameP->setMaxLength(200);
    i_nameP->setAccessibleName(tr("List"));
    i_nameP->setAccessibleDescription(tr("Type the name of a list, or of a new one; the arrows and Return choose"));
    i_nameP->installEventFilter(this);
    i_listsP->setAccessibleName(tr("Lists"));
    i_listsP->setAccessibleDescription(tr("Your lists; Return chooses"));
    i_listsP->setIconSize({18, 18});
    auto* const buttonsP = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
    buttonsP->button(QDialogButtonBox::Ok)->setText(tr("Add"));
    buttonsP->button(QDialogButtonBox::Ok)->setDefault(true);
    auto* const columnP = new QVBoxLayout(this);
    columnP->addWidget(i_nameP);
    columnP->addWidget(i_listsP, 1);
    columnP->addWidget(buttonsP);
    resize(360, 380);
    (void)CWindowPlace::Of(*this);
    connect(i_nameP, &QLineEdit::textChanged, this, &XListPicker::Fill);
    connect(i_listsP, &QListWidget::itemDoubleClicked, this, &XListPicker::Choose);
    connect(buttonsP, &QDialogButtonBox::accepted, this, &XListPicker::Choose);
    connect(buttonsP, &QDialogButtonBox::rejected, this, &QDialog::reject);
    Fill();
    i_nameP->setFocus();
}

void XListPicker::Fill() {
    i_listsP->clear();
    const QString typed = i_nameP->text().trimmed();
    const CTextFilter filter(typed.toStdString(), true);
    std::vector<CPlayList*> lists = i_database.PlayLists();
    std::erase_if(lists, [&](const CPlayList* listP) {
        return listP->Type() != kSourceDB_PLAYLIST || listP->IsHidden() || !filter.Matches(listP->Name().UTF8(), "");
    });
    std::ranges::stable_sort(lists,
                             [](const CPlayList* aP, const CPlayList* bP) { return CompareSources(*aP, *bP) < 0; });
    bool sameB = false;
    const auto add = [this](const QString& text, int id, IconKind icon) {
        auto* const itemP = new QListWidgetItem(Icon(icon), text, i_listsP);
        itemP->setData(Qt::UserRole, id);
    };
    for (const CPlayList* const listP : lists) {
        const QString name = QtText(listP->Name());
        sameB = sameB || name.compare(typed, Qt::CaseInsensitive) == 0;
        add(name, Number(listP->ID()), IconKind::kList);
    }
    if (!sameB) add(typed.isEmpty() ? tr("New List") : tr("New list “%1”").arg(typed), kNewList, IconKind::kPlus);
    i_listsP->setCurrentRow(0);
}

void XListPicker::Choose() {
    const QListWidgetItem* const itemP = i_listsP->currentItem();
    if (itemP == nullptr) return;
    const int id = itemP->data(Qt::UserRole).toInt();
    const QString typed = i_nameP->text().trimmed();
    accept();
    if (id == kNewList)
        emit NewWanted(typed);
    else
        emit Chosen(PlaylistID{id});
}

bool XListPicker::event(QEvent* eventP) {
    // Escape closes it, whatever else the key means in this program.
    if (eventP->type() == QEvent::ShortcutOverride && static_cast<QKeyEvent*>(eventP)->key() == Qt::Key_Escape) {
        eventP->accept();
        return true;
    }
    return QDialog::event(eventP);
}

bool XListPicker::eventFilter(QObject* watchedP, QEvent* eventP) {
    if (watchedP == i_nameP && eventP->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(eventP)->key();
        const int step = key == Qt::Key_Down ? 1 : key == Qt::Key_Up ? -1 : 0;
        if (step != 0) {
            i_listsP->setCurrentRow(std::clamp(i_listsP->currentRow() + step, 0, i_listsP->count() - 1));
            return true;
        }
    }
    return QDialog::eventFilter(watchedP, eventP);
}
