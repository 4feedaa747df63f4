#pragma once
#include <cstdint>

/** Ids of what the library keeps. Songs, lists and singers share one growing counter; the id of a row is its slot in
    its list. They cross threads where pointers must not. */
enum class SongID : std::int32_t {};
enum class SingerID : std::int32_t {};
enum class PlaylistID : std::int32_t {};
enum class PLItemID : std::int32_t {};

inline constexpr std::int32_t SDB_kUninitializedID = -2;
inline constexpr std::int32_t SDB_kOrphanID = -1;
inline constexpr PLItemID SDB_kNoItem{SDB_kOrphanID};
inline constexpr PlaylistID kPlaylistID_Library{1};
inline constexpr PlaylistID kPlaylistID_Source{-3};
inline constexpr PlaylistID kPlaylistID_New{SDB_kUninitializedID};

/** A row of a list's user order, counted from 1. */
using RowIndex = std::uint32_t;
inline constexpr RowIndex SDB_Index_END = 0xFFFFFFFF;
inline constexpr RowIndex SDB_Index_NONE = 0x80000000;   // an item that is in no list

/** The number of an id. */
template <class ID>
[[nodiscard]] constexpr std::int32_t Number(ID id) noexcept requires(sizeof(ID) == sizeof(std::int32_t)) {
    return static_cast<std::int32_t>(id);
}
