#pragma once
#include <QListWidget>
#include <QTimer>

#include "Library/CSongDatabase.h"

class XActions;

/** The column of lists: the library, then the others in their order. A name is edited in place; rows and files are
    dropped on it.
    Threads  main. Goes before its database. */
class XSourceList final : public QListWidget, private CListWatcher {
    Q_OBJECT
public:
    XSourceList(CSongDatabase& database, XActions& actions);
    ~XSourceList() override;

    [[nodiscard]] PlaylistID Selected() const;
    void Select(PlaylistID list);
    /** The name of a list, as people read it. */
    [[nodiscard]] static QString TitleOf(const CPlayList& list);
    void EditName(PlaylistID list);
    /** Lists keep their names. */
    void SetNamesLocked(bool lockedB);
    [[nodiscard]] bool NamesLocked() const { return i_namesLockedB; }

signals:
    /** A key that is no command here: for the search. */
    void Typed(const QString& text);
    void Chosen(PlaylistID list);
    /** The user gave the list this name. */
    void RenameAsked(PlaylistID list, const QString& name);
    void FilesDropped(const QStringList& paths, PlaylistID list, RowIndex where);

protected:
    QStringList mimeTypes() const override;
    void dragMoveEvent(QDragMoveEvent* eventP) override;
    void dropEvent(QDropEvent* eventP) override;
    void contextMenuEvent(QContextMenuEvent* eventP) override;
    void keyboardSearch(const QString& text) override { emit Typed(text); }
    /** The list that has the keys is always the marked one: Del never means another. */
    QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index, const QEvent* eventP) const override;
    void focusInEvent(QFocusEvent* eventP) override;
    void focusOutEvent(QFocusEvent* eventP) override;

private:
    void ListAdded(PlaylistID /*list*/) override { Refresh(); }
    void ListRemoved(PlaylistID list) override;
    void ListRenamed(PlaylistID /*list*/) override { Refresh(); }
    void ItemsChanged(PlaylistID list, ListMessage message, std::span<const PLItemID> items) override;
    void Refresh() { i_refresh.start(0); }
    void Fill();
    [[nodiscard]] CPlayList* ListOf(const QListWidgetItem* itemP) const;
    [[nodiscard]] CPlayList* DropTarget(const QDropEvent& event) const;
    void OnRenamed(QListWidgetItem* itemP);

    CSongDatabase& i_database;
    XActions& i_actions;
    QTimer i_refresh;
    bool i_fillingB = false, i_namesLockedB = false;
};
