#pragma once
#include <cstdint>
#include <initializer_list>
#include <string>

#include "Values/CCFValue.h"

class CFileRef;
class CMeta;

/** What a song's files tell without being opened. */
struct SongFileFacts {
    std::uint64_t bytesL = 0;     // of all of them
    std::int64_t modifiedL = 0;   // the youngest; nanoseconds since 1970
    std::string format;           // by the ending of what sounds: "MP3", four characters at most

    /** Of the song's files, what sounds first; empty ones are none. Looks at the disc. */
    [[nodiscard]] static SongFileFacts Of(std::initializer_list<const CFileRef*> files);
};

/** "DAdd" of a new song. */
enum class DateAdded : bool {
    kNow,
    kFile   // of files that were there already, when the library was made of them: their own date
};

/** "SIZE", "Frmt" and "DAdd" of a song that is added. */
void SetSongFacts(CMeta& song, const SongFileFacts& facts, DateAdded date);

/** A size as a song keeps it: 32 bits without a sign, so that a file of more than 2 GB is a negative number. A size
    that is larger than 4 GB counts as that. */
[[nodiscard]] std::int32_t StoredSize(std::uint64_t bytesL) noexcept;
[[nodiscard]] constexpr std::uint32_t SizeOfStored(std::int32_t stored) noexcept {
    return static_cast<std::uint32_t>(stored);
}
