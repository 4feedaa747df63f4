#pragma once
#include <memory>
#include <QAbstractTableModel>
#include <QTimer>
#include <vector>

#include "Library/CSongDatabase.h"
#include "Shell/CT_FilterRows.h"

/** One list of the library as a table: a row for each item in the shown order, or for those that match a filter. It
    keeps the ids of the rows and nothing else; a value is asked for when it is shown. A change that the library tells
    is gathered until the messages of this turn are through, and becomes the least that the view must hear.
    Threads  main. Goes before its database. */
class CSongTableModel final : public QAbstractTableModel, private CListWatcher {
    Q_OBJECT
public:
    static constexpr const char* kRowsMimeZ = "application/x-vopla-rows";

    explicit CSongTableModel(CSongDatabase& database);
    ~CSongTableModel() override;

    /** Shows this list; sorts it by a task when it has no order yet. */
    void SetList(PlaylistID list);
    [[nodiscard]] PlaylistID ListID() const { return i_list; }
    /** Null once it is gone. */
    [[nodiscard]] CPlayList* List() const { return i_database.GetPlayList(i_list); }
    void SetColumns(std::vector<MetaKey> columns);
    [[nodiscard]] const std::vector<MetaKey>& Columns() const { return i_columns; }
    /** The rows that match are shown as they are found; the old ones stand until the first. */
    void SetFilter(const CTextFilter& filter);
    [[nodiscard]] bool IsFiltering() const { return !i_filter.IsEmpty(); }
    [[nodiscard]] bool IsLooking() const { return i_resultRef != nullptr; }
    /** Songs keep their names, whoever clicks on them. */
    void SetNamesLocked(bool lockedB) { i_namesLockedB = lockedB; }
    /** The row that plays is marked, in its list, and the song in all others. */
    void SetPlaying(PlaylistID list, PLItemID item, SongID song);
    [[nodiscard]] bool IsPlayingRow(PLItemID item) const;

    [[nodiscard]] const std::vector<PLItemID>& Rows() const { return i_rows; }
    [[nodiscard]] PLItemID ItemAt(int row) const;
    /** -1 when it is not shown. */
    [[nodiscard]] int RowOf(PLItemID item) const;
    [[nodiscard]] SongID SongAt(int row) const;
    /** Does now what waits for the end of this turn. */
    void Settle();

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role) const override;
    bool setData(const QModelIndex& index, const QVariant& value, int role) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex& index) const override;
    void sort(int column, Qt::SortOrder order) override;
    QStringList mimeTypes() const override;
    QMimeData* mimeData(const QModelIndexList& indexes) const override;
    Qt::DropActions supportedDropActions() const override { return Qt::CopyAction | Qt::MoveAction; }
    bool canDropMimeData(const QMimeData* dataP, Qt::DropAction action, int row, int column,
                         const QModelIndex& parent) const override;
    bool dropMimeData(const QMimeData* dataP, Qt::DropAction action, int row, int column,
                      const QModelIndex& parent) override;

    /** Rows of this list, which may be moved, but not in the order that is shown. */
    [[nodiscard]] bool IsRefusedBySort(const QMimeData& data) const;
    /** Puts dragged rows of any list in front of row `where` (from 1) of `list`; false when they are no rows, or may
        not go there. */
    static bool DropRows(CSongDatabase& database, const QMimeData& data, PlaylistID list, RowIndex where);

signals:
    /** The rows change so much that the view starts anew; who wants to keep a selection saves it now, and sets it again
        after. */
    void AboutToReplace();
    void Replaced();
    /** The list's name, how many rows, of how many, and how long they last; or a sort began or ended. */
    void StateChanged();
    /** Files were dropped; `where` is a row of the user order from 1. */
    void FilesDropped(const QStringList& paths, PlaylistID list, RowIndex where);

private:
    void ListRemoved(PlaylistID list) override;
    void ListRenamed(PlaylistID list) override {
        if (list == i_list) emit StateChanged();
    }
    void ItemsChanged(PlaylistID list, ListMessage message, std::span<const PLItemID> items) override;
    void SortChanged(PlaylistID list, const SortSpec& spec, bool startedB) override;
    void DurationChanged(PlaylistID list) override {
        if (list == i_list) emit StateChanged();
    }

    [[nodiscard]] std::vector<PLItemID> ShownOrder() const;
    void Look();
    void Found(std::span<const PLItemID> items, bool lastB);
    /** Makes the shown rows these, by the smallest signals. */
    void ShowRows(std::vector<PLItemID> rows);
    bool ShowInserted(const std::vector<PLItemID>& rows);
    bool ShowRemoved(const std::vector<PLItemID>& rows);
    void ShowPermuted(std::vector<PLItemID> rows);
    void Replace(std::vector<PLItemID> rows);
    /** The files of its song were not found. */
    [[nodiscard]] bool IsMissingRow(PLItemID item) const;
    /** The row of the user order that a drop in front of table row `row` means, from 1. */
    [[nodiscard]] RowIndex DropRow(int row) const;

    CSongDatabase& i_database;
    PlaylistID i_list = kPlaylistID_Library;
    std::vector<MetaKey> i_columns;
    std::vector<PLItemID> i_rows;
    CTextFilter i_filter;
    std::shared_ptr<CFilterResult> i_resultRef;   // of the search that runs
    std::vector<PLItemID> i_found;                // of a search whose rows wait for its end
    bool i_gatherB = false;                       // the search that runs only brings the shown rows up to date
    bool i_firstPieceB = false;
    QTimer i_refresh;
    bool i_dirtyB = false;
    bool i_lookAgainB = false;
    PlaylistID i_playingList{0};
    PLItemID i_playingItem = SDB_kNoItem;
    SongID i_playingSong{0};
    bool i_namesLockedB = false;
};
