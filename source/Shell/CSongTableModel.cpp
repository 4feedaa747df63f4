#include "Shell/CSongTableModel.h"

#include <QFont>

#include "Meta/CMeta_PLItem.h"
#include "Meta/CMetaManager.h"
#include "Shell/SongCells.h"
#include "Shell/SongColumns.h"
#include "Widgets/QtText.h"
#include "Widgets/XIcons.h"
#include "Widgets/XLook.h"

CSongTableModel::CSongTableModel(CSongDatabase& database)
    : i_database(database), i_columns{"name"_key, "arts"_key, "albm"_key, "trak"_key, "drtn"_key} {
    i_refresh.setSingleShot(true);
    connect(&i_refresh, &QTimer::timeout, this, &CSongTableModel::Settle);
    i_database.AddWatcher(*this);
    SetList(kPlaylistID_Library);
}

CSongTableModel::~CSongTableModel() {
    i_database.RemoveWatcher(*this);
    if (i_resultRef) i_resultRef->Cancel();
}

// ---- Which rows ----

std::vector<PLItemID> CSongTableModel::ShownOrder() const {
    const CPlayList* const listP = List();
    if (listP == nullptr) return {};
    // Never made here: a million rows take longer than a frame. The user's own order stands until the task is done.
    if (auto order = listP->Items()->Order(listP->Spec())) return std::move(*order);
    return listP->Items()->UserOrder();
}

void CSongTableModel::SetList(PlaylistID list) {
    emit AboutToReplace();   // while it is still the old one
    i_list = list;
    beginResetModel();
    if (i_resultRef) std::exchange(i_resultRef, nullptr)->Cancel();
    i_dirtyB = i_lookAgainB = false;
    i_rows = IsFiltering() ? std::vector<PLItemID>() : ShownOrder();
    endResetModel();
    emit Replaced();
    if (IsFiltering()) Look();
    if (CPlayList* const listP = List(); listP != nullptr && !listP->Items()->HasOrder(listP->Spec()))
        listP->SetSort(SortSpec(listP->Spec()));
    emit StateChanged();
}

void CSongTableModel::SetColumns(std::vector<MetaKey> columns) {
    if (columns == i_columns || columns.empty()) return;
    emit AboutToReplace();
    beginResetModel();
    i_columns = std::move(columns);
    endResetModel();
    emit Replaced();
}

void CSongTableModel::SetFilter(const CTextFilter& filter) {
    if (filter == i_filter) return;
    i_filter = filter;
    if (i_resultRef) std::exchange(i_resultRef, nullptr)->Cancel();
    if (!IsFiltering()) {
        ShowRows(ShownOrder());
        emit StateChanged();
        return;
    }
    i_gatherB = false;
    Look();
}

void CSongTableModel::Look() {
    const CPlayList* const listP = List();
    if (listP == nullptr) return;
    if (i_resultRef) i_resultRef->Cancel();
    i_resultRef =
        std::make_shared<CFilterResult>([this](std::span<const PLItemID> items, bool lastB) { Found(items, lastB); });
    i_found.clear();
    i_firstPieceB = true;
    i_lookAgainB = false;
    FilterJob job{i_filter, ShownOrder(), listP->Items(), listP->Values()};
    if (CT_FilterRows::Start(std::make_unique<CT_FilterRows>(std::move(job), i_resultRef)) == 0)
        i_resultRef = nullptr;   // no thread can be had: the rows of before stay
    emit StateChanged();
}

void CSongTableModel::Found(std::span<const PLItemID> items, bool lastB) {
    if (i_gatherB) {
        i_found.insert(i_found.end(), items.begin(), items.end());
        if (lastB) ShowRows(std::exchange(i_found, {}));
    } else if (std::exchange(i_firstPieceB, false)) {
        ShowRows({items.begin(), items.end()});
    } else if (!items.empty()) {
        beginInsertRows({}, rowCount(), rowCount() + static_cast<int>(items.size()) - 1);
        i_rows.insert(i_rows.end(), items.begin(), items.end());
        endInsertRows();
    }
    if (lastB) {
        i_resultRef = nullptr;
        i_gatherB = true;   // from now on a search only brings these rows up to date
        if (i_lookAgainB) Look();
    }
    emit StateChanged();
}

void CSongTableModel::Settle() {
    i_refresh.stop();
    if (!std::exchange(i_dirtyB, false)) return;
    if (!IsFiltering()) {
        ShowRows(ShownOrder());
    } else {
        // What left goes now; what came or changed is looked at by a search.
        std::vector<PLItemID> rows = i_rows;
        if (const CPlayList* const listP = List())
            std::erase_if(rows, [&](PLItemID id) { return !listP->Items()->Get(id); });
        else
            rows.clear();
        ShowRows(std::move(rows));
        if (i_resultRef)
            i_lookAgainB = true;
        else
            Look();
    }
    if (!i_rows.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
    emit StateChanged();
}

// ---- What the library tells ----

void CSongTableModel::ListRemoved(PlaylistID list) {
    if (list == i_list) SetList(kPlaylistID_Library);
}

void CSongTableModel::ItemsChanged(PlaylistID list, ListMessage, std::span<const PLItemID>) {
    if (list != i_list) return;
    i_dirtyB = true;
    if (!i_refresh.isActive()) i_refresh.start(0);
}

void CSongTableModel::SortChanged(PlaylistID list, const SortSpec&, bool startedB) {
    if (list != i_list) return;
    if (startedB) {
        emit StateChanged();
        return;
    }
    i_dirtyB = true;
    if (!i_refresh.isActive()) i_refresh.start(0);
    emit headerDataChanged(Qt::Horizontal, 0, columnCount() - 1);
}

// ---- The signals of a change ----

void CSongTableModel::Replace(std::vector<PLItemID> rows) {
    emit AboutToReplace();
    beginResetModel();
    i_rows = std::move(rows);
    endResetModel();
    emit Replaced();
}

void CSongTableModel::ShowRows(std::vector<PLItemID> rows) {
    if (rows == i_rows) return;
    if (rows.size() == i_rows.size()) return ShowPermuted(std::move(rows));
    if (rows.size() > i_rows.size() ? ShowInserted(rows) : ShowRemoved(rows)) return;
    Replace(std::move(rows));
}

namespace {

/** The runs of `all` (from, to; ascending) that are not in `some`; nothing when there are too many for a view, or when
    what is in both stands in another order. */
std::optional<std::vector<std::pair<std::size_t, std::size_t>>> RunsBetween(const std::vector<PLItemID>& all,
                                                                            const std::vector<PLItemID>& some) {
    constexpr std::size_t kMostRuns = 64;
    std::vector<std::pair<std::size_t, std::size_t>> runs;
    std::size_t at = 0;
    for (std::size_t n = 0; n < all.size(); ++n) {
        if (at < some.size() && all[n] == some[at]) {
            ++at;
        } else if (!runs.empty() && runs.back().second + 1 == n) {
            runs.back().second = n;
        } else {
            if (runs.size() == kMostRuns) return std::nullopt;
            runs.emplace_back(n, n);
        }
    }
    if (at != some.size()) return std::nullopt;
    return runs;
}

}   // namespace

bool CSongTableModel::ShowInserted(const std::vector<PLItemID>& rows) {
    const auto runs = RunsBetween(rows, i_rows);
    if (!runs) return false;
    for (const auto& [from, to] : *runs) {
        beginInsertRows({}, static_cast<int>(from), static_cast<int>(to));
        const auto offset = [](std::size_t n) { return static_cast<std::ptrdiff_t>(n); };
        i_rows.insert(i_rows.begin() + offset(from), rows.begin() + offset(from), rows.begin() + offset(to + 1));
        endInsertRows();
    }
    return true;
}

bool CSongTableModel::ShowRemoved(const std::vector<PLItemID>& rows) {
    const auto runs = RunsBetween(i_rows, rows);
    if (!runs) return false;
    for (auto run = runs->rbegin(); run != runs->rend(); ++run) {
        beginRemoveRows({}, static_cast<int>(run->first), static_cast<int>(run->second));
        i_rows.erase(i_rows.begin() + static_cast<std::ptrdiff_t>(run->first),
                     i_rows.begin() + static_cast<std::ptrdiff_t>(run->second + 1));
        endRemoveRows();
    }
    return true;
}

void CSongTableModel::ShowPermuted(std::vector<PLItemID> rows) {
    // A row that is not in both makes it no permutation: slots are used again.
    std::int32_t mostL = 0;
    for (const PLItemID id : rows) mostL = std::max(mostL, Number(id));
    std::vector<int> rowOf(static_cast<std::size_t>(mostL) + 1, -1);
    for (std::size_t n = 0; n < rows.size(); ++n)
        rowOf[static_cast<std::size_t>(Number(rows[n]))] = static_cast<int>(n);
    const auto find = [&](PLItemID id) {
        const auto slot = static_cast<std::size_t>(Number(id));
        return slot < rowOf.size() ? rowOf[slot] : -1;
    };
    if (!std::ranges::all_of(i_rows, [&](PLItemID id) { return find(id) >= 0; })) return Replace(std::move(rows));

    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    const QModelIndexList before = persistentIndexList();
    QModelIndexList after;
    after.reserve(before.size());
    for (const QModelIndex& one : before) after.append(index(find(ItemAt(one.row())), one.column()));
    i_rows = std::move(rows);
    changePersistentIndexList(before, after);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

// ---- Reading ----

PLItemID CSongTableModel::ItemAt(int row) const {
    return row < 0 || row >= rowCount() ? SDB_kNoItem : i_rows[static_cast<std::size_t>(row)];
}

int CSongTableModel::RowOf(PLItemID item) const {
    const auto it = std::ranges::find(i_rows, item);
    return it == i_rows.end() ? -1 : static_cast<int>(it - i_rows.begin());
}

SongID CSongTableModel::SongAt(int row) const {
    const CPlayList* const listP = List();
    const PLItemID item = ItemAt(row);
    if (listP == nullptr || item == SDB_kNoItem) return SongID{0};
    const auto found = listP->Items()->Get(item);
    return found && found->target.type == SDB_kPLItem_SONG ? SongID{found->target.idL} : SongID{0};
}

int CSongTableModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(i_rows.size());
}

int CSongTableModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(i_columns.size());
}

bool CSongTableModel::IsPlayingRow(PLItemID item) const {
    if (Number(i_playingSong) <= 0) return false;
    if (i_playingList == i_list && i_playingItem != SDB_kNoItem) return item == i_playingItem;
    const auto row = List()->Items()->Get(item);
    return row && row->target == PLTarget(i_playingSong);
}

bool CSongTableModel::IsMissingRow(PLItemID item) const {
    const auto row = List()->Items()->Get(item);
    const CSong* const songP =
        row && row->target.type == SDB_kPLItem_SONG ? i_database.GetSong(SongID{row->target.idL}) : nullptr;
    return songP != nullptr && songP->Meta().Stored("Msng"_key).Bool() == BoolValueType::kTrue;
}

QVariant CSongTableModel::data(const QModelIndex& index, int role) const {
    const CPlayList* const listP = List();
    const PLItemID item = ItemAt(index.row());
    if (listP == nullptr || item == SDB_kNoItem || index.column() >= columnCount()) return {};
    const MetaKey key = i_columns[static_cast<std::size_t>(index.column())];
    const CDataTraits& traits = MetaManager().GetTraits(key);
    switch (role) {
        case Qt::DisplayRole:
            return IsCheckBox(traits) ? QVariant() : QVariant(CellText(*listP, item, key));
        case Qt::ToolTipRole:
        case Qt::AccessibleTextRole: {
            // A row says of itself what it is in the column of its name, or in the first one where that is not shown.
            const bool tellB = key == "name"_key ||
                               (index.column() == 0 && std::ranges::find(i_columns, "name"_key) == i_columns.end());
            QString told = CellText(*listP, item, key);
            if (tellB && role == Qt::AccessibleTextRole && IsPlayingRow(item)) told = tr("%1, it plays").arg(told);
            if (tellB && IsMissingRow(item)) told = tr("%1: its files are missing").arg(told);
            return role == Qt::ToolTipRole ? PlainToolTip(told) : told;
        }
        case Qt::EditRole:
            return CellEdit(*listP, item, key);
        case Qt::CheckStateRole:
            return IsCheckBox(traits) ? CellEdit(*listP, item, key) : QVariant();
        case Qt::TextAlignmentRole: {
            const bool rightB = traits.TextJustification() == Justification::kRight;
            return QVariant::fromValue(Qt::AlignVCenter | (rightB ? Qt::AlignRight : Qt::AlignLeft));
        }
        case Qt::FontRole:
            if (IsPlayingRow(item)) {
                QFont font;
                font.setBold(true);
                return font;
            }
            return {};
        case Qt::ForegroundRole:
            if (IsPlayingRow(item)) return XLook::Now().playing;
            return IsMissingRow(item) ? QVariant(XLook::Now().quiet) : QVariant();
        case Qt::DecorationRole:
            return index.column() == 0 && IsPlayingRow(item) ? QVariant(Icon(IconKind::kPlay, IconInk::kPlaying))
                                                             : QVariant();
        default:
            return {};
    }
}

QVariant CSongTableModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || section < 0 || section >= columnCount()) return {};
    const CDataTraits& traits = MetaManager().GetTraits(i_columns[static_cast<std::size_t>(section)]);
    if (role == Qt::DisplayRole) {
        const QString title = KeyTitle(traits);
        return title.startsWith("* ") ? title.mid(2) : title;
    }
    if (role == Qt::TextAlignmentRole)
        return QVariant::fromValue(
            Qt::AlignVCenter | (traits.TextJustification() == Justification::kRight ? Qt::AlignRight : Qt::AlignLeft));
    return {};
}

Qt::ItemFlags CSongTableModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::ItemIsDropEnabled;
    const MetaKey key = i_columns[static_cast<std::size_t>(index.column())];
    const CDataTraits& traits = MetaManager().GetTraits(key);
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
    if (!IsEditable(traits) || (i_namesLockedB && key == "name"_key)) return flags;
    return flags | (IsCheckBox(traits) ? Qt::ItemIsUserCheckable : Qt::ItemIsEditable);
}

bool CSongTableModel::setData(const QModelIndex& index, const QVariant& value, int role) {
    CPlayList* const listP = List();
    const PLItemID item = ItemAt(index.row());
    if (listP == nullptr || item == SDB_kNoItem || (role != Qt::EditRole && role != Qt::CheckStateRole)) return false;
    const MetaKey key = i_columns[static_cast<std::size_t>(index.column())];
    if (!SetCell(i_database, *listP, item, key, value)) return false;
    emit dataChanged(index, index);
    return true;
}

void CSongTableModel::sort(int column, Qt::SortOrder order) {
    CPlayList* const listP = List();
    if (listP == nullptr || column < 0 || column >= columnCount()) return;
    const MetaKey key = i_columns[static_cast<std::size_t>(column)];
    listP->SetSort({{key, order == Qt::AscendingOrder}});
}

void CSongTableModel::SetPlaying(PlaylistID list, PLItemID item, SongID song) {
    if (list == i_playingList && item == i_playingItem && song == i_playingSong) return;
    i_playingList = list;
    i_playingItem = item;
    i_playingSong = song;
    if (!i_rows.empty()) emit dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
}
