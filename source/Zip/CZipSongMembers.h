#pragma once
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "Files/ZipSongKinds.h"
#include "Zip/CZipMember.h"

/** Which members of a zip are the song, however the members are named and wherever in it they lie. Indexes into the
    members that Choose was given. Pure. */
struct CZipSongMembers {
    std::optional<std::size_t> audio, graphics, video, lyrics;

    /** Graphics and audio with one base name before all; a member that can be read before one that cannot; then the
        larger one; then the first. A video counts only where there are no graphics, and audio beside it only without
        one. Lyrics: like the audio, the graphics or the video, else by the same order. */
    [[nodiscard]] static CZipSongMembers Choose(std::span<const CZipMember> members);
};
