#include "Meta/CMetaSongFile.h"

#include <array>

#include "Core/CLog.h"

namespace {
constexpr std::array<MetaKey, 12> kSongFileKeys = {"Sfs0"_key, "Sfs1"_key, "Sfs2"_key, "Sfs3"_key,
                                                   "Sfs4"_key, "Sfs5"_key, "Sfs6"_key, "Sfs7"_key,
                                                   "Sfs8"_key, "Sfs9"_key, "Sf10"_key, "Sf11"_key};
static_assert(kSongFileKeys.size() == static_cast<std::size_t>(SDB_SongFile_numtypes));
}   // namespace

MetaKey SongFileKey(SDB_SongFile type) {
    const auto number = static_cast<std::size_t>(type);   // NONE becomes huge
    return number < kSongFileKeys.size() ? kSongFileKeys[number] : CM_Key_NONE;
}

std::optional<SDB_SongFile> SongFileOfKey(MetaKey key) {
    for (std::size_t n = 0; n < kSongFileKeys.size(); ++n)
        if (kSongFileKeys[n] == key) return static_cast<SDB_SongFile>(n);
    if (const std::string text = MetaKeyText(key); text.starts_with("Sfs")) {
        LogF("Illegal meta key file system value ‘%s’, %d", text.c_str(), static_cast<int>(text[3]) - '0');
        Log("try to flush the log, okay?");
    }
    return std::nullopt;
}
