#pragma once
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "Library/CSongStatus.h"
#include "Meta/CMeta.h"
#include "Storage/SongRecord.h"

/** Between a record of "Songs.vlb" and a song's values. Paths in the music folder stand in a record without it, so that
    the folder can move.
    Threads  one at a time, with its own object; the song's lock is taken value by value.
    Owner    the texts of a made record belong to this object, until the next one is made. */
class CSongRecordMeta {
public:
    CSongRecordMeta(std::filesystem::path musicFolder, CSongStatus status);

    /** Puts everything but the song id into `song`, without its change hook. A path that climbs out of the music folder
        is taken as it stands, as a file of somebody else. */
    void Load(const SongRecord& record, CMeta& song);
    /** The record of `song`. `rest` is what a record cannot hold, for "Songs Meta.xml": further keys, caches, and what
        was too big or odd for its field. Empty for most songs. */
    [[nodiscard]] SongRecord Make(std::uint32_t songID, const CMeta& song, CCFDictionary& rest);
    /** Brings the rest back, without the change hook and without a mark of dirt. */
    void LoadRest(const CCFDictionary& rest, CMeta& song);

private:
    struct PathField;
    static const std::array<PathField, 5> kPaths;
    void LoadPath(const PathField& field, const SongRecord& record);
    [[nodiscard]] std::string_view StoredPath(const PathField& field, const CMetaValue& value, std::uint16_t& flags);
    /** A record has room for it. */
    [[nodiscard]] static bool IsHeld(MetaKey key, const CMetaValue& value);
    [[nodiscard]] CCFDictionary Rest() const;

    const std::filesystem::path i_music;
    const std::string i_musicPrefix;
    const CSongStatus i_status;
    std::vector<MetaEntry> i_entries;                   // of the song that is loaded
    std::vector<MetaEntry> i_stored;                    // holds the texts of the record that is made
    std::array<std::string, kSongText_Count> i_paths;   // likewise
};
