#include "Storage/PlaylistRecord.h"

#include <limits>

#include "Core/CLog.h"
#include "Library/ReadID.h"
#include "Values/CCFXmlWriter.h"

namespace {
// The keys of a row.
constexpr std::string_view kItem_ID = "ID", kItem_SongID = "Song ID", kItem_Song = "Song", kItem_Singer = "Singer",
                           kItem_Type = "Item Type", kItem_Play = "Play", kPlaylist_Items = "Playlist Items";
}   // namespace

PlaylistItemRecord PlaylistItemRecord::FromDictionary(const CCFDictionary& dictionary) {
    PlaylistItemRecord item;
    const auto kind = dictionary.GetInteger(kItem_Type, dictionary.Has(kItem_Singer) ? 2 : 1);
    item.kind = kind == 2 ? PlaylistItemKind::kSinger : PlaylistItemKind::kSong;
    item.itemID = ReadID(dictionary, kItem_ID);
    if (item.kind == PlaylistItemKind::kSinger)
        item.sourceID = ReadID(dictionary, kItem_Singer);
    else
        item.sourceID = ReadID(dictionary, dictionary.Has(kItem_SongID) ? kItem_SongID : kItem_Song);
    if (dictionary.Has(kItem_Play)) item.playB = dictionary.GetBool(kItem_Play);
    for (const auto& [key, value] : dictionary) {
        const bool ownB = key == kItem_ID || key == kItem_SongID || key == kItem_Song || key == kItem_Singer ||
                          key == kItem_Type || key == kItem_Play;
        if (!ownB) item.meta.Set(key, value);
    }
    return item;
}

CCFDictionary PlaylistItemRecord::ToDictionary() const {
    CCFDictionary dictionary = meta;
    if (itemID != 0) dictionary.Set(kItem_ID, static_cast<std::int64_t>(itemID));
    const bool singerB = kind == PlaylistItemKind::kSinger;
    if (sourceID != 0) dictionary.Set(singerB ? kItem_Singer : kItem_SongID, static_cast<std::int64_t>(sourceID));
    if (sourceID != 0 || singerB) dictionary.Set(kItem_Type, static_cast<std::int64_t>(kind));
    if (playB) dictionary.Set(kItem_Play, *playB);
    return dictionary;
}

std::uint32_t PlaylistRecord::ID() const { return ReadID(keys, "Playlist ID"); }

void PlaylistRecord::Write(CCFXmlWriter& writer) const {
    writer.BeginDictionary();
    for (const auto& [key, value] : keys) {
        if (key == kPlaylist_Items) continue;
        writer.Key(key);
        writer.Value(value);
    }
    if (items) {
        writer.Key(kPlaylist_Items);
        writer.BeginArray();
        for (const PlaylistItemRecord& item : *items) writer.Value(item.ToDictionary());
        writer.End();
    }
    writer.End();
}
