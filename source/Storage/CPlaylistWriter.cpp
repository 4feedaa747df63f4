#include "Storage/CPlaylistWriter.h"

#include "Values/CCFXmlWriter.h"

namespace {

void SetNames(const CPlayList& list, CCFDictionary& keys) {
    keys.Set("Name", list.Name());
    keys.Set("Playlist ID", Number(list.ID()));
    keys.Set("Playlist Type", static_cast<std::int32_t>(list.Type()));
}

}   // namespace

PlaylistRecord CPlaylistWriter::Reference(const CPlayList& list) {
    PlaylistRecord reference;
    SetNames(list, reference.keys);
    return reference;
}

CPlaylistWriter::CPlaylistWriter(const CPlayList& list) : i_keys(list.OtherKeys()), i_rows(list.Items()) {
    SetNames(list, i_keys);
    i_keys.Set("Sort By", static_cast<std::int64_t>(MainKey(list.Spec())));
    i_keys.Set("Ascending", list.Spec().empty() || list.Spec().front().ascendingB ? 1 : 0);
    if (Number(list.SelectedItem()) > 0) i_keys.Set("Current Playlist Item ID", Number(list.SelectedItem()));
    if (!list.Columns().Empty()) i_keys.Set("Columns", list.Columns());
}

void CPlaylistWriter::Write(CCFXmlWriter& writer) const {
    writer.BeginDictionary();
    for (const auto& [key, value] : i_keys) {
        writer.Key(key);
        writer.Value(value);
    }
    writer.Key("Playlist Items");
    writer.BeginArray();
    const std::vector<PLRow> rows = i_rows->RowsInBlocks();
    const bool ownValuesB = i_rows->HasRowValues();
    for (const PLRow& row : rows) WriteRow(writer, row, ownValuesB);
    writer.End();
    writer.End();
}

void CPlaylistWriter::WriteRow(CCFXmlWriter& writer, const PLRow& row, bool ownValuesB) const {
    const auto put = [&writer](std::string_view key, const CCFValue& value) {
        writer.Key(key);
        writer.Value(value);
    };
    const bool singerB = row.target.type == SDB_kPLItem_SINGER;
    writer.BeginDictionary();
    put("ID", Number(row.id));
    put("Item Type", singerB ? 2 : 1);
    if (row.target.idL > 0) put(singerB ? "Singer" : "Song ID", row.target.idL);
    if (ownValuesB)
        for (const auto& [key, value] : i_rows->RowDictionary(row.id, row.stampL))
            put(key == MetaKeyText("PLME"_key) ? "Play" : std::string_view(key), value);
    writer.End();
}
