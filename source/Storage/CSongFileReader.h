#pragma once
#include <string>
#include <vector>

#include "Files/CDataFork.h"
#include "Storage/SongRecord.h"

/** What the user is told of a library of a later program; versions are major << 16 | minor. */
[[nodiscard]] SuperString TooNewWords(std::uint32_t found, std::uint32_t newest);

/** Reads "Songs.vlb" from front to end.
    Threads  one at a time.
    Safety   nothing is allocated that the file does not really hold.
    Errors   statuses, each with its log line; nothing is shown. */
class CSongFileReader {
public:
    /** Reads the header. fnfErr: no file. eofErr: too short for a header. paramErr: a version that this program does
        not read (see IsTooNew), or no such file at all. */
    OSErr Open(const CFileRef& file);
    [[nodiscard]] const SongFileHeader& Header() const noexcept { return i_header; }
    /** Written by a later program: the user chooses whether to quit (TooNewText). */
    [[nodiscard]] bool IsTooNew() const noexcept { return i_header.Version() > kNewestVersion; }
    [[nodiscard]] SuperString TooNewText() const;

    /** The next song; its texts hold until the next call. False at the end, then Finish tells which end it was. */
    [[nodiscard]] bool Next(SongRecord& record);
    /** noErr: the whole file was read. eofErr: it ended inside a record, or before the number of songs in its header.
        paramErr: a damaged record. Otherwise the disc's. */
    OSErr Finish();

    /** Records read so far. */
    [[nodiscard]] std::uint32_t Count() const noexcept { return i_countL; }
    [[nodiscard]] std::uint32_t MisreadTexts() const noexcept { return i_misreadL; }

    static constexpr std::uint32_t kNewestVersion = 0x1000A, kFirstVersion = 0x10006;

private:
    bool Have(std::size_t bytesL);
    bool Stop(OSErr err, const char* whatZ);
    void TellMisread(const SongRecord& record, unsigned misread);

    CDataFork i_fork;
    SongFileHeader i_header;
    std::vector<std::byte> i_buffer;
    std::size_t i_at = 0, i_filled = 0;   // the unread part of the buffer
    std::uint64_t i_left = 0;             // of the file, behind the buffer
    std::uint32_t i_countL = 0, i_misreadL = 0;
    std::size_t i_biggestL = 0;
    std::string i_biggest;
    OSErr i_err = noErr;
    bool i_endB = false;
};
