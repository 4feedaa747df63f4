#pragma once
#include <cstdint>
#include <optional>

#include "Files/CFileRef.h"
#include "Meta/MetaKey.h"

/** The twelve places of a song's files, numbered as in the keys Sfs0 to Sf11. */
enum class SDB_SongFile : std::int16_t {
    SDB_SongFile_NONE = -1,
    SDB_SongFile_AUDIO = 0,
    SDB_SongFile_VIDEO = 1,
    SDB_SongFile_ZIP = 2,
    SDB_SongFile_AUDIO_CACHE = 3,
    SDB_SongFile_VIDEO_CACHE = 4,
    SDB_SongFile_META = 5,
    SDB_SongFile_AUDIO_CD = 6,
    SDB_SongFile_VIDEO_CD = 7,
    SDB_SongFile_UNPACK = 8,
    SDB_SongFile_TEMP_ZIP = 9,
    SDB_SongFile_PROJECT = 10,
    SDB_SongFile_LAUNCH = 11,
    SDB_SongFile_numtypes = 12
};
using enum SDB_SongFile;

/** To whom a song's file belongs. */
enum class SDB_SongFileStatus : std::uint8_t {
    SDB_SongFileStatus_NONE = 0,
    SDB_SongFileStatus_REFERENCE = 1,
    SDB_SongFileStatus_MUSIC = 2,   // ours: may be renamed, moved, deleted
    SDB_SongFileStatus_ITUNES = 3,
    SDB_SongFileStatus_CD = 4,
    SDB_SongFileStatus_TEMP = 5,
    SDB_SongFileStatus_CACHE = 6
};
using enum SDB_SongFileStatus;

/** What a file place holds: the status and the file, always read and set together. As a value of a CMeta it is kept
    packed (status, folder shared with other files, name, and the file's identity when the reference has an alias); what
    `Resolve` found besides is not kept. */
struct CMetaSongFile {
    SDB_SongFileStatus status = SDB_SongFileStatus_NONE;
    CFileRef ref;
};

/** CM_Key_NONE for a number that is no type. */
[[nodiscard]] MetaKey SongFileKey(SDB_SongFile type);
/** The type of a key "Sfs0" to "Sf11"; nothing for others. A key that begins as theirs and is none of them is logged. */
[[nodiscard]] std::optional<SDB_SongFile> SongFileOfKey(MetaKey key);
