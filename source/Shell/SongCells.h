#pragma once
#include <QString>
#include <QStringList>
#include <QVariant>

#include "Library/CSongDatabase.h"

// What a cell of a song table shows, and what becomes of an edit. Main thread.

/** May the user change values of this key in the table? */
[[nodiscard]] bool IsEditable(const CDataTraits& traits);
/** True for a check box. */
[[nodiscard]] bool IsCheckBox(const CDataTraits& traits);
/** The items of the key's menu with the value of each; empty when it has none. */
struct MenuItem {
    QString text;
    int value;
};
[[nodiscard]] std::vector<MenuItem> MenuItemsOf(const CDataTraits& traits);

/** As people read it. */
[[nodiscard]] QString CellText(const CPlayList& list, PLItemID item, MetaKey key);
/** What an editor starts with: text, number of a menu, or Qt::CheckState. */
[[nodiscard]] QVariant CellEdit(const CPlayList& list, PLItemID item, MetaKey key);
/** Takes what a person typed or chose, for the row where its list keeps such a value, else for its song; true when
    something changed. */
bool SetCell(CSongDatabase& database, CPlayList& list, PLItemID item, MetaKey key, const QVariant& value);
