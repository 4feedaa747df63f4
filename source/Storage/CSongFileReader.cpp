#include "Storage/CSongFileReader.h"

#include <cstring>

#include "Core/CLog.h"

namespace {
constexpr std::size_t kRead_Bytes = std::size_t{1} << 20;
constexpr std::uint32_t kMisread_Lines = 20;   // a damaged library must not fill the log
}   // namespace

OSErr CSongFileReader::Open(const CFileRef& file) {
    if (const OSErr err = i_fork.Open(file, FileAccess::kRead); Failed(err)) return err;
    if (const OSErr err = i_fork.GetEOF(i_left); Failed(err)) return err;
    i_buffer.resize(kRead_Bytes);
    if (!Have(SongFileHeader::kBytes)) return LogStep(FirstOf(i_err, eofErr), "read db header", file.GetPath());
    i_header = SongFileHeader::Decode(std::span(i_buffer).subspan(i_at).first<SongFileHeader::kBytes>());
    i_at += SongFileHeader::kBytes;
    if (i_header.Version() >= kFirstVersion && !IsTooNew()) return noErr;
    LogF("### Error db version: %x in %s", static_cast<unsigned>(i_header.Version()), file.GetPath().c_str());
    i_err = paramErr;
    return paramErr;
}

SuperString TooNewWords(std::uint32_t found, std::uint32_t newest) {
    const auto text = [](std::uint32_t version) {
        return std::to_string(version >> 16) + "." + std::to_string(version & 0xFFFF);
    };
    return "This database was saved with a newer Vopla, which writes database format (" + text(found) +
           "), which is, unfortunately, greater what this version can read (" + text(newest) +
           ").  You must upgrade to a later version.";
}

SuperString CSongFileReader::TooNewText() const { return TooNewWords(i_header.Version(), kNewestVersion); }

/** Sees to it that so many bytes stand in the buffer from i_at on. False at the end of the file. */
bool CSongFileReader::Have(std::size_t bytesL) {
    const std::size_t held = i_filled - i_at;
    if (held >= bytesL) return true;
    if (Failed(i_err) || bytesL - held > i_left) return false;
    std::memmove(i_buffer.data(), i_buffer.data() + i_at, held);
    i_at = 0;
    i_filled = held;
    if (i_buffer.size() < bytesL) i_buffer.resize(bytesL);   // bounded by what the file holds
    const std::size_t more = std::min<std::uint64_t>(i_left, i_buffer.size() - held);
    std::size_t got = 0;
    i_err = i_fork.Read(std::span(i_buffer).subspan(held, more), got);
    i_filled += got;
    i_left -= got;
    return !Failed(i_err);
}

bool CSongFileReader::Stop(OSErr err, const char* whatZ) {
    i_endB = true;
    i_err = FirstOf(i_err, err);
    if (Failed(i_err)) LogF("### Error %s: %d, after %u songs", whatZ, Number(i_err), i_countL);
    return false;
}

bool CSongFileReader::Next(SongRecord& record) {
    if (i_endB || Failed(i_err)) return false;
    if (i_filled == i_at && i_left == 0)
        return Stop(i_countL < i_header.songsL ? eofErr : noErr, "reading songs: fewer than the header tells");
    constexpr std::size_t kRecord = SongRecord::kBytes;
    if (!Have(4)) return Stop(eofErr, "reading song header");
    // The id that ends the file need not have a whole record behind it.
    if (std::to_integer<int>(i_buffer[i_at] | i_buffer[i_at + 1] | i_buffer[i_at + 2] | i_buffer[i_at + 3]) == 0)
        return Stop(i_countL < i_header.songsL ? eofErr : noErr, "reading songs: an early end");
    if (!Have(kRecord)) return Stop(eofErr, "reading song header");
    auto header = std::span(i_buffer).subspan(i_at).first<kRecord>();
    const std::uint32_t blockL = SongRecord::BlockBytes(header, i_header.order);
    if (blockL == 0 || blockL >= SongRecord::kMostTextBytes) return Stop(paramErr, "reading song info: size");
    if (!Have(kRecord + blockL)) return Stop(eofErr, "reading song info");
    header = std::span(i_buffer).subspan(i_at).first<kRecord>();   // Have may have moved it
    const unsigned misread =
        record.Decode(header, std::span<const std::byte>(i_buffer).subspan(i_at + kRecord, blockL), i_header.order);
    i_at += kRecord + blockL;
    ++i_countL;
    if (misread != 0) TellMisread(record, misread);
    if (kRecord + blockL > i_biggestL) {
        i_biggestL = kRecord + blockL;
        i_biggest = record.Text(SongText::kName);
    }
    return true;
}

OSErr CSongFileReader::Finish() {
    if (!Failed(i_err)) {
        LogF("Songs In Library: %u", i_countL);
        if (i_countL != 0) LogF("Biggest record: %s\n", i_biggest.c_str());
    }
    if (i_misreadL > kMisread_Lines) LogF("### Error %u texts of songs could not be read", i_misreadL);
    const OSErr closed = i_fork.IsOpen() ? i_fork.Close() : noErr;
    return FirstOf(i_err, closed);
}

void CSongFileReader::TellMisread(const SongRecord& record, unsigned misread) {
    static constexpr std::array<const char*, kSongText_Count> kNames = {
        "name",       "artist",   "album",        "genre",       "comment", "video path",
        "audio path", "zip path", "project path", "launch path", "spare",   "second spare"};
    for (std::size_t n = 0; n < kNames.size(); ++n)
        if ((misread & 1U << n) != 0 && ++i_misreadL <= kMisread_Lines)
            LogF("### Error reading song %u: the end of its %s is wrong, it is empty now", record.songID, kNames[n]);
}
