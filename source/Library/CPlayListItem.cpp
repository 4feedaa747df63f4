#include "Library/CPlayListItem.h"

PLTarget CPlayListItem::Target() const noexcept {
    return i_itemType == SDB_kPLItem_SINGER ? PLTarget(SingerID{i_targetL}) : PLTarget(SongID{i_targetL});
}
SongID CPlayListItem::GetSongID() const noexcept {
    return SongID{i_itemType == SDB_kPLItem_SONG ? i_targetL : SDB_kOrphanID};
}
SingerID CPlayListItem::GetSingerID() const noexcept {
    return SingerID{i_itemType == SDB_kPLItem_SINGER ? i_targetL : SDB_kOrphanID};
}
