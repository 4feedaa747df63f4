#include "Library/SourceType.h"

#include "Core/Assertions.h"

namespace {

// What is true of a kind.
constexpr unsigned kSinger = 0x01, kModify = 0x02, kSave = 0x04, kVenue = 0x08, kEntry = 0x10;

struct SourceRow {
    SourceType type;
    const char* titleZ;
    MetaKey sortKey;
    unsigned flags;
};
constexpr SourceRow kSource_Rows[] = {
    {kSourceDB_LIBRARY, "Library", "soID"_key, kSave | kEntry},
    {kSourceDB_CD, "CD-ROM", "trak"_key, kSave | kEntry},
    {kSourceDB_PLAYLIST, "Playlist", "stIx"_key, kModify | kSave | kEntry},
    {kSourceDB_ROTATION, "Rotation", "stIx"_key, kVenue | kEntry},
    {kSourceDB_VENUE, "", "SNGR"_key, kVenue | kEntry},
    {kSourceDB_KJ_ROTATION, "KJ Rotation", "stIx"_key, kVenue | kEntry},
    {kSourceDB_SINGER_PL_TONIGHT, "Tonight", "stIx"_key, kSinger | kModify | kSave | kVenue},
    {kSourceDB_SINGER_PL_FAVORITES, "Favorites", "stIx"_key, kSinger | kModify | kSave | kVenue},
    {kSourceDB_SINGER_PL_HISTORY, "History", "stIx"_key, kSinger | kModify | kSave | kVenue},
    {kSourceDB_SINGER_PL_FOLDER, "", CM_Key_SORT_INDEX, kSinger | kModify | kSave | kVenue},
    {kSourceDB_SINGER_PL_OTHER, "", CM_Key_SORT_INDEX, kSinger | kModify | kSave | kVenue},
    {kSourceDB_SOURCE, "Source", "SRCE"_key, 0},
    {kSourceDB_MUSIC_STORES, "Music Stores", "name"_key, kEntry},
};
constexpr SourceRow kSource_Store{kSourceDB_STORE_FIRST, "", CM_Key_SORT_INDEX, kSave};
constexpr SourceRow kSource_Unknown{kSourceDB_NONE, "", CM_Key_SORT_INDEX, 0};

const SourceRow& RowOf(SourceType type) {
    if (Is_MusicStore_PlayList(type)) return kSource_Store;
    for (const SourceRow& row : kSource_Rows)
        if (row.type == type) return row;
    return kSource_Unknown;
}
bool Has(SourceType type, unsigned flag) { return (RowOf(type).flags & flag) != 0; }

}   // namespace

bool IsSourceType(std::int32_t number) {
    return number > 0 && number <= static_cast<std::int32_t>(kSourceDB_STORE_LAST) &&
           &RowOf(static_cast<SourceType>(number)) != &kSource_Unknown;
}
const char* GetSourceName(SourceType type) { return RowOf(type).titleZ; }
MetaKey DefaultSortKey(SourceType type) { return RowOf(type).sortKey; }

bool IsSingerList(SourceType type) { return Has(type, kSinger); }
bool Is_CD_PlayList(SourceType type) { return type == kSourceDB_CD; }
bool Is_MusicStore_PlayList(SourceType type) { return type >= kSourceDB_STORE_FIRST && type <= kSourceDB_STORE_LAST; }
bool IsRotation(SourceType type) { return type == kSourceDB_ROTATION || type == kSourceDB_KJ_ROTATION; }
bool IsModifyable(SourceType type) { return Has(type, kModify); }
bool IsSaveable(SourceType type) { return Has(type, kSave); }
bool IsPartOfVenue(SourceType type) { return Has(type, kVenue); }
bool IsSourcesEntry(SourceType type) { return Has(type, kEntry); }

std::size_t SourcePlace(SourceType type) {
    // 10 and 13 keep their places, should lists of these kinds ever come.
    static constexpr std::int16_t s_sortIndexVec[] = {1, 4, 6, 17, 5, 13, 2, 10, 3, 14, 7, 8, 9, 15};
    const auto it = std::ranges::find(s_sortIndexVec, static_cast<std::int16_t>(type));
    (void)AssertWords(it != std::end(s_sortIndexVec), "it != s_sortIndexVec.end()");
    return static_cast<std::size_t>(it - std::begin(s_sortIndexVec));
}
