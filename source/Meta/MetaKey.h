#pragma once
#include <cstdint>
#include <string>

/** The code of a value that the library keeps of a song, a singer or a row: four characters, the first one highest. */
enum class MetaKey : std::uint32_t {};

/** The key of four characters, written as such: "soID"_key. */
consteval MetaKey operator""_key(const char* textZ, std::size_t sizeL) {
    if (sizeL != 4) throw "a key has four characters";
    std::uint32_t code = 0;
    for (std::size_t n = 0; n < 4; ++n) code = code << 8 | static_cast<unsigned char>(textZ[n]);
    return MetaKey{code};
}

inline constexpr MetaKey CM_Key_NONE{0};
inline constexpr MetaKey CM_Key_SONG_ID = "soID"_key;
inline constexpr MetaKey CM_Key_PLAYLIST_ID = "plID"_key;
inline constexpr MetaKey CM_Key_SORT_INDEX = "piIx"_key;

/** The four characters; any byte may be among them. */
[[nodiscard]] std::string MetaKeyText(MetaKey key);
