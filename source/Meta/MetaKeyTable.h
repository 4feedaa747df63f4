#pragma once
#include <span>

#include "Meta/MetaKey.h"
#include "Meta/MetaTypes.h"

/** What a key's values do that others do not; each is a class CDataTraits_... */
enum class TraitsClass : std::uint8_t {
    kPlain,
    kVocalChannelPop,
    kPitchPop,
    kLabelPop,
    kGraphicChannelsPop,
    kSinger_SMS_Carrier,
    kSinger_SMS_Region,
    kTrack,
    kSize,
    kStart,
    kDuration,
    kTrimStart,
    kTrimEnd
};

// What sets a key's column, or its storage, apart from the usual.
inline constexpr unsigned kRow_Mutable = 0x01;        // the column can be changed though the key is not "editable"
inline constexpr unsigned kRow_RelativeDate = 0x02;   // "Today"
inline constexpr unsigned kRow_LargeTitle = 0x04;     // a larger font in the column's title
inline constexpr unsigned kRow_IfSingerID = 0x08;     // a column with "Show Singer ID", hidden without
inline constexpr unsigned kRow_Shared = 0x10;         // many songs have equal texts, which are kept once

/** One line of the table of keys. */
struct MetaKeyRow {
    MetaKey key;
    TraitsClass traits;
    const char* titleZ;   // English; "* " in front: not for people
    ValType type;
    OSType property;
    unsigned flags;            // kKeyFlag_...
    std::int16_t minS, maxS;   // width of the column
    std::int16_t initialS;     // 0: the least width
    Justification justification = Justification::kDefault;
    unsigned extras = 0;   // kRow_...
    const char* defaultTextZ = "";
    std::int32_t defaultL = 0;
    double defaultF = 0;
};

/** The keys known from the start in the order in which their traits are made: first those of `SubclassKeys`, then those
    of `PlainKeys`. */
[[nodiscard]] std::span<const MetaKey> SubclassKeys();
[[nodiscard]] std::span<const MetaKey> PlainKeys();
/** The row of a key, one of the account keys too, which are not among the above; null when there is none. */
[[nodiscard]] const MetaKeyRow* FindMetaKeyRow(MetaKey key);
[[nodiscard]] std::span<const MetaKeyRow> MetaKeyTable();
