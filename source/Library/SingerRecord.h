#pragma once
#include <cstdint>
#include <optional>

#include "Values/CCFDictionary.h"

/** All that is kept of a singer, as his file and the venue's have it. */
struct SingerRecord {
    CCFDictionary meta;   // "siID" among it
    std::uint32_t tonightID = 0, favoritesID = 0, historyID = 0;
    std::optional<bool> twirledDownB;   // stands in "Singer.xml" alone
    CCFDictionary songInfo;             // from the text of a song's id
    CCFDictionary otherKeys;

    [[nodiscard]] std::uint32_t ID() const;   // "siID"; 0 without
    friend bool operator==(const SingerRecord&, const SingerRecord&) = default;
};
