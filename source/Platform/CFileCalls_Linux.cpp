#include "Platform/CFileCalls_Linux.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysmacros.h>
#include <unistd.h>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <memory>

namespace {

/** 0, or the errno of a call that answers -1; made again when a signal came between. */
template <class Call>
int Try(Call call) {
    for (;;) {
        if (call() != -1) return 0;
        if (errno != EINTR) return errno;
    }
}

/** The same for calls that answer a count. */
template <class Call>
int TryCount(Call call, std::size_t& count) {
    count = 0;
    return Try([&] {
        const ssize_t result = call();
        if (result >= 0) count = static_cast<std::size_t>(result);
        return result;
    });
}

bool FitsOffset(std::uint64_t at) { return at <= static_cast<std::uint64_t>(std::numeric_limits<off_t>::max()); }

constexpr unsigned kLook_Mask = STATX_BASIC_STATS | STATX_BTIME;

std::int64_t Nanoseconds(const struct statx_timestamp& time) { return time.tv_sec * 1'000'000'000 + time.tv_nsec; }

FileInfo Told(const struct statx& told) {
    FileInfo info;
    info.kind = S_ISREG(told.stx_mode)   ? FileKind::kFile
                : S_ISDIR(told.stx_mode) ? FileKind::kFolder
                : S_ISLNK(told.stx_mode) ? FileKind::kLink
                                         : FileKind::kOther;
    info.bytesL = told.stx_size;
    info.deviceL = gnu_dev_makedev(told.stx_dev_major, told.stx_dev_minor);
    info.inodeL = told.stx_ino;
    if ((told.stx_mask & STATX_BTIME) != 0) info.bornL = Nanoseconds(told.stx_btime);
    info.modifiedL = Nanoseconds(told.stx_mtime);
    info.mode = told.stx_mode & 07777U;
    info.owner = told.stx_uid;
    return info;
}

int Flags(FileAccess access) {
    switch (access) {
        case FileAccess::kRead:
            return O_RDONLY;
        case FileAccess::kWrite:
            return O_RDWR;
        case FileAccess::kCreate:
            return O_RDWR | O_CREAT;
        case FileAccess::kCreateNew:
            return O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW;
        case FileAccess::kFolder:
            return O_RDONLY | O_DIRECTORY;
    }
    return O_RDONLY;
}

}   // namespace

int CFileCalls_Linux::Open(const Path& path, FileAccess access, std::uint32_t mode, int& handle) {
    handle = -1;
    // Not blocking: a pipe under a song's name must not hold the caller; for files it changes nothing.
    return Try([&] { return handle = ::open(path.c_str(), Flags(access) | O_CLOEXEC | O_NONBLOCK, mode); });
}

int CFileCalls_Linux::Close(int handle) {
    // Not made again after a signal: the kernel has let go of the number, and another thread may have it by now.
    return ::close(handle) == 0 || errno == EINTR ? 0 : errno;
}

int CFileCalls_Linux::ReadAt(int handle, std::uint64_t at, std::span<std::byte> to, std::size_t& got) {
    got = 0;
    if (!FitsOffset(at)) return EOVERFLOW;
    return TryCount([&] { return ::pread(handle, to.data(), to.size(), static_cast<off_t>(at)); }, got);
}

int CFileCalls_Linux::WriteAt(int handle, std::uint64_t at, std::span<const std::byte> from, std::size_t& written) {
    written = 0;
    if (!FitsOffset(at)) return EFBIG;
    return TryCount([&] { return ::pwrite(handle, from.data(), from.size(), static_cast<off_t>(at)); }, written);
}

int CFileCalls_Linux::Truncate(int handle, std::uint64_t bytes) {
    if (!FitsOffset(bytes)) return EFBIG;
    return Try([&] { return ::ftruncate(handle, static_cast<off_t>(bytes)); });
}

int CFileCalls_Linux::Sync(int handle) {
    return Try([&] { return ::fsync(handle); });
}

int CFileCalls_Linux::SetMode(int handle, std::uint32_t mode) {
    return Try([&] { return ::fchmod(handle, mode); });
}

int CFileCalls_Linux::SetModified(int handle, std::int64_t nanoseconds) {
    std::int64_t seconds = nanoseconds / 1'000'000'000;
    std::int64_t rest = nanoseconds % 1'000'000'000;
    if (rest < 0) {
        rest += 1'000'000'000;
        --seconds;
    }
    const struct timespec times[2] = {{0, UTIME_OMIT}, {seconds, rest}};
    return Try([&] { return ::futimens(handle, times); });
}

int CFileCalls_Linux::Lock(int handle) {
    return Try([&] { return ::flock(handle, LOCK_EX | LOCK_NB); });
}

int CFileCalls_Linux::Look(int handle, FileInfo& info) {
    struct statx told {};
    const int err = Try([&] { return ::statx(handle, "", AT_EMPTY_PATH, kLook_Mask, &told); });
    if (err == 0) info = Told(told);
    return err;
}

int CFileCalls_Linux::Look(const Path& path, bool followB, FileInfo& info) {
    struct statx told {};
    const int flags = followB ? 0 : AT_SYMLINK_NOFOLLOW;
    const int err = Try([&] { return ::statx(AT_FDCWD, path.c_str(), flags, kLook_Mask, &told); });
    if (err == 0) info = Told(told);
    return err;
}

int CFileCalls_Linux::Rename(const Path& from, const Path& to) {
    return Try([&] { return ::rename(from.c_str(), to.c_str()); });
}

int CFileCalls_Linux::RenameNew(const Path& from, const Path& to) {
    const int err = Try([&] { return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE); });
    if (err != EINVAL && err != ENOSYS) return err;
    // A file system that does not know the flag: look, then rename. A gap stays between the two.
    FileInfo ignored;
    const int found = Look(to, false, ignored);
    if (found == 0) return EEXIST;
    return found == ENOENT ? Rename(from, to) : found;
}

int CFileCalls_Linux::Exchange(const Path& one, const Path& other) {
    return Try([&] { return ::renameat2(AT_FDCWD, one.c_str(), AT_FDCWD, other.c_str(), RENAME_EXCHANGE); });
}

int CFileCalls_Linux::Unlink(const Path& path) {
    return Try([&] { return ::unlink(path.c_str()); });
}

int CFileCalls_Linux::MakeFolder(const Path& path, std::uint32_t mode) {
    return Try([&] { return ::mkdir(path.c_str(), mode); });
}

int CFileCalls_Linux::RemoveFolder(const Path& path) {
    return Try([&] { return ::rmdir(path.c_str()); });
}

int CFileCalls_Linux::List(const Path& folder, std::vector<std::string>& names) {
    names.clear();
    const std::unique_ptr<DIR, int (*)(DIR*)> list(::opendir(folder.c_str()), &::closedir);
    if (!list) return errno;
    for (;;) {
        errno = 0;
        const struct dirent* const entryP = ::readdir(list.get());
        if (entryP == nullptr) return errno;
        const std::string_view name = entryP->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
    }
}

int CFileCalls_Linux::HardLink(const Path& existing, const Path& added) {
    return Try([&] { return ::link(existing.c_str(), added.c_str()); });
}

int CFileCalls_Linux::ReadLink(const Path& path, Path& target) {
    std::string buffer(PATH_MAX, '\0');
    std::size_t got = 0;
    const int err = TryCount([&] { return ::readlink(path.c_str(), buffer.data(), buffer.size()); }, got);
    if (err != 0) return err;
    buffer.resize(got);
    target = std::move(buffer);
    return 0;
}

int CFileCalls_Linux::MakeLink(const Path& target, const Path& path) {
    return Try([&] { return ::symlink(target.c_str(), path.c_str()); });
}

int CFileCalls_Linux::RealPath(const Path& path, Path& real) {
    const std::unique_ptr<char, void (*)(void*)> found(::realpath(path.c_str(), nullptr), &std::free);
    if (!found) return errno;
    real = found.get();
    return 0;
}

int CFileCalls_Linux::MayWrite(const Path& path) {
    return Try([&] { return ::access(path.c_str(), W_OK); });
}

int CFileCalls_Linux::SpaceLeft(const Path& path, std::uint64_t& bytes) {
    struct statvfs volume {};
    const int err = Try([&] { return ::statvfs(path.c_str(), &volume); });
    if (err != 0) return err;
    const std::uint64_t block = volume.f_frsize;
    const std::uint64_t most = std::numeric_limits<std::uint64_t>::max();
    bytes = block != 0 && volume.f_bavail > most / block ? most : volume.f_bavail * block;
    return 0;
}
