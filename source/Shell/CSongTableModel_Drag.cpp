// Rows and files that are dragged into and out of a song table.
#include <QDataStream>
#include <QIODevice>
#include <QMimeData>

#include "App/CAlerts.h"
#include "Shell/CSongTableModel.h"
#include "Shell/FileDrop.h"

namespace {

struct DraggedRows {
    PlaylistID list{0};
    std::vector<PLItemID> items;
};

/** Nothing for other data. What another program wrote under our name is checked by whoever uses the ids. */
std::optional<DraggedRows> ReadRows(const QMimeData& data) {
    if (!data.hasFormat(CSongTableModel::kRowsMimeZ)) return std::nullopt;
    QDataStream stream(data.data(CSongTableModel::kRowsMimeZ));
    DraggedRows rows;
    qint32 list = 0;
    stream >> list;
    rows.list = PlaylistID{list};
    while (!stream.atEnd()) {
        qint32 id = 0;
        stream >> id;
        if (stream.status() != QDataStream::Ok) return std::nullopt;
        rows.items.push_back(PLItemID{id});
    }
    return rows;
}

}   // namespace

QStringList CSongTableModel::mimeTypes() const { return {kRowsMimeZ, "text/uri-list"}; }

QMimeData* CSongTableModel::mimeData(const QModelIndexList& indexes) const {
    std::vector<int> rows;
    rows.reserve(static_cast<std::size_t>(indexes.size()));
    for (const QModelIndex& index : indexes) rows.push_back(index.row());
    std::ranges::sort(rows);
    rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    QByteArray bytes;
    QDataStream stream(&bytes, QIODevice::WriteOnly);
    stream << static_cast<qint32>(Number(i_list));
    for (const int row : rows) stream << static_cast<qint32>(Number(ItemAt(row)));
    auto* const dataP = new QMimeData;   // the drag owns it
    dataP->setData(kRowsMimeZ, bytes);
    return dataP;
}

RowIndex CSongTableModel::DropRow(int row) const {
    const CPlayList* const listP = List();
    // Behind the last row, or between rows that stand in another order: at the end.
    if (listP == nullptr || row < 0 || row >= rowCount() || MainKey(listP->Spec()) != kKey_UserOrder)
        return SDB_Index_END;
    return listP->GetPLI_Index(ItemAt(row));
}

bool CSongTableModel::canDropMimeData(const QMimeData* dataP, Qt::DropAction, int, int, const QModelIndex&) const {
    const CPlayList* const listP = List();
    if (dataP == nullptr || listP == nullptr) return false;
    if (dataP->hasUrls()) return true;
    const auto rows = ReadRows(*dataP);
    if (!rows || !listP->IsModifyable()) return false;
    // Rows of this list are put into another order only where that order is shown.
    return rows->list != i_list || MainKey(listP->Spec()) == kKey_UserOrder;
}

bool CSongTableModel::IsRefusedBySort(const QMimeData& data) const {
    const CPlayList* const listP = List();
    if (listP == nullptr || data.hasUrls() || !listP->IsModifyable() || MainKey(listP->Spec()) == kKey_UserOrder)
        return false;
    const auto rows = ReadRows(data);
    return rows && rows->list == i_list;
}

bool CSongTableModel::dropMimeData(const QMimeData* dataP, Qt::DropAction action, int row, int column,
                                   const QModelIndex& parent) {
    if (!canDropMimeData(dataP, action, row, column, parent)) return false;
    if (row < 0 && parent.isValid()) row = parent.row();   // on a row: in front of it
    const RowIndex where = DropRow(row);
    if (!dataP->hasUrls()) return DropRows(i_database, *dataP, i_list, where);
    const QStringList paths = LocalFiles(*dataP);
    if (!paths.isEmpty()) emit FilesDropped(paths, i_list, where);
    return !paths.isEmpty();
}

bool CSongTableModel::DropRows(CSongDatabase& database, const QMimeData& data, PlaylistID list, RowIndex where) {
    const auto rows = ReadRows(data);
    CPlayList* const toP = database.GetPlayList(list);
    if (!rows || toP == nullptr || !toP->IsModifyable()) return false;
    if (rows->list == list) {
        std::vector<PLItemID> items = rows->items;
        std::erase_if(items, [&](PLItemID id) { return !toP->Items()->Get(id); });
        const RowIndex end = static_cast<RowIndex>(toP->Count()) + 1;
        return !items.empty() && toP->MoveItems(items, where == SDB_Index_END ? end : where) != SDB_Index_NONE;
    }
    const CPlayList* const fromP = database.GetPlayList(rows->list);
    if (fromP == nullptr) return false;
    std::vector<PLNewItem> items;
    for (const PLItemID id : rows->items)
        if (const auto row = fromP->Items()->Get(id); row && row->target.type == SDB_kPLItem_SONG)
            items.push_back({row->target});
    if (items.empty()) return false;
    toP->AddItemVec(std::move(items), where);
    return true;
}
