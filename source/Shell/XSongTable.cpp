#include "Shell/XSongTable.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QHeaderView>
#include <QMenu>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>

#include "Meta/CMetaManager.h"
#include "Shell/FileDrop.h"
#include "Shell/SongColumns.h"
#include "Shell/XActions.h"
#include "Shell/XSongDelegate.h"
#include "Values/CPreferences.h"
#include "Widgets/QtText.h"
#include "Widgets/XLook.h"

namespace {

constexpr DictionaryPref kPref_Columns = "Browser Columns";          // of the library
constexpr DictionaryPref kPref_DefaultColumns = "Default Columns";   // of lists without any of their own
constexpr int kColumns_Milliseconds = 1000;                          // a drag is over
constexpr int kRow_Height = 30, kRow_Margin = 12, kTitle_MostPoints = 12;
constexpr double kEditWait_MostT = 10;                     // seconds
constexpr quint64 kAfterDoubleClick_Milliseconds = 2000;   // so long a click on its row edits nothing
constexpr std::size_t kSelection_MostKept = 10'000;
constexpr int kNames_Least = 120;
constexpr MetaKey kFactory_Columns[] = {"name"_key, "arts"_key, "albm"_key, "trak"_key, "drtn"_key};

/** Until the user sets another one: texts take their part of what there is. */
int FactoryWidth(MetaKey key, int room, const QFontMetrics& font) {
    constexpr int kMargins = 24;
    if (key == "Tsrt"_key || key == "Tend"_key) return font.horizontalAdvance("00:00.000") + kMargins;
    if (key == "arts"_key) return std::max(140, room * 24 / 100);
    if (key == "albm"_key) return std::max(120, room * 18 / 100);
    return std::max<int>(MetaManager().GetTraits(key).InitialWidth(), 60);
}

std::optional<MetaKey> KeyOfText(std::string_view text) {
    if (text.size() != 4) return std::nullopt;
    std::uint32_t code = 0;
    for (const char c : text) code = code << 8 | static_cast<unsigned char>(c);
    const MetaKey key{code};
    const auto& keys = MetaManager().Keys();
    return std::ranges::find(keys, key) == keys.end() ? std::nullopt : std::optional(key);
}

}   // namespace

XSongTable::XSongTable(CSongTableModel& model, CPreferences& prefs, XActions& actions)
    : i_model(model), i_prefs(prefs), i_actions(actions) {
    setModel(&model);
    setItemDelegate(new XSongDelegate(model, this));
    setAccessibleName(tr("Songs"));
    setAccessibleDescription(tr("The songs of the list; Return plays one, F2 edits"));
    setSelectionBehavior(SelectRows);
    setSelectionMode(ExtendedSelection);
    setAlternatingRowColors(true);
    setShowGrid(false);
    setWordWrap(false);
    setTabKeyNavigation(false);
    setEditTriggers(EditKeyPressed);   // the second, slow click is ours: i_editWait
    i_editWait.setSingleShot(true);
    connect(&i_editWait, &QTimer::timeout, this, [this] {
        if (i_editAt.isValid() && i_editAt == currentIndex() && hasFocus()) edit(i_editAt);
    });
    setDragEnabled(true);
    setAcceptDrops(true);
    setDropIndicatorShown(true);
    setDragDropMode(DragDrop);
    setDefaultDropAction(Qt::MoveAction);
    setDragDropOverwriteMode(false);
    setHorizontalScrollMode(ScrollPerPixel);
    verticalHeader()->hide();
    verticalHeader()->setSectionResizeMode(QHeaderView::Fixed);   // one height: nothing is measured
    verticalHeader()->setMinimumSectionSize(kRow_Height);
    verticalHeader()->setDefaultSectionSize(kRow_Height);
    QHeaderView& header = *horizontalHeader();
    header.setAccessibleName(tr("Columns"));
    header.setAccessibleDescription(tr("A click sorts the list; the menu chooses the columns"));
    // It looks at every row to know whether a column is selected, each time it is painted: it gets a selection of its
    // own.
    header.setSelectionModel(new QItemSelectionModel(&model, &header));
    header.setSectionsMovable(true);
    header.setHighlightSections(false);
    header.setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
    header.setMinimumSectionSize(40);
    header.setContextMenuPolicy(Qt::CustomContextMenu);
    connect(&header, &QHeaderView::customContextMenuRequested, this, [this](const QPoint& at) {
        QMenu menu;
        FillColumnMenu(menu);
        menu.exec(horizontalHeader()->mapToGlobal(at));
    });
    connect(&header, &QHeaderView::sectionResized, this, [this](int section, int, int width) {
        const bool byHandB = QApplication::mouseButtons().testFlag(Qt::LeftButton);
        if (byHandB && static_cast<std::size_t>(section) < i_model.Columns().size())
            i_widths[i_model.Columns()[static_cast<std::size_t>(section)]] = width;
        if (byHandB) i_columnsLast.start();
    });
    connect(&header, &QHeaderView::sectionMoved, &i_columnsLast, qOverload<>(&QTimer::start));
    i_columnsLast.setSingleShot(true);
    i_columnsLast.setInterval(kColumns_Milliseconds);
    connect(&i_columnsLast, &QTimer::timeout, this, &XSongTable::SaveColumns);
    connect(&model, &QAbstractItemModel::headerDataChanged, this, &XSongTable::ShowSortMark);
    connect(&model, &CSongTableModel::AboutToReplace, this, &XSongTable::KeepSelection);
    connect(&model, &CSongTableModel::Replaced, this, &XSongTable::RestoreSelection);
    connect(&model, &CSongTableModel::Replaced, this, &XSongTable::ShowSortMark);
    LoadColumns();
    // After the mark was set: setting it would sort.
    ShowSortMark();
    setSortingEnabled(false);
    header.setSectionsClickable(true);
    header.setSortIndicatorShown(true);
    connect(&header, &QHeaderView::sectionClicked, this, [this](int section) {
        const CPlayList* const listP = i_model.List();
        if (listP == nullptr) return;
        const SortSpec& spec = listP->Spec();
        const bool sameB = !spec.empty() && spec.front().key == i_model.Columns()[static_cast<std::size_t>(section)];
        const bool ascendingB = !sameB || !spec.front().ascendingB;
        i_model.sort(section, ascendingB ? Qt::AscendingOrder : Qt::DescendingOrder);
    });
    actions.Attach(CommandScope::kSongs, *this);
}

// ---- Columns ----

void XSongTable::LoadColumns() {
    // A list without columns of its own has those that the user wants for such lists, else those of the library.
    const CPlayList* const listP = i_model.List();
    CCFDictionary kept = listP == nullptr ? CCFDictionary() : listP->Columns();
    const bool libraryB = i_model.ListID() == kPlaylistID_Library;
    for (const DictionaryPref pref :
         {libraryB ? kPref_Columns : kPref_DefaultColumns, libraryB ? kPref_DefaultColumns : kPref_Columns})
        if (kept.GetArray("Order").empty()) kept = i_prefs.GetDictionary(pref);
    i_columnsOf = i_model.ListID();
    std::vector<MetaKey> columns;
    for (const CCFValue& value : kept.GetArray("Order"))
        if (const SuperString* const textP = value.String(); textP != nullptr)
            if (const auto key = KeyOfText(*textP); key && std::ranges::find(columns, *key) == columns.end())
                columns.push_back(*key);
    i_widths.clear();
    for (const auto& [name, value] : kept.GetDictionary("Widths"))
        if (const auto key = KeyOfText(name))
            i_widths[*key] = static_cast<int>(std::clamp<std::int64_t>(value.Integer().value_or(0), 40, 2000));
    if (columns.empty()) columns.assign(std::begin(kFactory_Columns), std::end(kFactory_Columns));
    SetColumns(columns);
    i_keptColumns = ColumnsNow();
}

void XSongTable::SetColumns(const std::vector<MetaKey>& columns) {
    const std::map<MetaKey, int> widths = i_widths;   // the header tells widths of its own meanwhile
    i_model.SetColumns(columns);
    {
        // The header keeps what was dragged by its places, whatever stands there now.
        QHeaderView& header = *horizontalHeader();
        for (int column = 0; column < header.count(); ++column) header.moveSection(header.visualIndex(column), column);
        i_columnsLast.stop();
    }
    i_widths = widths;
    ApplyWidths();
}

void XSongTable::ApplyWidths() {
    const std::map<MetaKey, int> widths = i_widths;
    const std::vector<MetaKey>& columns = i_model.Columns();
    for (std::size_t n = 0; n < columns.size(); ++n) {
        const auto it = widths.find(columns[n]);
        horizontalHeader()->setSectionResizeMode(static_cast<int>(n), QHeaderView::Interactive);
        const int factory = std::max(FactoryWidth(columns[n], viewport()->width(), fontMetrics()),
                                     horizontalHeader()->sectionSizeHint(static_cast<int>(n)));   // its title is read
        setColumnWidth(static_cast<int>(n), it != widths.end() ? it->second : factory);
    }
    // What is left goes to the names, or to the last column where they are not shown.
    const auto name = std::ranges::find(columns, "name"_key);
    horizontalHeader()->setStretchLastSection(name == columns.end());
    if (name == columns.end()) return;
    const int column = static_cast<int>(name - columns.begin());
    const int left = viewport()->width() - (horizontalHeader()->length() - columnWidth(column));
    const int least = std::max(kNames_Least, horizontalHeader()->sectionSizeHint(column));
    if (left >= least)
        horizontalHeader()->setSectionResizeMode(column, QHeaderView::Stretch);
    else   // names are read, and the rest is beside the window
        setColumnWidth(column, least);
}

void XSongTable::resizeEvent(QResizeEvent* eventP) {
    QTableView::resizeEvent(eventP);
    if (eventP->oldSize().width() != eventP->size().width()) ApplyWidths();
}

CCFDictionary XSongTable::ColumnsNow() const {
    // Columns that were dragged stand in another order in the header than in the model.
    CFArray order;
    for (int place = 0; place < horizontalHeader()->count(); ++place) {
        const int column = horizontalHeader()->logicalIndex(place);
        if (column >= 0 && column < i_model.columnCount())
            order.emplace_back(SuperString(MetaKeyText(i_model.Columns()[static_cast<std::size_t>(column)])));
    }
    CCFDictionary widths;
    for (const auto& [key, width] : i_widths) widths.Set(MetaKeyText(key), CCFValue(width));
    return CCFDictionary{{"Order", CCFValue(order)}, {"Widths", CCFValue(widths)}};
}

void XSongTable::SaveColumns() {
    i_columnsLast.stop();
    const CCFDictionary now = ColumnsNow();
    CPlayList* const listP = i_model.List();
    if (now == i_keptColumns || listP == nullptr || i_columnsOf != i_model.ListID()) return;
    i_keptColumns = now;
    if (i_columnsOf == kPlaylistID_Library) return i_prefs.SetDictionary(kPref_Columns, now);
    CCFDictionary columns = listP->Columns();   // with what others may keep there
    for (const auto& [name, value] : now) columns.Set(name, value);
    listP->SetColumns(std::move(columns));
}

void XSongTable::FillColumnMenu(QMenu& menu) {
    for (const SongColumnGroup& group : SongColumnGroups()) {
        const bool firstB = &group == SongColumnGroups().data();   // what most people want is one step nearer
        QMenu& part = firstB ? menu : *menu.addMenu(tr(group.titleZ));
        for (const MetaKey key : group.keys) AddColumnAction(part, key);
        if (firstB) menu.addSeparator();
    }
    menu.addSeparator();
    QAction* const newP = menu.addAction(tr("Use These Columns for New Lists"));
    connect(newP, &QAction::triggered, this, [this] { i_prefs.SetDictionary(kPref_DefaultColumns, ColumnsNow()); });
}

void XSongTable::AddColumnAction(QMenu& menu, MetaKey key) {
    const QString title = KeyTitle(MetaManager().GetTraits(key));
    QAction* const actionP = menu.addAction(title == "#" ? tr("# (place in the list)") : title);
    const std::vector<MetaKey>& columns = i_model.Columns();
    const bool shownB = std::ranges::find(columns, key) != columns.end();
    actionP->setCheckable(true);
    actionP->setChecked(shownB);
    actionP->setEnabled(!shownB || columns.size() > 1);
    connect(actionP, &QAction::triggered, this, [this, key](bool onB) {
        // As they stand in the header: a column that was dragged stays where it is.
        std::vector<MetaKey> next;
        for (int place = 0; place < horizontalHeader()->count(); ++place)
            next.push_back(i_model.Columns()[static_cast<std::size_t>(horizontalHeader()->logicalIndex(place))]);
        if (onB)
            next.push_back(key);
        else
            std::erase(next, key);
        SetColumns(next);
        SaveColumns();
    });
}

void XSongTable::ShowSortMark() {
    const CPlayList* const listP = i_model.List();
    if (listP == nullptr) return;
    const std::vector<MetaKey>& columns = i_model.Columns();
    const auto it = std::ranges::find(columns, MainKey(listP->Spec()));
    const bool ascendingB = listP->Spec().empty() || listP->Spec().front().ascendingB;
    horizontalHeader()->setSortIndicator(it == columns.end() ? -1 : static_cast<int>(it - columns.begin()),
                                         ascendingB ? Qt::AscendingOrder : Qt::DescendingOrder);
}

// ---- Selection ----

std::vector<PLItemID> XSongTable::SelectedItems() const {
    std::vector<int> rows;
    for (const QItemSelectionRange& range : selectionModel()->selection())
        for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(row);
    std::ranges::sort(rows);
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    std::vector<PLItemID> items;
    items.reserve(rows.size());
    for (const int row : rows) items.push_back(i_model.ItemAt(row));
    return items;
}

PLItemID XSongTable::CurrentItem() const {
    if (currentIndex().isValid()) return i_model.ItemAt(currentIndex().row());
    const std::vector<PLItemID> items = SelectedItems();
    return !items.empty() ? items.front() : i_model.ItemAt(0);
}

void XSongTable::SelectItem(PLItemID item) {
    const int row = i_model.RowOf(item);
    if (row < 0) return;
    const QModelIndex index = i_model.index(row, std::max(0, currentIndex().column()));
    setCurrentIndex(index);
    scrollTo(index, PositionAtCenter);
}

void XSongTable::KeepSelection() {
    if (i_columnsLast.isActive()) SaveColumns();   // before another list takes the header
    i_keptList = i_model.ListID();
    i_keptSelection = SelectedItems();
    if (i_keptSelection.size() > kSelection_MostKept) i_keptSelection.clear();
    i_keptCurrent = currentIndex().isValid() ? i_model.ItemAt(currentIndex().row()) : SDB_kNoItem;
    i_keptScroll = verticalScrollBar()->value();
}

void XSongTable::RestoreSelection() {
    if (i_columnsOf != i_model.ListID()) LoadColumns();
    ApplyWidths();
    if (i_keptList != i_model.ListID()) return;
    if (const int row = i_keptCurrent == SDB_kNoItem ? -1 : i_model.RowOf(i_keptCurrent); row >= 0)
        selectionModel()->setCurrentIndex(i_model.index(row, 0), QItemSelectionModel::NoUpdate);
    if (!i_keptSelection.empty()) {
        PLItemSet wanted;
        for (const PLItemID id : i_keptSelection) wanted.Add(id);
        QItemSelection selection;
        for (int row = 0; row < i_model.rowCount(); ++row)
            if (wanted.Has(i_model.ItemAt(row)))
                selection.select(i_model.index(row, 0), i_model.index(row, i_model.columnCount() - 1));
        selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
    }
    verticalScrollBar()->setValue(i_keptScroll);
}

void XSongTable::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
    QTableView::selectionChanged(selected, deselected);
    emit SelectionTold();
}

void XSongTable::EditCurrent() {
    if (i_model.rowCount() == 0) return;
    QModelIndex index = currentIndex().isValid() ? currentIndex() : i_model.index(0, 0);
    for (int column = 0; column < i_model.columnCount() && !(index.flags() & Qt::ItemIsEditable); ++column)
        index = i_model.index(index.row(), column);
    if (!(index.flags() & Qt::ItemIsEditable)) return;
    setCurrentIndex(index);
    edit(index);
}

QModelIndex XSongTable::moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) {
    // The rows are what is chosen here: to the first one and the last one, not through the columns.
    const int column = std::max(0, currentIndex().column());
    if (action == MoveHome) return i_model.index(0, column);
    if (action == MoveEnd) return i_model.index(i_model.rowCount() - 1, column);
    return QTableView::moveCursor(action, modifiers);
}

// ---- Mouse ----

void XSongTable::SetEditWait(double seconds) {
    // A double click must have had its time, or it would begin with an editor.
    const int least = QApplication::doubleClickInterval() + 1;
    i_editWait.setInterval(std::max(least, static_cast<int>(std::clamp(seconds, 0.0, kEditWait_MostT) * 1000)));
}

void XSongTable::mousePressEvent(QMouseEvent* eventP) {
    i_editWait.stop();
    // A click on the one row that is selected already is meant for what stands in it.
    const QModelIndex index = indexAt(eventP->pos());
    const QItemSelection selection = selectionModel()->selection();
    const bool oneB = selection.size() == 1 && selection.front().height() == 1 && selection.front().contains(index);
    const bool plainB = eventP->button() == Qt::LeftButton && eventP->modifiers() == Qt::NoModifier;
    // A third click is one too many of those that play: neither it nor a click on what plays is a wish to rename it.
    const PLItemID item = oneB ? i_model.ItemAt(index.row()) : SDB_kNoItem;
    const bool playsB =
        i_model.IsPlayingRow(item) ||
        (item == i_doubleClicked && eventP->timestamp() - i_doubleClickedAt < kAfterDoubleClick_Milliseconds);
    const bool editB = plainB && oneB && !playsB && hasFocus() && (index.flags() & Qt::ItemIsEditable);
    i_editAt = editB ? QPersistentModelIndex(index) : QPersistentModelIndex();
    QTableView::mousePressEvent(eventP);
}

void XSongTable::mouseReleaseEvent(QMouseEvent* eventP) {
    QTableView::mouseReleaseEvent(eventP);
    if (i_editAt.isValid() && i_editAt == indexAt(eventP->pos())) i_editWait.start();
}

void XSongTable::mouseDoubleClickEvent(QMouseEvent* eventP) {
    // A double click plays; it does not edit: the view must hear of it, or it takes the clicks for slow ones.
    i_editWait.stop();
    i_editAt = QPersistentModelIndex();
    const QModelIndex index = indexAt(eventP->pos());
    const PLItemID item =
        eventP->button() == Qt::LeftButton && index.isValid() ? i_model.ItemAt(index.row()) : SDB_kNoItem;
    QTableView::mouseDoubleClickEvent(eventP);
    i_doubleClicked = item;
    i_doubleClickedAt = eventP->timestamp();
    if (item != SDB_kNoItem) emit PlayAsked(item);
}

bool XSongTable::event(QEvent* eventP) {
    if (eventP->type() == QEvent::ShortcutOverride) i_editWait.stop();   // a command: its next key must not be typed
    return QTableView::event(eventP);
}

void XSongTable::keyPressEvent(QKeyEvent* eventP) {
    i_editWait.stop();
    QTableView::keyPressEvent(eventP);
}

void XSongTable::contextMenuEvent(QContextMenuEvent* eventP) {
    QPoint at = eventP->globalPos();
    if (eventP->reason() == QContextMenuEvent::Keyboard) {   // for the row under the cursor, wherever it is
        if (!currentIndex().isValid()) return;
        scrollTo(currentIndex());
        at = viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft());
    } else if (!indexAt(eventP->pos()).isValid()) {
        return;
    }
    using enum Command;
    QMenu menu;
    // What makes no sense for these rows would only be in the way.
    const auto add = [&](std::initializer_list<Command> commands) {
        for (const Command command : commands)
            if (i_actions.Get(command).isEnabled()) menu.addAction(&i_actions.Get(command));
        menu.addSeparator();
    };
    add({kPlaySelected, kPlayNext, kAddToList});
    add({kCopy, kPaste, kEditCell});
    add({kReveal, kConformNames, kZip, kUnzip, kLocateMissing});
    add({kRemoveFromList, kRemoveFromLibrary, kTrashOriginals});
    menu.exec(at);
}

void XSongTable::startDrag(Qt::DropActions actions) {
    i_editWait.stop();
    const std::vector<PLItemID> items = SelectedItems();
    if (items.empty()) return;
    // Our own picture: that of the toolkit draws every row, and there may be a million.
    const QString text =
        items.size() == 1 ? i_model.index(currentIndex().row(), 0).data().toString() : tr("%1 songs").arg(items.size());
    const QString label = fontMetrics().elidedText(text, Qt::ElideRight, 260);
    const QSize size(fontMetrics().horizontalAdvance(label) + 24, 28);
    QPixmap pixmap(size * devicePixelRatioF());
    pixmap.setDevicePixelRatio(devicePixelRatioF());
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(XLook::Now().accent);
    painter.setPen(Qt::NoPen);
    painter.drawRoundedRect(QRect(QPoint(), size), 6, 6);
    painter.setPen(XLook::Now().accentText);
    painter.drawText(QRect(QPoint(12, 0), size), Qt::AlignVCenter | Qt::AlignLeft, label);
    painter.end();
    auto* const dragP = new QDrag(this);
    dragP->setMimeData(i_model.mimeData(selectionModel()->selectedRows()));
    dragP->setPixmap(pixmap);
    dragP->exec(actions, Qt::CopyAction);
}

void XSongTable::dragMoveEvent(QDragMoveEvent* eventP) {
    QTableView::dragMoveEvent(eventP);
    if (eventP->isAccepted() && eventP->mimeData()->hasUrls()) AcceptCopy(*eventP);
    if (i_model.IsRefusedBySort(*eventP->mimeData())) eventP->accept();   // the drop says why nothing moves
}

void XSongTable::dropEvent(QDropEvent* eventP) {
    if (i_model.IsRefusedBySort(*eventP->mimeData())) {
        setState(NoState);
        eventP->ignore();
        emit MoveRefused(viewport()->mapToGlobal(eventP->position().toPoint()));
        return;
    }
    const bool filesB = eventP->mimeData()->hasUrls();
    if (filesB && !AcceptCopy(*eventP)) return;
    eventP->ignore();                // or the view would take it for done
    QTableView::dropEvent(eventP);   // answers with the action that was proposed
    if (filesB && eventP->isAccepted()) AcceptCopy(*eventP);
}

void XSongTable::SetFont(const QFont& font) {
    setFont(font);
    const int height = std::max(kRow_Height, QFontMetrics(font).height() + kRow_Margin);
    verticalHeader()->setMinimumSectionSize(height);
    verticalHeader()->setDefaultSectionSize(height);
    QFont title = font;
    title.setPointSize(std::min(font.pointSize(), kTitle_MostPoints));
    horizontalHeader()->setFont(title);
}

void XSongTable::SetHint(const QString& title, const QString& text) {
    i_hintTitle = title;
    i_hintText = text;
    viewport()->update();
}

void XSongTable::paintEvent(QPaintEvent* eventP) {
    QTableView::paintEvent(eventP);
    if (i_model.rowCount() > 0 || (i_hintTitle.isEmpty() && i_hintText.isEmpty())) return;
    QPainter painter(viewport());
    painter.setRenderHint(QPainter::Antialiasing);
    constexpr int kFlags = Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, kMargin = 20, kBetween = 16;
    QFont title = font();
    title.setPixelSize(20);
    title.setBold(true);
    // As high as its words are, in whatever language and size.
    const QRect area = viewport()->rect();
    const int width = std::min(560, area.width() - 40);
    const auto heightOf = [&](const QFont& font, const QString& text) {
        return QFontMetrics(font).boundingRect(QRect(0, 0, width - 2 * kMargin, area.height()), kFlags, text).height();
    };
    const int titleHeight = heightOf(title, i_hintTitle), textHeight = heightOf(font(), i_hintText);
    QRect box(0, 0, width, std::max(130, titleHeight + kBetween + textHeight + 2 * kMargin));
    box.moveCenter(area.center());
    painter.setPen(QPen(XLook::Now().line, 2, Qt::DashLine));
    painter.drawRoundedRect(box, 12, 12);
    QRect inner = box.adjusted(kMargin, kMargin, -kMargin, -kMargin);
    painter.setFont(title);
    painter.setPen(XLook::Now().text);
    painter.drawText(inner, kFlags, i_hintTitle);
    inner.setTop(inner.top() + titleHeight + kBetween);
    painter.setFont(font());
    painter.setPen(XLook::Now().quiet);
    painter.drawText(inner, kFlags, i_hintText);
}
