#include "Storage/CSongsXML.h"

#include <limits>

#include "Core/CLog.h"
#include "Library/CSongDatabase.h"
#include "Values/FileRefDictionary.h"

namespace {

struct Field {
    std::string_view name;
    MetaKey key;
};
constexpr Field kSong_Texts[] = {{"Name", "name"_key},
                                 {"Artist", "arts"_key},
                                 {"Album", "albm"_key},
                                 {"Genre", "genr"_key},
                                 {"FreeDB extended data", "cmmt"_key}};
constexpr Field kNumbers[] = {{"Track Number", "trak"_key}, {"Year", "cryr"_key}, {"Times Sung", "tsng"_key}};
struct Location {
    std::string_view name;
    SDB_SongFile type;
};
constexpr Location kLocations[] = {{"CDG Location", SDB_SongFile_VIDEO},
                                   {"Audio Location", SDB_SongFile_AUDIO},
                                   {"Zip Location", SDB_SongFile_ZIP},
                                   {"Project Location", SDB_SongFile_PROJECT},
                                   {"Launch File Location", SDB_SongFile_LAUNCH}};
constexpr std::int64_t kSector_300ths = 4;   // 75 sectors a second

/** A path, or the dictionary of a file reference. */
bool ReadLocation(const CCFValue& value, CFileRef& file) {
    if (const SuperString* textP = value.String()) {
        if (textP->Empty()) return false;
        file = CFileRef(std::filesystem::path(textP->UTF8()));
        return true;
    }
    return value.Dictionary() != nullptr && !Failed(ReadFileRef(*value.Dictionary(), file)) && !file.IsEmpty();
}

}   // namespace

OSErr CSongsXML::Load(const CFileRef& file, const std::function<void(std::uint32_t, CMeta&)>& loadRest) {
    SongDictionaries tracks;
    if (const OSErr err = ReadSongTable(file, SongTable::kTracks, tracks); Failed(err)) return err;
    for (const auto& [id, track] : tracks) {
        const bool idB = id <= static_cast<std::uint32_t>(std::numeric_limits<std::int32_t>::max());
        CSong* songP = idB ? i_database.CreateSong(SongID{static_cast<std::int32_t>(id)}) : nullptr;
        if (songP == nullptr) {
            LogF("### Error the id %u of a song cannot be used", id);
            songP = i_database.CreateSong();
            if (songP == nullptr) continue;
        }
        LoadSong(track, songP->Meta());
        loadRest(id, songP->Meta());
    }
    return noErr;
}

void CSongsXML::LoadSong(const CCFDictionary& track, CMeta& song) const {
    const CMeta::QuietChanges quiet(song);
    for (const auto& [name, key] : kSong_Texts)
        if (const SuperString text = track.GetString(name); !text.Empty()) song.SetString(key, text);
    for (const auto& [name, key] : kNumbers)
        if (const std::int64_t number = track.GetInteger(name); number != 0) song.SetInteger(key, number);
    if (const std::int64_t sectorsL = track.GetInteger("Sectors");
        sectorsL > 0 && sectorsL < std::numeric_limits<std::int32_t>::max() / kSector_300ths)
        song.SetInteger("drtn"_key, sectorsL * kSector_300ths);
    if (track.Has("Date")) song.SetDate("Date"_key, track.GetDate("Date"));
    for (const auto& [name, type] : kLocations) {
        CFileRef file;
        const CCFValue* valueP = track.Find(name);
        if (valueP == nullptr || !ReadLocation(*valueP, file)) continue;
        const auto path = file.GetPath();
        song.SetSongFile(SongFileKey(type), {i_status.Of(type, path), file});
    }
    song.SetDirty(false);
}
