#include "Storage/SongRecord.h"

#include <chrono>
#include <cmath>
#include <cstring>

namespace {

// Where the fields of a record lie. The five words at the end of the texts' offsets have orders of their own.
constexpr std::size_t kAt_FirstEnd = 52, kAt_ZipEnd = 80, kAt_ProjectEnd = 84, kAt_LaunchEnd = 88, kAt_SpareEnd = 92,
                      kAt_BlockBytes = 96, kAt_DateAdded = 48;
static_assert(kAt_FirstEnd + 4 * (kSongText_Count - 1) == kAt_BlockBytes);

/** Seconds from 2001 to the reference date of the field "Date". */
constexpr double kDate_Base = 3061152000.0;

template <typename Number>
Number Load(const std::byte* from, SongFileOrder order) noexcept {
    std::uint64_t value = 0;
    for (std::size_t n = 0; n < sizeof(Number); ++n) {
        const std::size_t shift = order == SongFileOrder::kBig ? 8 * (sizeof(Number) - 1 - n) : 8 * n;
        value |= std::to_integer<std::uint64_t>(from[n]) << shift;
    }
    return static_cast<Number>(value);
}

template <typename Number>
void Store(std::byte* to, Number number, SongFileOrder order) noexcept {
    const auto value = static_cast<std::uint64_t>(number);
    for (std::size_t n = 0; n < sizeof(Number); ++n) {
        const std::size_t shift = order == SongFileOrder::kBig ? 8 * (sizeof(Number) - 1 - n) : 8 * n;
        to[n] = static_cast<std::byte>(value >> shift);
    }
}

/** Old writers left the words of zip and project in the order of their machine: the first half tells. A multiple of
    65536 is misread by this, as it is by every reader of the form. */
std::uint32_t LoadOddEnd(const std::byte* from) noexcept {
    const bool bigB = from[0] == std::byte{0} && from[1] == std::byte{0};
    return Load<std::uint32_t>(from, bigB ? SongFileOrder::kBig : SongFileOrder::kLittle);
}

using Ends = std::array<std::uint32_t, kSongText_Count>;

Ends LoadEnds(const std::byte* record, SongFileOrder order) noexcept {
    Ends ends{};
    for (std::size_t n = 0; n < kSongText_Count; ++n)
        ends[n] = Load<std::uint32_t>(record + kAt_FirstEnd + 4 * n, order);
    if (order == SongFileOrder::kLittle) return ends;
    ends[static_cast<std::size_t>(SongText::kZipPath)] = LoadOddEnd(record + kAt_ZipEnd);
    ends[static_cast<std::size_t>(SongText::kProjectPath)] = LoadOddEnd(record + kAt_ProjectEnd);
    // The last two strings are empty, so the last two ends differ by one: that tells an unswapped pair.
    const auto rawSpare = Load<std::uint32_t>(record + kAt_SpareEnd, SongFileOrder::kLittle);
    if (ends.back() - rawSpare == 1) {
        ends[static_cast<std::size_t>(SongText::kSpare)] = rawSpare;
        ends[static_cast<std::size_t>(SongText::kLaunchPath)] =
            Load<std::uint32_t>(record + kAt_LaunchEnd, SongFileOrder::kLittle);
    }
    return ends;
}

}   // namespace

std::array<std::byte, SongFileHeader::kBytes> SongFileHeader::Encode() const noexcept {
    std::array<std::byte, kBytes> bytes{};
    constexpr std::uint16_t kFormat = 1;
    Store(&bytes[0], kFormat, SongFileOrder::kBig);
    Store(&bytes[2], majorL, SongFileOrder::kBig);
    Store(&bytes[4], minorL, SongFileOrder::kBig);
    bytes[7] = std::byte{flags};
    Store(&bytes[8], songsL, SongFileOrder::kBig);
    return bytes;
}

SongFileHeader SongFileHeader::Decode(std::span<const std::byte, kBytes> bytes) noexcept {
    SongFileHeader header;
    const auto major = Load<std::uint16_t>(&bytes[2], SongFileOrder::kBig);
    header.order = major >= 1 && major <= 3 ? SongFileOrder::kBig : SongFileOrder::kLittle;
    header.majorL = Load<std::uint16_t>(&bytes[2], header.order);
    header.minorL = Load<std::uint16_t>(&bytes[4], header.order);
    header.flags = std::to_integer<std::uint8_t>(bytes[7]);
    header.songsL = Load<std::uint32_t>(&bytes[8], header.order);
    return header;
}

OSErr SongRecord::Encode(std::string& bytes) const {
    std::array<std::string_view, kSongText_Count> cut;
    Ends ends{};
    std::size_t totalL = 0;
    for (std::size_t n = 0; n < kSongText_Count; ++n) {
        cut[n] = texts[n].substr(0, texts[n].find('\0'));
        totalL += cut[n].size() + 1;
        if (totalL >= kMostTextBytes) return paramErr;
        ends[n] = static_cast<std::uint32_t>(totalL);
    }

    std::array<std::byte, kBytes> record{};
    const auto put = [&record](std::size_t at, auto value) { Store(&record[at], value, SongFileOrder::kBig); };
    put(0, songID);
    put(4, duration);
    put(8, track);
    put(12, timesSung);
    put(16, date);
    put(24, size);
    record[28] = std::byte{rating};
    record[29] = std::byte{vocalChannel};
    record[30] = static_cast<std::byte>(pitch);
    record[31] = std::byte{tempo};
    put(32, year);
    put(34, flags);
    constexpr std::uint16_t kDefaultChannels = 3;   // is not stored
    put(36, graphicChannels == kDefaultChannels ? std::uint16_t{0} : graphicChannels);
    put(40, format);
    put(44, start);
    Store(&record[kAt_DateAdded], dateAdded, SongFileOrder::kLittle);
    for (std::size_t n = 0; n < kSongText_Count; ++n) put(kAt_FirstEnd + 4 * n, ends[n]);
    for (const std::size_t at : {kAt_ZipEnd, kAt_ProjectEnd})
        Store(&record[at], ends[(at - kAt_FirstEnd) / 4], SongFileOrder::kLittle);

    bytes.reserve(bytes.size() + kBytes + totalL);
    bytes.append(reinterpret_cast<const char*>(record.data()), record.size());
    for (const std::string_view text : cut) bytes.append(text).push_back('\0');
    return noErr;
}

std::uint32_t SongRecord::BlockBytes(std::span<const std::byte, kBytes> record, SongFileOrder order) noexcept {
    return Load<std::uint32_t>(&record[kAt_BlockBytes], order);
}

std::uint32_t SongRecord::SongID(std::span<const std::byte, kBytes> record, SongFileOrder order) noexcept {
    return Load<std::uint32_t>(&record[0], order);
}

unsigned SongRecord::Decode(std::span<const std::byte, kBytes> record, std::span<const std::byte> block,
                            SongFileOrder order) noexcept {
    const auto get = [&record, order](std::size_t at, auto& value) {
        value = Load<std::remove_reference_t<decltype(value)>>(&record[at], order);
    };
    get(0, songID);
    get(4, duration);
    get(8, track);
    get(12, timesSung);
    get(16, date);
    get(24, size);
    rating = std::to_integer<std::uint8_t>(record[28]);
    vocalChannel = std::to_integer<std::uint8_t>(record[29]);
    pitch = static_cast<std::int8_t>(record[30]);
    tempo = std::to_integer<std::uint8_t>(record[31]);
    get(32, year);
    get(34, flags);
    get(36, graphicChannels);
    get(40, format);
    get(44, start);
    dateAdded = Load<std::uint32_t>(&record[kAt_DateAdded], SongFileOrder::kLittle);

    const std::string_view all(reinterpret_cast<const char*>(block.data()), block.size());
    const Ends ends = LoadEnds(record.data(), order);
    unsigned misread = 0;
    std::size_t from = 0;   // the end of the last string that could be read
    bool gapB = false;      // strings between could not
    for (std::size_t n = 0; n < kSongText_Count; ++n) {
        const std::size_t end = ends[n];
        texts[n] = {};
        const bool goodB = end > from && end <= all.size() && all[end - 1] == '\0';
        std::string_view text = goodB ? all.substr(from, end - 1 - from) : std::string_view();
        const std::size_t nul = text.rfind('\0');
        // Behind a gap the string begins after the NUL of the one that was lost; elsewhere a NUL has no place.
        if (!goodB || (nul != std::string_view::npos && !gapB)) {
            misread |= 1U << n;
            gapB = true;
            continue;
        }
        texts[n] = nul == std::string_view::npos ? text : text.substr(nul + 1);
        from = end;
        gapB = false;
    }
    return misread;
}

std::optional<CFDate> SongDateOf(std::int64_t stored) noexcept {
    if (stored == 0) return std::nullopt;
    return CFDate{static_cast<double>(stored) + kDate_Base};
}

std::int64_t StoredSongDate(std::optional<CFDate> date) noexcept {
    constexpr double kMost = 9e15;   // beyond, a double has no whole seconds
    if (!date || !std::isfinite(date->absoluteT)) return 0;
    const double secondsT = std::clamp(std::trunc(date->absoluteT - kDate_Base), -kMost, kMost);
    return secondsT == 0 ? 1 : static_cast<std::int64_t>(secondsT);   // one second late, rather than no date
}

namespace {
using namespace std::chrono;
constexpr sys_seconds kSince2001 = sys_days(2001y / January / 1d);
constexpr int kAdded_FirstYear = 2000, kAdded_LastYear = 2063;
}   // namespace

std::uint32_t PackDateAdded(std::optional<CFDate> date) noexcept {
    if (!date || !std::isfinite(date->absoluteT)) return 0;
    constexpr sys_seconds kFirst = sys_days(year(kAdded_FirstYear) / January / 1d);
    constexpr sys_seconds kLast = sys_days(year(kAdded_LastYear + 1) / January / 1d) - 1s;
    constexpr double kLow = static_cast<double>((kFirst - kSince2001).count());
    constexpr double kHigh = static_cast<double>((kLast - kSince2001).count());
    const sys_seconds at =
        kSince2001 + seconds(static_cast<std::int64_t>(std::floor(std::clamp(date->absoluteT, kLow, kHigh))));
    const auto dayAt = floor<days>(at);
    const year_month_day day(dayAt);
    const hh_mm_ss<seconds> time(at - dayAt);
    const auto yearL = static_cast<unsigned>(static_cast<int>(day.year()) - kAdded_FirstYear);
    const auto monthL = static_cast<unsigned>(day.month());
    const auto hourL = static_cast<unsigned>(time.hours().count());
    const auto minuteL = static_cast<unsigned>(time.minutes().count());
    const unsigned byte0 = yearL | (monthL >> 2 & 3U) << 6;
    const unsigned byte1 = (monthL & 3U) | static_cast<unsigned>(day.day()) << 2 | (hourL >> 4) << 7;
    const unsigned byte2 = (hourL & 15U) | (minuteL >> 2) << 4;
    const unsigned byte3 = (minuteL & 3U) | static_cast<unsigned>(time.seconds().count()) << 2;
    return byte0 | byte1 << 8 | byte2 << 16 | byte3 << 24;
}

std::optional<CFDate> UnpackDateAdded(std::uint32_t packed) noexcept {
    const unsigned byte0 = packed & 0xFFU, byte1 = packed >> 8 & 0xFFU, byte2 = packed >> 16 & 0xFFU,
                   byte3 = packed >> 24;
    const year_month_day date(year(kAdded_FirstYear + static_cast<int>(byte0 & 63U)),
                              month((byte0 >> 6) << 2 | (byte1 & 3U)), day(byte1 >> 2 & 31U));
    const unsigned hourL = (byte1 >> 7) << 4 | (byte2 & 15U), minuteL = (byte2 >> 4) << 2 | (byte3 & 3U),
                   secondL = byte3 >> 2;
    if (!date.ok() || hourL > 23 || minuteL > 59 || secondL > 59) return std::nullopt;
    const sys_seconds at = sys_days(date) + hours(hourL) + minutes(minuteL) + seconds(secondL);
    return CFDate{static_cast<double>((at - kSince2001).count())};
}

std::uint8_t StoredTempo(double tempo) noexcept {
    constexpr double kRound = 1e-4;   // 0.29 times 100 is a little less than 29: a song must not slow with every save
    if (!(tempo > 0)) return 0;
    return static_cast<std::uint8_t>(std::min(tempo * 100.0 + kRound, 255.0));
}
