#pragma once
#include <QWidget>

#include "Shell/CKeyMap.h"

class QLabel;
class QTreeWidget;
class QTreeWidgetItem;

/** The commands with their keys: a key is pressed to give it to a command, and what would be in conflict is said before
    and marked after.
    Threads  main. Works on a map of its own and tells of each change. */
class XKeysPage final : public QWidget {
    Q_OBJECT
public:
    explicit XKeysPage(CKeyMap map);
    [[nodiscard]] const CKeyMap& Map() const { return i_map; }

signals:
    void MapChanged();

private:
    void ShowRows();
    void ShowRow(QTreeWidgetItem& item);
    void OnSelected();
    [[nodiscard]] QTreeWidgetItem* Selected() const;
    void Take(const CKeyMap::Keys& keys);

    CKeyMap i_map;
    class KeyField;
    QTreeWidget* i_treeP;   // children
    KeyField* i_fieldP;
    QLabel* i_wordsP;
};
