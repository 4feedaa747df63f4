#pragma once
#include <span>

#include "Meta/MetaKey.h"

class CDataTraits;
class QString;

/** What the menu of columns offers, by what it tells of a song. Keys of singers, of stores and of the program itself say
    nothing of a song, and are in none of the groups. */
struct SongColumnGroup {
    const char* titleZ;
    std::span<const MetaKey> keys;
};
[[nodiscard]] std::span<const SongColumnGroup> SongColumnGroups() noexcept;
/** The title of a key in the language of the user. */
[[nodiscard]] QString KeyTitle(const CDataTraits& traits);
