#pragma once
#include <optional>
#include <string>
#include <string_view>

#include "Audio/CLoudness.h"
#include "Play/FileStamp.h"

/** How loud a song is, and the file of which that was measured: what plays from another file has another loudness. */
struct SongLevel {
    Loudness loudness;
    FileStamp stamp;

    /** What brings it to the one level; never so much that its peaks would pass full scale. */
    [[nodiscard]] float GainF() const;

    /** "-9.31 -0.12 4194304 1700000000": loudness, true peak, bytes, seconds. So it stands in a song's "LUFS". */
    [[nodiscard]] std::string ToText() const;
    /** Nothing for another text. */
    [[nodiscard]] static std::optional<SongLevel> Parse(std::string_view text);
};
