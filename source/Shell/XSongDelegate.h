#pragma once
#include <QStyledItemDelegate>

class CSongTableModel;

/** Editors of the cells: a text field, or the menu of a key. The mark of the row that plays stands in front of its
    name.
    Owner    the table.
    Threads  main. */
class XSongDelegate final : public QStyledItemDelegate {
    Q_OBJECT
public:
    XSongDelegate(const CSongTableModel& model, QObject* parentP) : QStyledItemDelegate(parentP), i_model(model) {}

    QWidget* createEditor(QWidget* parentP, const QStyleOptionViewItem& option,
                          const QModelIndex& index) const override;
    void setEditorData(QWidget* editorP, const QModelIndex& index) const override;
    void setModelData(QWidget* editorP, QAbstractItemModel* modelP, const QModelIndex& index) const override;

protected:
    void initStyleOption(QStyleOptionViewItem* optionP, const QModelIndex& index) const override;

private:
    const CSongTableModel& i_model;
};
