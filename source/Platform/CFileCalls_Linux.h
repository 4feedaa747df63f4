#pragma once
#include "Platform/CFileCalls.h"

/** The file calls of the kernel. No state.
    Threads  any. */
class CFileCalls_Linux : public CFileCalls {
public:
    [[nodiscard]] int Open(const Path& path, FileAccess access, std::uint32_t mode, int& handle) override;
    int Close(int handle) override;
    [[nodiscard]] int ReadAt(int handle, std::uint64_t at, std::span<std::byte> to, std::size_t& got) override;
    [[nodiscard]] int WriteAt(int handle, std::uint64_t at, std::span<const std::byte> from,
                              std::size_t& written) override;
    [[nodiscard]] int Truncate(int handle, std::uint64_t bytes) override;
    [[nodiscard]] int Sync(int handle) override;
    [[nodiscard]] int SetMode(int handle, std::uint32_t mode) override;
    [[nodiscard]] int SetModified(int handle, std::int64_t nanoseconds) override;
    [[nodiscard]] int Lock(int handle) override;
    [[nodiscard]] int Look(int handle, FileInfo& info) override;
    [[nodiscard]] int Look(const Path& path, bool followB, FileInfo& info) override;
    [[nodiscard]] int Rename(const Path& from, const Path& to) override;
    [[nodiscard]] int RenameNew(const Path& from, const Path& to) override;
    [[nodiscard]] int Exchange(const Path& one, const Path& other) override;
    [[nodiscard]] int Unlink(const Path& path) override;
    [[nodiscard]] int MakeFolder(const Path& path, std::uint32_t mode) override;
    [[nodiscard]] int RemoveFolder(const Path& path) override;
    [[nodiscard]] int List(const Path& folder, std::vector<std::string>& names) override;
    [[nodiscard]] int HardLink(const Path& existing, const Path& added) override;
    [[nodiscard]] int ReadLink(const Path& path, Path& target) override;
    [[nodiscard]] int MakeLink(const Path& target, const Path& path) override;
    [[nodiscard]] int RealPath(const Path& path, Path& real) override;
    [[nodiscard]] int MayWrite(const Path& path) override;
    [[nodiscard]] int SpaceLeft(const Path& path, std::uint64_t& bytes) override;
};
