#include "Library/CPlaylistWriter.h"

#include "Core/CCFXmlWriter.h"

CPlaylistWriter::CPlaylistWriter(const CPlayList& list) : i_keys(list.OtherKeys()), i_rows(list.Items()) {
    i_keys.Set("Name", list.Name());
    i_keys.Set("Playlist ID", Number(list.ID()));
    i_keys.Set("Playlist Type", static_cast<std::int32_t>(list.Type()));
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
    (void)i_rows->UpdateIndices();   // on a lock of its own, so that the copy below holds it for the copy alone
    std::uint32_t nextStampL = 0;
    std::vector<PLRow> rows = i_rows->Snapshot(nextStampL);
    const bool ownValuesB = i_rows->HasRowValues();
    // The row numbers are those of one moment, so they are 1 to the number of rows.
    std::vector<std::uint32_t> places(rows.size());
    for (std::uint32_t n = 0; n < rows.size(); ++n) places[rows[n].row - 1] = n;
    for (const std::uint32_t n : places) WriteRow(writer, rows[n], ownValuesB);
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
