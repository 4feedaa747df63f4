#pragma once
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "Library/CMeta.h"
#include "Library/CSongStatus.h"
#include "Library/SongRecord.h"

/** Between a record of "Songs.vlb" and a song's values. Paths in the music folder stand in a record without it, so that
    the folder can move.
    Threads  one at a time, with its own object; the song's lock is taken value by value.
    Owner    the texts of a made record belong to this object, until the next one is made. */
class CSongRecordMeta {
public:
    CSongRecordMeta(std::filesystem::path musicFolder, CSongStatus status)
        : i_music(std::move(musicFolder)), i_status(std::move(status)) {}

    /** Puts everything but the song id into `song`, without its change hook. A path that climbs out of the music folder
        is taken as it stands, as a file of somebody else. */
    void Load(const SongRecord& record, CMeta& song);
    /** The record of `song`. */
    [[nodiscard]] SongRecord Make(std::uint32_t songID, const CMeta& song);
    /** What a record cannot hold, for "Songs Meta.xml": further keys, caches, and what was too big or odd for its
       field. Empty for most songs. */
    [[nodiscard]] CCFDictionary Rest(const CMeta& song) const;
    /** Brings the rest back, without the change hook and without a mark of dirt. */
    void LoadRest(const CCFDictionary& rest, CMeta& song);

private:
    struct PathField;
    static const std::array<PathField, 5> kPaths;
    void LoadPath(const PathField& field, const SongRecord& record);

    std::filesystem::path i_music;
    CSongStatus i_status;
    std::vector<MetaEntry> i_entries;                   // of the song that is loaded
    std::vector<CMetaValue> i_values;                   // hold the texts of the record that is made
    std::array<std::string, kSongText_Count> i_paths;   // likewise
};
