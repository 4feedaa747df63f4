#pragma once
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <span>
#include <string>
#include <vector>

enum class FileKind : unsigned char { kFile, kFolder, kLink, kOther };

/** What a look at a file tells. */
struct FileInfo {
    FileKind kind = FileKind::kOther;
    std::uint64_t bytesL = 0;
    std::uint64_t deviceL = 0;   // the volume's number; may differ after the next start of the machine
    std::uint64_t inodeL = 0;
    std::int64_t bornL = 0;       // nanoseconds since 1970; 0 when the file system does not tell
    std::int64_t modifiedL = 0;   // nanoseconds since 1970
    std::uint32_t mode = 0;       // the permission bits alone
    std::uint32_t owner = 0;      // user id
};

/** How a file is opened. Every handle is closed in child processes. */
enum class FileAccess : unsigned char {
    kRead,        // must be there
    kWrite,       // read and write, must be there
    kCreate,      // read and write, made when missing
    kCreateNew,   // read and write, EEXIST when anything of the name is there
    kFolder,      // a folder, for Lock and Sync
};

/** Every file call that the engine makes, one virtual each, so that a test can fail or stop it anywhere.
    Results are `errno` values, 0 for success; a call interrupted by a signal is made again inside.
    Threads  any; a handle belongs to one thread at a time.
    Owner    handles are plain numbers, to be closed by the caller (CDataFork does). */
class CFileCalls {
public:
    using Path = std::filesystem::path;
    virtual ~CFileCalls() = default;

    [[nodiscard]] virtual int Open(const Path& path, FileAccess access, std::uint32_t mode, int& handle) = 0;
    virtual int Close(int handle) = 0;
    /** `got` is 0 at the end of the file. May be short. */
    [[nodiscard]] virtual int ReadAt(int handle, std::uint64_t at, std::span<std::byte> to, std::size_t& got) = 0;
    /** May be short: the rest is the caller's to write. */
    [[nodiscard]] virtual int WriteAt(int handle, std::uint64_t at, std::span<const std::byte> from,
                                      std::size_t& written) = 0;
    [[nodiscard]] virtual int Truncate(int handle, std::uint64_t bytes) = 0;
    /** Down to the disc; of a folder: its names. */
    [[nodiscard]] virtual int Sync(int handle) = 0;
    [[nodiscard]] virtual int SetMode(int handle, std::uint32_t mode) = 0;
    [[nodiscard]] virtual int SetModified(int handle, std::int64_t nanoseconds) = 0;
    /** An exclusive lock that ends with the handle or the process. EWOULDBLOCK when another has it. */
    [[nodiscard]] virtual int Lock(int handle) = 0;
    [[nodiscard]] virtual int Look(int handle, FileInfo& info) = 0;

    /** `followB`: at what a link points to, in place of the link. */
    [[nodiscard]] virtual int Look(const Path& path, bool followB, FileInfo& info) = 0;
    /** Puts `from` in place of `to` in one step; EXDEV across volumes. */
    [[nodiscard]] virtual int Rename(const Path& from, const Path& to) = 0;
    /** EEXIST when anything named `to` is there. */
    [[nodiscard]] virtual int RenameNew(const Path& from, const Path& to) = 0;
    /** The two files change places in one step. */
    [[nodiscard]] virtual int Exchange(const Path& one, const Path& other) = 0;
    [[nodiscard]] virtual int Unlink(const Path& path) = 0;
    [[nodiscard]] virtual int MakeFolder(const Path& path, std::uint32_t mode) = 0;
    [[nodiscard]] virtual int RemoveFolder(const Path& path) = 0;
    /** The names in a folder without "." and "..", in no order. */
    [[nodiscard]] virtual int List(const Path& folder, std::vector<std::string>& names) = 0;
    [[nodiscard]] virtual int HardLink(const Path& existing, const Path& added) = 0;
    [[nodiscard]] virtual int ReadLink(const Path& path, Path& target) = 0;
    [[nodiscard]] virtual int MakeLink(const Path& target, const Path& path) = 0;
    /** The path without links and dots; everything in it must be there. */
    [[nodiscard]] virtual int RealPath(const Path& path, Path& real) = 0;
    /** 0 when this process may write there. */
    [[nodiscard]] virtual int MayWrite(const Path& path) = 0;
    /** Bytes that this user may still fill on the volume of `path`. */
    [[nodiscard]] virtual int SpaceLeft(const Path& path, std::uint64_t& bytes) = 0;

    /** The calls in use: the machine's, unless a test installed others. */
    [[nodiscard]] static CFileCalls& Get();
    /** For tests: `callsP` is used until null is installed again, and is not owned. Not while other threads run. */
    static void Install(CFileCalls* callsP);
};
