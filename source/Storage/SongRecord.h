#pragma once
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "Values/CCFValue.h"

/** The twelve strings of a record, in the order of its block. */
enum class SongText : std::uint8_t {
    kName,
    kArtist,
    kAlbum,
    kGenre,
    kComment,
    kVideoPath,
    kAudioPath,
    kZipPath,
    kProjectPath,
    kLaunchPath,
    kSpare,
    kSecondSpare
};
inline constexpr std::size_t kSongText_Count = 12;

// Flags of a record.
inline constexpr std::uint16_t kSongFlag_Pip2 = 0x001, kSongFlag_Pip3 = 0x002, kSongFlag_VideoRelative = 0x004,
                               kSongFlag_AudioRelative = 0x008, kSongFlag_ZipRelative = 0x010,
                               kSongFlag_Missing = 0x020, kSongFlag_Pip4 = 0x040, kSongFlag_ProjectRelative = 0x080,
                               kSongFlag_LaunchRelative = 0x100;

/** "Songs.vlb" is big-endian as we write it; a file of the other order is read all the same. */
enum class SongFileOrder : bool { kLittle, kBig };

/** The first 24 bytes of "Songs.vlb". */
struct SongFileHeader {
    static constexpr std::size_t kBytes = 24;
    static constexpr std::uint16_t kMajor = 1, kMinor = 10;

    std::uint16_t majorL = kMajor, minorL = kMinor;
    std::uint8_t flags = 0;   // bit 0 keeps a boolean of the preferences
    std::uint32_t songsL = 0;
    SongFileOrder order = SongFileOrder::kBig;

    /** Major in the high half. */
    [[nodiscard]] std::uint32_t Version() const noexcept { return std::uint32_t{majorL} << 16 | minorL; }
    [[nodiscard]] std::array<std::byte, kBytes> Encode() const noexcept;   // big-endian, whatever `order`
    /** Finds out the order. Any 24 bytes make some header: look at Version. */
    [[nodiscard]] static SongFileHeader Decode(std::span<const std::byte, kBytes> bytes) noexcept;
};

/** One song as "Songs.vlb" holds it: 100 bytes, then twelve strings with a NUL each. Numbers are those of the file; the
    functions below give them their meaning.
    Owner    the texts belong to whoever filled them in: a reader's buffer, until its next record.
    Safety   no offset is trusted: a string whose end lies outside its block, below the one before, or not behind a NUL
             reads as empty, and harms none of the others. */
struct SongRecord {
    static constexpr std::size_t kBytes = 100;
    static constexpr std::uint32_t kNoFormat = 0xFFFFFFFF;
    static constexpr std::uint32_t kMostTextBytes = 1U << 30;   // a block is smaller

    std::uint32_t songID = 0;   // 0 ends a file
    std::uint32_t duration = 0, track = 0, timesSung = 0;
    std::int64_t date = 0;   // see SongDateOf
    std::uint32_t size = 0;
    std::uint8_t rating = 0, vocalChannel = 0;
    std::int8_t pitch = 0;
    std::uint8_t tempo = 100;   // hundredths
    std::uint16_t year = 0, flags = 0, graphicChannels = 0;
    std::uint32_t format = kNoFormat;   // four characters
    std::uint32_t start = 0;
    std::uint32_t dateAdded = 0;   // see PackDateAdded
    std::array<std::string_view, kSongText_Count> texts;

    [[nodiscard]] std::string_view& Text(SongText which) noexcept { return texts[static_cast<std::size_t>(which)]; }
    [[nodiscard]] std::string_view Text(SongText which) const noexcept {
        return texts[static_cast<std::size_t>(which)];
    }
    friend bool operator==(const SongRecord&, const SongRecord&) = default;

    /** Appends record and block. A text ends at its first NUL. paramErr, and `bytes` as it was, for a block of 1 GB. */
    OSErr Encode(std::string& bytes) const;
    /** The size of the block behind a record, as the record tells it: not to be trusted. */
    [[nodiscard]] static std::uint32_t BlockBytes(std::span<const std::byte, kBytes> record,
                                                  SongFileOrder order) noexcept;
    /** The song id alone. */
    [[nodiscard]] static std::uint32_t SongID(std::span<const std::byte, kBytes> record, SongFileOrder order) noexcept;
    /** Reads all fields; returns a bit for each text that could not be read (bit 0: the name). */
    [[nodiscard]] unsigned Decode(std::span<const std::byte, kBytes> record, std::span<const std::byte> block,
                                  SongFileOrder order) noexcept;
};

/** The date of the field `date`; none for 0. */
[[nodiscard]] std::optional<CFDate> SongDateOf(std::int64_t stored) noexcept;
/** Whole seconds, cut off; 0 for no date. */
[[nodiscard]] std::int64_t StoredSongDate(std::optional<CFDate> date) noexcept;

/** A date of the years 2000 to 2063, UTC, in one word: the four bytes in the order of the file, the first one lowest.
    A date outside becomes the nearest inside; no date is 0. */
[[nodiscard]] std::uint32_t PackDateAdded(std::optional<CFDate> date) noexcept;
/** None for a word that is no date. */
[[nodiscard]] std::optional<CFDate> UnpackDateAdded(std::uint32_t packed) noexcept;

/** Hundredths, cut off, from 0 to 255. What TempoOfStep gave comes back as it was. */
[[nodiscard]] std::uint8_t StoredTempo(double tempo) noexcept;
