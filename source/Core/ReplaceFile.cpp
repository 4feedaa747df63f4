#include "Core/ReplaceFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>
#include <cstdlib>
#include <string>
#include <utility>

#include "Core/CLog.h"
#include "Core/FSError.h"

namespace {

/** The file beside the old one; gone at the end unless it took its place. */
struct BesideFile {
    ~BesideFile() {
        if (handle >= 0) ::close(handle);
        if (!path.empty()) ::unlink(path.c_str());
    }
    OSErr Create(const std::filesystem::path& file) {
        path = (file.parent_path() / ("." + file.filename().string() + ".XXXXXX")).string();
        handle = ::mkostemp(path.data(), O_CLOEXEC);
        if (handle < 0) {
            path.clear();
            return MapErrno(errno);
        }
        struct stat old {};
        const bool oldB = ::stat(file.c_str(), &old) == 0;
        return ::fchmod(handle, oldB ? old.st_mode & 07777 : 0644) == 0 ? noErr : MapErrno(errno);
    }
    [[nodiscard]] OSErr Write(std::span<const std::byte> bytes) const {
        while (!bytes.empty()) {
            const ssize_t writtenL = ::write(handle, bytes.data(), bytes.size());
            if (writtenL < 0 && errno == EINTR) continue;
            if (writtenL <= 0) return writtenL < 0 ? MapErrno(errno) : dskFulErr;
            bytes = bytes.subspan(static_cast<std::size_t>(writtenL));
        }
        return noErr;
    }
    OSErr Sync() {
        if (::fsync(handle) != 0) return MapErrno(errno);
        // Some file systems tell of a full disk only here.
        return ::close(std::exchange(handle, -1)) == 0 ? noErr : MapErrno(errno);
    }
    OSErr TakePlaceOf(const std::filesystem::path& file) {
        if (::rename(path.c_str(), file.c_str()) != 0) return MapErrno(errno);
        path.clear();
        const int folder = ::open(file.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (folder < 0) return MapErrno(errno);
        const int failed = ::fsync(folder) != 0 ? errno : 0;
        ::close(folder);
        // A file system that cannot sync a folder has nothing to lose by it.
        return failed == EINVAL ? noErr : MapErrno(failed);
    }
    std::string path;
    int handle = -1;
};

}   // namespace

OSErr ReplaceFile(const std::filesystem::path& named, std::span<const std::byte> bytes) {
    std::error_code problem;
    std::filesystem::path file = std::filesystem::absolute(named, problem);
    if (problem || file.filename().empty()) return LogStep(paramErr, "replacing file: name", named);
    if (const auto target = std::filesystem::canonical(file, problem); !problem) file = target;
    std::filesystem::create_directories(file.parent_path(), problem);   // Create tells when this failed
    BesideFile beside;
    if (const OSErr err = LogStep(beside.Create(file), "replacing file: create", file); Failed(err)) return err;
    if (const OSErr err = LogStep(beside.Write(bytes), "replacing file: write", file); Failed(err)) return err;
    if (const OSErr err = LogStep(beside.Sync(), "replacing file: sync", file); Failed(err)) return err;
    return LogStep(beside.TakePlaceOf(file), "replacing file: replace", file);
}
