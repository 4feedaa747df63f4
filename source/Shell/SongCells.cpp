#include "Shell/SongCells.h"

#include "Core/NumberForms.h"
#include "Meta/CDataTraits_Menus.h"
#include "Meta/CMetaManager.h"
#include "Meta/TempoSteps.h"
#include "Widgets/QtText.h"

namespace {

constexpr long kMenu_MostItems = 32;

}   // namespace

bool IsEditable(const CDataTraits& traits) {
    if (traits.Has(kKeyFlag_Hidden)) return false;
    if (traits.Has(kKeyFlag_Popup)) return !MenuItemsOf(traits).empty();
    const ValType type = traits.Type();
    const bool typedB = type == ValType::ValType_STRING || type == ValType::ValType_INTEGER ||
                        type == ValType::ValType_FLOAT || type == ValType::ValType_BOOL;
    return typedB && (traits.ColumnFlags() & kColumn_Mutable) != 0;
}

bool IsCheckBox(const CDataTraits& traits) { return traits.Type() == ValType::ValType_BOOL; }

std::vector<MenuItem> MenuItemsOf(const CDataTraits& traits) {
    std::vector<MenuItem> items;
    if (!traits.Has(kKeyFlag_Popup) || traits.Type() != ValType::ValType_INTEGER) return items;
    for (long index = 0; index <= kMenu_MostItems; ++index) {
        const long value = traits.MenuIndexToValue(index);
        if (traits.ValueToMenuIndex(value) != index) continue;
        if (const SuperString text = traits.GetMenuItemText(value); !text.Empty())
            items.push_back({QtText(text), static_cast<int>(value)});
    }
    return items;
}

QString CellText(const CPlayList& list, PLItemID item, MetaKey key) {
    return QtText(MetaManager().GetTraits(key).Display(list.ValueOf(item, key)));
}

QVariant CellEdit(const CPlayList& list, PLItemID item, MetaKey key) {
    const CDataTraits& traits = MetaManager().GetTraits(key);
    const CMetaValue value = list.ValueOf(item, key);
    if (IsCheckBox(traits)) {
        switch (value.Bool()) {
            case BoolValueType::kTrue:
                return Qt::Checked;
            case BoolValueType::kMix:
                return Qt::PartiallyChecked;
            case BoolValueType::kFalse:
                return Qt::Unchecked;
        }
    }
    if (traits.Has(kKeyFlag_Popup)) return static_cast<int>(value ? value.Integer() : traits.GetDefaultInteger());
    return QtText(traits.Display(value));
}

bool SetCell(CSongDatabase& database, CPlayList& list, PLItemID item, MetaKey key, const QVariant& value) {
    CDataTraits& traits = MetaManager().GetTraits(key);
    if (!IsEditable(traits)) return false;
    const auto row = list.Items()->Get(item);
    if (!row || row->target.type != SDB_kPLItem_SONG) return false;
    CSong* const songP = database.GetSong(SongID{row->target.idL});
    if (songP == nullptr) return false;
    const bool rowB = list.KeepsInRow(key);
    if (IsCheckBox(traits)) {
        const bool onB = value.toInt() != Qt::Unchecked;
        if (rowB) return list.SetRowValue(item, key, CMetaValue(onB ? BoolValueType::kTrue : BoolValueType::kFalse));
        return songP->Meta().SetBool(key, onB);
    }
    if (traits.Has(kKeyFlag_Popup)) {
        const int number = value.toInt();
        if (rowB) return list.SetRowValue(item, key, CMetaValue(traits.Usable(number)));
        return songP->Meta().SetInteger(key, number);
    }
    const SuperString typed = traits.ToDisplayFromString(SuperString(value.toString().toStdString()));
    if (rowB && traits.Type() == ValType::ValType_FLOAT) {
        const std::optional<double> typedF = ReadWholePersonsNumber(value.toString().toStdString());
        if (!typedF) return false;
        const double number = key == "TMPO"_key ? QuantizedTempo(static_cast<float>(*typedF)) : *typedF;
        return list.SetRowValue(item, key, CMetaValue(number));
    }
    return songP->Meta().SetString(key, typed);
}
