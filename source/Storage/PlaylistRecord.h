#pragma once
#include <cstdint>
#include <optional>
#include <vector>

#include "Values/CCFDictionary.h"

class CCFXmlWriter;

/** What a row of a list names. */
enum class PlaylistItemKind : std::uint8_t { kSong = 1, kSinger = 2 };

/** One member of "Playlist Items". */
struct PlaylistItemRecord {
    std::uint32_t itemID = 0;     // 0: none, as for a disc's track
    std::uint32_t sourceID = 0;   // of the song or the singer; 0: none
    PlaylistItemKind kind = PlaylistItemKind::kSong;
    std::optional<bool> playB;   // the check box
    CCFDictionary meta;          // every other key, unknown ones too

    /** A number that is no id reads as 0 and is logged. */
    [[nodiscard]] static PlaylistItemRecord FromDictionary(const CCFDictionary& dictionary);
    [[nodiscard]] CCFDictionary ToDictionary() const;
    friend bool operator==(const PlaylistItemRecord&, const PlaylistItemRecord&) = default;
};

/** A list as the library's files hold it: the root of a playlist file, or a member of "Playlists" in "Library.xml",
    where all but the library's own list stand without their items. */
struct PlaylistRecord {
    CCFDictionary keys;                                     // all but the items, unknown ones too
    std::optional<std::vector<PlaylistItemRecord>> items;   // nothing: the list is only named

    [[nodiscard]] SuperString Name() const { return keys.GetString("Name"); }
    /** 0 when there is none that could be one. */
    [[nodiscard]] std::uint32_t ID() const;
    [[nodiscard]] std::int64_t Type() const { return keys.GetInteger("Playlist Type"); }
    void Write(CCFXmlWriter& writer) const;
    friend bool operator==(const PlaylistRecord&, const PlaylistRecord&) = default;
};
