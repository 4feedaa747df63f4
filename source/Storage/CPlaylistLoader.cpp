#include "Storage/CPlaylistLoader.h"

#include <limits>

#include "Core/CLog.h"
#include "Library/ReadID.h"

namespace {

constexpr std::uint32_t kMost_ID = std::numeric_limits<std::int32_t>::max();
// Keys of a list that are fields of it; the others are kept as they are.
constexpr std::string_view kKey_Name = "Name", kKey_ID = "Playlist ID", kKey_Type = "Playlist Type",
                           kKey_SortBy = "Sort By", kKey_Ascending = "Ascending",
                           kKey_Current = "Current Playlist Item ID", kKey_Columns = "Columns";

bool ReadFlag(const CCFDictionary& keys, std::string_view key, bool defaultB) {
    const CCFValue* valueP = keys.Find(key);
    if (valueP == nullptr) return defaultB;
    if (const auto flag = valueP->Bool()) return *flag;
    return valueP->Integer().value_or(defaultB ? 1 : 0) != 0;
}

/** The row's own values, and the keys that have no value here. */
std::unique_ptr<CMeta_PLItem> MakeRowMeta(const PlaylistItemRecord& record) {
    CCFDictionary own, others;
    for (const auto& [key, value] : record.meta) {
        const bool rowKeyB = key == MetaKeyText("PICH"_key) || key == MetaKeyText("TMPO"_key);
        (rowKeyB ? own : others).Set(key, value);
    }
    auto metaP = std::make_unique<CMeta_PLItem>();
    {
        const CMeta::QuietChanges quiet(*metaP);
        metaP->FromDictionary(own);
        if (record.playB) metaP->SetBool("PLME"_key, *record.playB);
    }
    metaP->SetDirty(false);
    if (metaP->AllStored().empty() && others.Empty()) return nullptr;
    metaP->SetOtherKeys(std::move(others));
    return metaP;
}

}   // namespace

PlaylistID PlaylistIDOf(std::uint32_t number) {
    return number == 0 || number > kMost_ID ? kPlaylistID_New : PlaylistID{static_cast<std::int32_t>(number)};
}

CPlayList* CPlaylistLoader::Load(const PlaylistRecord& record, SourceType type) {
    const SuperString name = record.Name();
    LogF("Building Playlist: %s", name.CString());
    if (Is_CD_PlayList(type) || type == kSourceDB_SOURCE) {
        i_database.NoteID(Number(PlaylistIDOf(record.ID())));   // its file stays, so its id stays taken
        LogF("Playlist %s somehow came out uninitialized", name.CString());
        return nullptr;
    }
    CPlayList& list = i_database.AddPlaylist(type, name, PlaylistIDOf(record.ID()));
    Fill(list, record);
    return &list;
}

void CPlaylistLoader::Fill(CPlayList& list, const PlaylistRecord& record) {
    std::vector<PLNewItem> items;
    if (record.items) {
        items.reserve(record.items->size());
        for (const PlaylistItemRecord& row : *record.items)
            if (PLNewItem item; MakeItem(list, row, item)) items.push_back(std::move(item));
    }
    (void)list.AddItemVec(std::move(items));
    CCFDictionary others = record.keys;
    for (const std::string_view key :
         {kKey_Name, kKey_ID, kKey_Type, kKey_SortBy, kKey_Ascending, kKey_Current, kKey_Columns})
        others.Remove(key);
    list.SetOtherKeys(std::move(others));
    list.SetColumns(record.keys.GetDictionary(kKey_Columns));
    const std::int64_t sortL = record.keys.GetInteger(kKey_SortBy);
    const auto code = static_cast<std::uint32_t>(sortL);   // 32 bits, of whatever sign the writer gave them
    if (code != 0 && (sortL == code || sortL == static_cast<std::int32_t>(code)))
        list.SetSavedSort(MetaKey{code}, ReadFlag(record.keys, kKey_Ascending, true));
    const std::uint32_t current = ReadID(record.keys, kKey_Current);
    if (current != 0 && current <= kMost_ID) list.SetSelectedItem(PLItemID{static_cast<std::int32_t>(current)});
}

bool CPlaylistLoader::MakeItem(const CPlayList& list, const PlaylistItemRecord& record, PLNewItem& item) {
    const bool idB = record.sourceID != 0 && record.sourceID <= kMost_ID;
    const std::int32_t number = idB ? static_cast<std::int32_t>(record.sourceID) : SDB_kOrphanID;
    if (record.kind == PlaylistItemKind::kSinger) {
        if (!idB) return false;
        item.target = SingerID{number};
    } else {
        const bool thereB = idB && i_database.WithSong(SongID{number}, [](CSong&) {});
        if (idB && !thereB) i_database.NoteID(number);
        if (!thereB && (i_dropB || list.ID() == kPlaylistID_Library)) {
            LogF("### Error the song %d of the playlist %s is not there", number, list.Name().CString());
            ++i_lostL;
            return false;
        }
        item.target = SongID{number};
    }
    if (record.itemID != 0 && record.itemID <= kMost_ID)
        item.wanted = PLItemID{static_cast<std::int32_t>(record.itemID)};
    if (record.playB || !record.meta.Empty()) item.metaP = MakeRowMeta(record);
    return true;
}
