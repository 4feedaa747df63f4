#pragma once
#include <cstdint>
#include <span>

#include "Meta/MetaKey.h"

/** The kind of a list, fixed when it is made; nearly every rule about a list is a question to it. 18 to 28 are store
    catalogues; 10 to 13 are not used. */
enum class SourceType : std::int16_t {
    kSourceDB_NONE = 0,
    kSourceDB_LIBRARY = 1,
    kSourceDB_CD = 2,
    kSourceDB_PLAYLIST = 3,
    kSourceDB_ROTATION = 4,
    kSourceDB_VENUE = 5,
    kSourceDB_KJ_ROTATION = 6,
    kSourceDB_SINGER_PL_TONIGHT = 7,
    kSourceDB_SINGER_PL_FAVORITES = 8,
    kSourceDB_SINGER_PL_HISTORY = 9,
    kSourceDB_SINGER_PL_FOLDER = 14,
    kSourceDB_SINGER_PL_OTHER = 15,
    kSourceDB_SOURCE = 16,
    kSourceDB_MUSIC_STORES = 17,
    kSourceDB_STORE_FIRST = 18,
    kSourceDB_STORE_LAST = 28
};
using enum SourceType;

/** False for numbers that no list has. */
[[nodiscard]] bool IsSourceType(std::int32_t number);
/** The English title of the kind; empty when a list of it is named by somebody else. */
[[nodiscard]] const char* GetSourceName(SourceType type);
/** By which key a new list of the kind is sorted; stIx is the user's own order. */
[[nodiscard]] MetaKey DefaultSortKey(SourceType type);

[[nodiscard]] bool IsSingerList(SourceType type);
[[nodiscard]] bool Is_CD_PlayList(SourceType type);
[[nodiscard]] bool Is_MusicStore_PlayList(SourceType type);
[[nodiscard]] bool IsRotation(SourceType type);
/** Items may be added, removed, re-ordered. A disc's list asks its disc besides (CPlayList::IsModifyable). */
[[nodiscard]] bool IsModifyable(SourceType type);
/** Written in the library's files. */
[[nodiscard]] bool IsSaveable(SourceType type);
[[nodiscard]] bool IsPartOfVenue(SourceType type);
/** A row of the sources column that can show its own children. */
[[nodiscard]] bool IsSourcesEntry(SourceType type);

/** The place of a kind among the sources, from 0. A kind without one is asserted and goes last. */
[[nodiscard]] std::size_t SourcePlace(SourceType type);
