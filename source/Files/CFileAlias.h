#pragma once
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <vector>

#include "Platform/CFileCalls.h"
#include "Platform/OSErr.h"

/** What makes a file itself, whatever its name: its number on its volume, and the time of its birth, since numbers are
    given again after a deletion. */
struct FileIdentity {
    std::uint64_t deviceL = 0, inodeL = 0;
    std::int64_t bornL = 0;   // 0: the file system does not tell

    friend bool operator==(const FileIdentity&, const FileIdentity&) = default;   // number for number; Is() asks more
    [[nodiscard]] static FileIdentity Of(const FileInfo& info) { return {info.deviceL, info.inodeL, info.bornL}; }
    /** A birth time that agrees makes up for a volume that got another number at a start of the machine. */
    [[nodiscard]] bool Is(const FileIdentity& other) const {
        if (inodeL != other.inodeL) return false;
        const bool bornB = bornL != 0 && other.bornL != 0;
        return bornB ? bornL == other.bornL : deviceL == other.deviceL;
    }
};

/** A name for a file that survives a move: its path, and its identity to look for when nothing is left at the path.
    Form     "VAls", u16 version 1, u64 device, u64 inode, u64 birth time, u32 length and bytes of the path; big-endian.
    Threads  any, a value. */
class CFileAlias {
public:
    using Path = std::filesystem::path;

    CFileAlias(Path path, FileIdentity identity) : i_path(std::move(path)), i_identity(identity) {}

    [[nodiscard]] const Path& GetPath() const { return i_path; }
    [[nodiscard]] const FileIdentity& Identity() const { return i_identity; }

    /** Where the file is now. The path wins when anything is there, since a safe save puts a new file of the name in
        place. Else the file is looked for in the folders below its old folder, then below the folder above that;
        fnfErr after kSearch_Most looks. Reads the disc. */
    [[nodiscard]] OSErr Resolve(Path& found) const;

    [[nodiscard]] std::vector<std::byte> Encode() const;
    /** Nothing for a record that is not whole and of this form. */
    [[nodiscard]] static std::optional<CFileAlias> Decode(std::span<const std::byte> record);

    static constexpr std::size_t kSearch_Most = 20'000;

private:
    Path i_path;
    FileIdentity i_identity;
};
