#include "Library/CRowValues.h"

#include <map>

#include "Library/CRowSorter.h"
#include "Meta/CMetaManager.h"

namespace {

constexpr std::size_t kBlock = 512;   // rows under one lock of the song map: some 0.1 ms

/** Values that are the row's place; none for other keys. */
CMetaValue PlaceValue(const PLRow& row, MetaKey key, PlaylistID list) {
    if (key == CM_Key_SORT_INDEX) return CMetaValue(Number(row.id));
    if (key == "stIx"_key) return CMetaValue(static_cast<std::int32_t>(row.row));
    if (key == CM_Key_PLAYLIST_ID) return CMetaValue(Number(list));
    return {};
}

/** What is chosen from a menu stands by the words that are shown; pitches are numbers there, too. */
bool SortsByMenuText(const CDataTraits& traits) {
    return traits.Has(kKeyFlag_Popup) && traits.Type() == ValType::ValType_INTEGER && traits.Key() != "PICH"_key;
}

/** What rows are sorted by: the words of a menu in place of its numbers. */
std::vector<CMetaValue> SortValues(std::vector<CMetaValue> values, MetaKey key) {
    const CDataTraits& traits = MetaManager().GetTraits(key);
    if (!SortsByMenuText(traits)) return values;
    std::map<std::int32_t, CMetaValue> texts;   // a menu has few of them
    for (CMetaValue& value : values) {
        if (!value) continue;
        CMetaValue& text = texts[value.Integer()];
        if (!text) text = CMetaValue(CMetaText::Of(traits.Display(value).UTF8()));
        value = text;
    }
    return values;
}

}   // namespace

CMetaValue CRowValues::Value(const PLRow& row, MetaKey key) const { return Column(std::span(&row, 1), key).front(); }

std::vector<CMetaValue> CRowValues::Column(std::span<const PLRow> rows, MetaKey key) const {
    std::vector<CMetaValue> values(rows.size());
    if (key == CM_Key_SORT_INDEX || key == "stIx"_key || key == CM_Key_PLAYLIST_ID) {
        for (std::size_t n = 0; n < rows.size(); ++n) values[n] = PlaceValue(rows[n], key, i_list);
        return values;
    }
    for (std::size_t begin = 0; begin < rows.size(); begin += kBlock) {
        const std::size_t end = std::min(rows.size(), begin + kBlock);
        i_songsRef->WithMany([&](const auto& find) {
            for (std::size_t n = begin; n < end; ++n) {
                if (rows[n].target.type != SDB_kPLItem_SONG) continue;
                if (CSong* songP = find(SongID{rows[n].target.idL}))
                    values[n] = songP->Meta().Value(key, ValueMode::kMakeIfAllowed);
            }
        });
    }
    if (i_singersRef != nullptr)
        for (std::size_t n = 0; n < rows.size(); ++n)
            if (rows[n].target.type == SDB_kPLItem_SINGER)
                values[n] = i_singersRef->Value(SingerID{rows[n].target.idL}, key);
    const bool ownB = CMeta_PLItem::IsRowKey(key) && (i_tunesB || !CMeta_PLItem::IsTuningKey(key));
    if (ownB && i_listRef->HasRowValues())
        for (std::size_t n = 0; n < rows.size(); ++n)
            if (CMetaValue own = i_listRef->RowValue(rows[n].id, rows[n].stampL, key)) values[n] = std::move(own);
    return values;
}

int CRowValues::Compare(const PLRow& a, const PLRow& b, const SortSpec& spec) const {
    for (const MetaSortKey& by : spec)
        if (const int order = CompareValues(SortValues({Value(a, by.key)}, by.key).front(),
                                            SortValues({Value(b, by.key)}, by.key).front(), by);
            order != 0)
            return order;
    return a.id < b.id ? -1 : b.id < a.id ? 1 : 0;
}

std::vector<PLRow> CRowValues::Sorted(std::span<const PLRow> rows, const SortSpec& spec) const {
    CRowSorter sorter(rows.size());
    for (const MetaSortKey& by : spec) sorter.AddColumn(by, SortValues(Column(rows, by.key), by.key));
    std::vector<PLRow> sorted;
    sorted.reserve(rows.size());
    for (const std::uint32_t n : sorter.Sort()) sorted.push_back(rows[n]);
    return sorted;
}
