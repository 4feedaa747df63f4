#include "Shell/XSongDelegate.h"

#include <QComboBox>
#include <QLineEdit>

#include "Meta/CMetaManager.h"
#include "Shell/CSongTableModel.h"
#include "Shell/SongCells.h"

QWidget* XSongDelegate::createEditor(QWidget* parentP, const QStyleOptionViewItem& option,
                                     const QModelIndex& index) const {
    const CDataTraits& traits = MetaManager().GetTraits(i_model.Columns()[static_cast<std::size_t>(index.column())]);
    const QString name = i_model.headerData(index.column(), Qt::Horizontal, Qt::DisplayRole).toString();
    QWidget* editorP = nullptr;   // the view owns it
    if (const std::vector<MenuItem> items = MenuItemsOf(traits); !items.empty()) {
        auto* const comboP = new QComboBox(parentP);
        for (const MenuItem& item : items) comboP->addItem(item.text, item.value);
        comboP->setCurrentIndex(-1);   // nothing yet: setEditorData
        editorP = comboP;
    } else {
        auto* const lineP = new QLineEdit(parentP);
        lineP->setFrame(false);
        editorP = lineP;
    }
    editorP->setFont(option.font);
    editorP->setAccessibleName(name);
    editorP->setAccessibleDescription(tr("Return keeps, Escape leaves it as it was, Tab goes on to the next"));
    return editorP;
}

void XSongDelegate::setEditorData(QWidget* editorP, const QModelIndex& index) const {
    // The view asks again whenever any row has changed: what the user is typing or choosing stays.
    const QVariant value = index.data(Qt::EditRole);
    if (auto* const comboP = qobject_cast<QComboBox*>(editorP); comboP != nullptr && comboP->currentIndex() < 0)
        comboP->setCurrentIndex(std::max(0, comboP->findData(value)));
    else if (auto* const lineP = qobject_cast<QLineEdit*>(editorP); lineP != nullptr && !lineP->isModified())
        if (lineP->text() != value.toString()) lineP->setText(value.toString());
}

void XSongDelegate::setModelData(QWidget* editorP, QAbstractItemModel* modelP, const QModelIndex& index) const {
    if (const auto* const comboP = qobject_cast<QComboBox*>(editorP))
        modelP->setData(index, comboP->currentData(), Qt::EditRole);
    else if (const auto* const lineP = qobject_cast<QLineEdit*>(editorP); lineP != nullptr && lineP->isModified())
        modelP->setData(index, lineP->text(), Qt::EditRole);
}

void XSongDelegate::initStyleOption(QStyleOptionViewItem* optionP, const QModelIndex& index) const {
    QStyledItemDelegate::initStyleOption(optionP, index);
    optionP->textElideMode = Qt::ElideRight;
    optionP->state &= ~QStyle::State_HasFocus;   // the row is marked, not a cell
}
