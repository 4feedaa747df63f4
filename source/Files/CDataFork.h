#pragma once
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

#include "Files/CFileRef.h"
#include "Platform/CFileCalls.h"

/** An open file with a position of its own, closed with its life.
    Units    bytes; positions have 64 bits.
    Threads  one at a time.
    Errors   statuses; a call that failed at the system leaves an "### FS Error" line. */
class CDataFork {
public:
    enum class PosMode : unsigned char { kFromStart, kFromEnd, kFromMark };

    CDataFork() = default;
    ~CDataFork();
    CDataFork(const CDataFork&) = delete;
    CDataFork& operator=(const CDataFork&) = delete;
    CDataFork(CDataFork&& other) noexcept;

    /** `tracedB` logs "Opening “name” with access: “r”". A folder, pipe or device is refused with paramErr. */
    OSErr Open(const CFileRef& file, FileAccess access, bool tracedB = false);
    /** The first failure since Open that nobody was told of shows up here at the latest. */
    OSErr Close();
    [[nodiscard]] bool IsOpen() const { return i_handle >= 0; }

    /** Fills the front of `to`, from the position on. eofErr when the file ends first; `got` tells how much came. */
    OSErr Read(std::span<std::byte> to, std::size_t& got);
    /** All of `from`, at the position, or a failure. */
    OSErr Write(std::span<const std::byte> from);
    OSErr GetEOF(std::uint64_t& bytes) const;
    /** Only kFromStart, and below 0xFFFFFFFF; paramErr else. */
    OSErr SetEOF(PosMode mode, std::uint64_t bytes);
    [[nodiscard]] std::uint64_t GetPos() const { return i_posL; }
    /** paramErr for a place before the start; one after the end is fine. */
    OSErr SetPos(PosMode mode, std::int64_t offset);
    /** Down to the disc. */
    OSErr Sync();
    OSErr SetMode(std::uint32_t mode);
    OSErr SetModified(std::int64_t nanoseconds);
    /** Exclusive, for the life of this object; opWrErr when another has it. */
    OSErr Lock();
    OSErr Look(FileInfo& info) const;

private:
    OSErr Told(int errnoL, const char* callZ) const;

    std::filesystem::path i_path;   // for log lines
    int i_handle = -1;
    std::uint64_t i_posL = 0;
};

/** The whole of a file. eofErr when it is over `most` bytes. */
OSErr ReadWholeFile(const CFileRef& file, std::string& bytes, std::uint64_t most = 1ULL << 31);
