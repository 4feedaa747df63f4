#pragma once
#include <string>
#include <string_view>

/** What a file's name says of its song, as far as that is plain: "Artist - Title", "SC8123-05 - Artist - Title", or the
    title alone. Pure. */
struct FileTitle {
    std::string title, artist, album;
    int trackL = 0;   // 0: none

    /** `base` is the name without its extension. The title is never empty unless `base` is. */
    [[nodiscard]] static FileTitle Of(std::string_view base);
};
