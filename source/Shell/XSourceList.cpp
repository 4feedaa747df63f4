#include "Shell/XSourceList.h"

#include <QContextMenuEvent>
#include <QDropEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QStyledItemDelegate>

#include "Shell/CSongTableModel.h"
#include "Shell/FileDrop.h"
#include "Shell/XActions.h"
#include "Widgets/QtText.h"
#include "Widgets/XIcons.h"
#include "Widgets/XLook.h"

namespace {

constexpr int kList_Role = Qt::UserRole, kCount_Role = Qt::UserRole + 1;

PlaylistID IdOf(const QListWidgetItem* itemP) {
    return itemP == nullptr ? PlaylistID{0} : PlaylistID{itemP->data(kList_Role).toInt()};
}

/** The name, and at the right how many songs the list has. */
class SourceDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter* painterP, const QStyleOptionViewItem& given, const QModelIndex& index) const override {
        QStyleOptionViewItem option = given;
        initStyleOption(&option, index);
        const QString count = QLocale().toString(index.data(kCount_Role).toLongLong());
        const int width = option.fontMetrics.horizontalAdvance(count) + 14;
        const bool selectedB = option.state.testFlag(QStyle::State_Selected);
        option.text = option.fontMetrics.elidedText(option.text, Qt::ElideRight, option.rect.width() - width - 44);
        option.state &= ~QStyle::State_HasFocus;
        const bool keysB = selectedB && option.widget != nullptr && option.widget->hasFocus();
        if (selectedB && !keysB) {   // the list is shown, but the keys go elsewhere
            option.state &= ~QStyle::State_Selected;
            painterP->save();
            painterP->setRenderHint(QPainter::Antialiasing);
            painterP->setPen(Qt::NoPen);
            painterP->setBrush(XLook::Now().line);
            painterP->drawRoundedRect(option.rect, 6, 6);
            painterP->restore();
        }
        QStyledItemDelegate::paint(painterP, option, index);
        painterP->setFont(option.font);
        painterP->setPen(keysB ? XLook::Now().accentText : selectedB ? XLook::Now().text : XLook::Now().quiet);
        painterP->drawText(option.rect.adjusted(0, 0, -10, 0), Qt::AlignVCenter | Qt::AlignRight, count);
    }
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
        return {QStyledItemDelegate::sizeHint(option, index).width(), std::max(34, option.fontMetrics.height() + 16)};
    }

    void setEditorData(QWidget* editorP, const QModelIndex& index) const override {
        // The view asks again whenever the lists are filled anew: what the user is typing stays.
        const auto* const lineP = qobject_cast<QLineEdit*>(editorP);
        if (lineP == nullptr || !lineP->isModified()) QStyledItemDelegate::setEditorData(editorP, index);
    }

protected:
    void initStyleOption(QStyleOptionViewItem* optionP, const QModelIndex& index) const override {
        QStyledItemDelegate::initStyleOption(optionP, index);
        // paint shortens the text, then the base class asks again.
        const int width =
            optionP->fontMetrics.horizontalAdvance(QLocale().toString(index.data(kCount_Role).toLongLong())) + 14;
        optionP->text =
            optionP->fontMetrics.elidedText(optionP->text, Qt::ElideRight, optionP->rect.width() - width - 44);
    }
};

}   // namespace

XSourceList::XSourceList(CSongDatabase& database, XActions& actions) : i_database(database), i_actions(actions) {
    setAccessibleName(tr("Lists"));
    setAccessibleDescription(tr("The library and the lists; Return goes to the songs, F2 renames"));
    setItemDelegate(new SourceDelegate(this));
    setIconSize({18, 18});
    setUniformItemSizes(true);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setSelectionMode(SingleSelection);
    setEditTriggers(NoEditTriggers);
    setAcceptDrops(true);
    setDragDropMode(DropOnly);
    setDropIndicatorShown(true);
    i_refresh.setSingleShot(true);
    connect(&i_refresh, &QTimer::timeout, this, &XSourceList::Fill);
    connect(this, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* itemP) {
        if (!i_fillingB && itemP != nullptr) emit Chosen(IdOf(itemP));
    });
    connect(this, &QListWidget::itemChanged, this, &XSourceList::OnRenamed);
    i_database.AddWatcher(*this);
    Fill();
    Select(kPlaylistID_Library);
    actions.Attach(CommandScope::kLists, *this);
}

XSourceList::~XSourceList() { i_database.RemoveWatcher(*this); }

void XSourceList::Fill() {
    i_refresh.stop();
    const PlaylistID selected = Selected();
    std::vector<CPlayList*> lists = i_database.PlayLists();
    std::erase_if(lists, [](const CPlayList* listP) {
        return listP->IsHidden() || listP->Type() == kSourceDB_SOURCE || IsSingerList(listP->Type());
    });
    std::ranges::stable_sort(lists,
                             [](const CPlayList* aP, const CPlayList* bP) { return CompareSources(*aP, *bP) < 0; });
    i_fillingB = true;
    while (count() > static_cast<int>(lists.size())) delete takeItem(count() - 1);
    while (count() < static_cast<int>(lists.size())) addItem(new QListWidgetItem);
    for (std::size_t n = 0; n < lists.size(); ++n) {
        QListWidgetItem& row = *item(static_cast<int>(n));
        const CPlayList& list = *lists[n];
        const bool libraryB = list.ID() == kPlaylistID_Library;
        row.setText(TitleOf(list));
        row.setToolTip(PlainToolTip(TitleOf(list)));
        row.setData(Qt::AccessibleTextRole,
                    tr("%1, %n songs", nullptr, static_cast<int>(list.Count())).arg(TitleOf(list)));
        row.setIcon(Icon(libraryB ? IconKind::kLibrary : IconKind::kList));
        row.setData(kList_Role, Number(list.ID()));
        row.setData(kCount_Role, static_cast<qlonglong>(list.Count()));
        row.setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled |
                     (list.Type() == kSourceDB_PLAYLIST && !i_namesLockedB ? Qt::ItemIsEditable : Qt::NoItemFlags));
    }
    Select(i_database.GetPlayList(selected) != nullptr ? selected : kPlaylistID_Library);
    i_fillingB = false;
}

void XSourceList::SetNamesLocked(bool lockedB) {
    if (std::exchange(i_namesLockedB, lockedB) != lockedB) Refresh();
}

PlaylistID XSourceList::Selected() const {
    return currentItem() == nullptr ? kPlaylistID_Library : IdOf(currentItem());
}

void XSourceList::Select(PlaylistID list) {
    for (int n = 0; n < count(); ++n)
        if (IdOf(item(n)) == list) return setCurrentRow(n);
}

void XSourceList::EditName(PlaylistID list) {
    if (i_refresh.isActive()) Fill();
    Select(list);
    if (currentItem() != nullptr && currentItem()->flags().testFlag(Qt::ItemIsEditable)) editItem(currentItem());
}

QString XSourceList::TitleOf(const CPlayList& list) {
    return list.ID() == kPlaylistID_Library ? tr("Library") : QtText(list.Name());
}

CPlayList* XSourceList::ListOf(const QListWidgetItem* itemP) const {
    return itemP == nullptr ? nullptr : i_database.GetPlayList(IdOf(itemP));
}

void XSourceList::OnRenamed(QListWidgetItem* itemP) {
    if (i_fillingB) return;
    CPlayList* const listP = ListOf(itemP);
    if (listP != nullptr && itemP->text() != TitleOf(*listP)) emit RenameAsked(listP->ID(), itemP->text());
    Refresh();   // what the list made of it
}

void XSourceList::ListRemoved(PlaylistID list) {
    if (list == Selected()) Select(kPlaylistID_Library);
    Refresh();
}

void XSourceList::ItemsChanged(PlaylistID, ListMessage message, std::span<const PLItemID>) {
    if (message == ListMessage::kAdded || message == ListMessage::kRemoved) Refresh();
}

// ---- Drops ----

QStringList XSourceList::mimeTypes() const { return {CSongTableModel::kRowsMimeZ, "text/uri-list"}; }

CPlayList* XSourceList::DropTarget(const QDropEvent& event) const {
    CPlayList* const listP = ListOf(itemAt(event.position().toPoint()));
    if (listP == nullptr) return nullptr;
    if (event.mimeData()->hasUrls())
        return listP->ID() == kPlaylistID_Library || listP->IsModifyable() ? listP : nullptr;
    return event.mimeData()->hasFormat(CSongTableModel::kRowsMimeZ) && listP->IsModifyable() ? listP : nullptr;
}

void XSourceList::dragMoveEvent(QDragMoveEvent* eventP) {
    QListWidget::dragMoveEvent(eventP);   // scrolls, draws where it would go
    if (DropTarget(*eventP) == nullptr) return eventP->ignore();
    AcceptCopy(*eventP);
}

void XSourceList::dropEvent(QDropEvent* eventP) {
    CPlayList* const listP = DropTarget(*eventP);
    setState(NoState);
    viewport()->update();
    if (listP == nullptr) return eventP->ignore();
    if (!AcceptCopy(*eventP)) return;
    if (eventP->mimeData()->hasUrls())
        emit FilesDropped(LocalFiles(*eventP->mimeData()), listP->ID(), SDB_Index_END);
    else
        (void)CSongTableModel::DropRows(i_database, *eventP->mimeData(), listP->ID(), SDB_Index_END);
}

QItemSelectionModel::SelectionFlags XSourceList::selectionCommand(const QModelIndex& index, const QEvent*) const {
    return index.isValid() ? QItemSelectionModel::ClearAndSelect : QItemSelectionModel::NoUpdate;
}

void XSourceList::focusInEvent(QFocusEvent* eventP) {
    QListWidget::focusInEvent(eventP);
    viewport()->update();   // the mark tells where the keys go
}

void XSourceList::focusOutEvent(QFocusEvent* eventP) {
    QListWidget::focusOutEvent(eventP);
    viewport()->update();
}

void XSourceList::contextMenuEvent(QContextMenuEvent* eventP) {
    QMenu menu;
    menu.addAction(&i_actions.Get(Command::kNewList));
    const bool keyB = eventP->reason() == QContextMenuEvent::Keyboard;
    if (const QListWidgetItem* const itemP = keyB ? currentItem() : itemAt(eventP->pos());
        itemP != nullptr && itemP == currentItem())
        for (const Command command : {Command::kRenameList, Command::kDeleteList})
            if (i_actions.Get(command).isEnabled()) menu.addAction(&i_actions.Get(command));
    menu.exec(eventP->globalPos());
}
