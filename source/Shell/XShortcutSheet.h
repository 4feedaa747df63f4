#pragma once
#include <QDialog>

class CKeyMap;

/** All keys on one sheet, by groups, from the same table as the keys themselves.
    Threads  main. */
class XShortcutSheet final : public QDialog {
    Q_OBJECT
public:
    XShortcutSheet(const CKeyMap& keys, QWidget* parentP);
};
