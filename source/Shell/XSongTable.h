#pragma once
#include <QTableView>
#include <QTimer>

#include "Shell/CSongTableModel.h"

class CPreferences;
class XActions;

/** The songs of a list: columns chosen by a menu over the header, a click on it sorts, cells are edited in place, rows
    and files are dragged. Keeps the selection by the ids of its rows when the table starts anew.
    Threads  main. */
class XSongTable final : public QTableView {
    Q_OBJECT
public:
    XSongTable(CSongTableModel& model, CPreferences& prefs, XActions& actions);

    [[nodiscard]] std::vector<PLItemID> SelectedItems() const;
    void SelectItem(PLItemID item);
    /** The row under the cursor, else the first one selected, else the first. */
    [[nodiscard]] PLItemID CurrentItem() const;
    /** Edits the cell under the cursor, or the first one of its row that can be. */
    void EditCurrent();
    /** Which columns are shown, as a menu of check marks. */
    void FillColumnMenu(QMenu& menu);
    /** Keeps the columns for the list that is shown, if the user has changed them. */
    void SaveColumns();
    /** Rows are as high as it wants. */
    void SetFont(const QFont& font);
    /** A click on what is selected edits it after so many seconds. */
    void SetEditWait(double seconds);
    [[nodiscard]] bool IsEditComing() const { return i_editWait.isActive(); }
    /** Words in the middle of an empty table. */
    void SetHint(const QString& title, const QString& text);

signals:
    void PlayAsked(PLItemID item);
    void SelectionTold();
    /** Rows were to be moved in a sorted order, which has no place for that. */
    void MoveRefused(const QPoint& global);
    /** A key that is no command here: for the search. */
    void Typed(const QString& text);

protected:
    void paintEvent(QPaintEvent* eventP) override;
    QModelIndex moveCursor(CursorAction action, Qt::KeyboardModifiers modifiers) override;
    void contextMenuEvent(QContextMenuEvent* eventP) override;
    void mousePressEvent(QMouseEvent* eventP) override;
    void mouseReleaseEvent(QMouseEvent* eventP) override;
    bool event(QEvent* eventP) override;
    void keyPressEvent(QKeyEvent* eventP) override;
    void mouseDoubleClickEvent(QMouseEvent* eventP) override;
    void selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) override;
    void resizeEvent(QResizeEvent* eventP) override;
    void startDrag(Qt::DropActions actions) override;
    void dragMoveEvent(QDragMoveEvent* eventP) override;
    void dropEvent(QDropEvent* eventP) override;
    void keyboardSearch(const QString& text) override { emit Typed(text); }

private:
    void LoadColumns();
    void AddColumnAction(QMenu& menu, MetaKey key);
    [[nodiscard]] CCFDictionary ColumnsNow() const;
    void ApplyWidths();
    void SetColumns(const std::vector<MetaKey>& columns);
    void ShowSortMark();
    void KeepSelection();
    void RestoreSelection();

    CSongTableModel& i_model;
    CPreferences& i_prefs;
    XActions& i_actions;
    std::map<MetaKey, int> i_widths;
    CCFDictionary i_keptColumns;   // as they were loaded
    PlaylistID i_columnsOf{0};     // whose they are
    QTimer i_columnsLast;          // the user drags the header
    std::vector<PLItemID> i_keptSelection;
    PLItemID i_keptCurrent = SDB_kNoItem;
    PlaylistID i_keptList{0};
    int i_keptScroll = 0;
    QTimer i_editWait;   // after a click on i_editAt
    QPersistentModelIndex i_editAt;
    PLItemID i_doubleClicked = SDB_kNoItem;
    quint64 i_doubleClickedAt = 0;   // milliseconds of the event
    QString i_hintTitle, i_hintText;
};
