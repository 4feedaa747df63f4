#pragma once
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "Core/CZipMember.h"

/** What a file's ending says it is to a song. Some are both: an .mp4 is a video, or the sound of a pair. */
struct ZipSongKinds {
    bool audioB = false, graphicsB = false, videoB = false, lyricsB = false;
};
/** By the ending of `name`, in any case. Nothing for what no song has: folders, "__MACOSX/", names that begin with ".".
 */
[[nodiscard]] ZipSongKinds ZipSongKindsOf(std::string_view name);
/** An ending of song files, with its point, and what such a file can be. */
struct ZipSongEnding {
    std::string_view ending;
    ZipSongKinds kinds;
};
[[nodiscard]] std::span<const ZipSongEnding> ZipSongEndings() noexcept;

/** Which members of a zip are the song, however the members are named and wherever in it they lie. Indexes into the
    members that Choose was given. Pure. */
struct CZipSongMembers {
    std::optional<std::size_t> audio, graphics, video, lyrics;

    /** Graphics and audio with one base name before all; a member that can be read before one that cannot; then the
        larger one; then the first. A video counts only where there are no graphics, and audio beside it only without
        one. Lyrics: like the audio, the graphics or the video, else by the same order. */
    [[nodiscard]] static CZipSongMembers Choose(std::span<const CZipMember> members);
};
