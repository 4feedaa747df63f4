#pragma once
#include <span>
#include <string>
#include <string_view>

/** What a file's ending says it is to a song. Some are both: an .mp4 is a video, or the sound of a pair. */
struct ZipSongKinds {
    bool audioB = false, graphicsB = false, videoB = false, lyricsB = false;
};
/** By the ending of `name`, in any case. Nothing for what no song has: folders, "__MACOSX/", names that begin with ".". */
[[nodiscard]] ZipSongKinds ZipSongKindsOf(std::string_view name);
/** An ending of song files, with its point, and what such a file can be. */
struct ZipSongEnding {
    std::string_view ending;
    ZipSongKinds kinds;
};
[[nodiscard]] std::span<const ZipSongEnding> ZipSongEndings() noexcept;

/** In small letters, of ASCII alone: an ending has nothing else. */
[[nodiscard]] std::string LowerASCII(std::string_view text);
/** Of a path with slashes of either kind, what stands behind the last one. */
[[nodiscard]] std::string_view LastPathPart(std::string_view path);
