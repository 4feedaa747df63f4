#pragma once
#include <span>

#include "Meta/MetaKey.h"

/** What the menu of columns offers, by what it tells of a song. Keys of singers, of stores and of the program itself say
    nothing of a song, and are in none of the groups. */
struct SongColumnGroup {
    const char* titleZ;
    std::span<const MetaKey> keys;
};
[[nodiscard]] std::span<const SongColumnGroup> SongColumnGroups() noexcept;
