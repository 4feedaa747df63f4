#include "Platform/CFileCalls_Faults.h"

#include <fcntl.h>
#include <unistd.h>
#include <cerrno>

CFileCalls_Faults::~CFileCalls_Faults() {
    for (const auto& [id, handle] : i_dirty) ::close(handle);
}

void CFileCalls_Faults::FailAt(long n, int errnoL) {
    const Guard guard(i_lock);
    i_plan = Plan::kFail;
    i_atL = n;
    i_errnoL = errnoL;
    i_onwardsB = false;
}

void CFileCalls_Faults::FailFrom(long n, int errnoL) {
    const Guard guard(i_lock);
    FailAt(n, errnoL);
    i_onwardsB = true;
}

void CFileCalls_Faults::CutAt(long n, bool halfB) {
    const Guard guard(i_lock);
    i_plan = Plan::kCut;
    i_atL = n;
    i_halfB = halfB;
}

void CFileCalls_Faults::ExitAt(long n, int code) {
    const Guard guard(i_lock);
    i_plan = Plan::kExit;
    i_atL = n;
    i_errnoL = code;
}

void CFileCalls_Faults::SetSpace(std::uint64_t bytes) {
    const Guard guard(i_lock);
    i_spaceL = bytes;
}

void CFileCalls_Faults::CutPower() {
    i_cutB = true;
    for (const auto& [id, handle] : i_dirty) {
        FileInfo info;
        // A file that cannot be cut any more was unlinked with its folder: nobody will see it.
        if (i_below.Look(handle, info) == 0) static_cast<void>(i_below.Truncate(handle, info.bytesL / 2));
    }
}

int CFileCalls_Faults::Before(const char* callZ, const Path& path) {
    long n = 0;
    {
        const Guard guard(i_lock);
        if (i_cutB) return EIO;
        n = i_countL++;
    }
    if (i_watch) i_watch(n, callZ, path);   // which may wait for what another thread does
    const Guard guard(i_lock);
    const bool nowB = n == i_atL || (i_onwardsB && n > i_atL);
    if (!nowB) return 0;
    switch (i_plan) {
        case Plan::kNone:
            return 0;
        case Plan::kFail:
            return i_errnoL;
        case Plan::kExit:
            ::_exit(i_errnoL);
        case Plan::kCut:
            if (!i_halfB) CutPower();
            return EIO;
    }
    return 0;
}

CFileCalls_Faults::OpenFile CFileCalls_Faults::FileOf(int handle) const {
    const Guard guard(i_lock);
    const auto file = i_open.find(handle);
    return file == i_open.end() ? OpenFile{} : file->second;
}

void CFileCalls_Faults::MarkDirty(int handle) {
    FileInfo info;
    if (i_below.Look(handle, info) != 0) return;
    const Guard guard(i_lock);
    const FileID id{info.deviceL, info.inodeL};
    if (i_dirty.contains(id)) return;
    // Opened anew, not doubled: a double would keep a lock that the file's user has given back.
    const std::string name = "/proc/self/fd/" + std::to_string(handle);
    if (const int second = ::open(name.c_str(), O_RDWR | O_CLOEXEC); second >= 0) i_dirty[id] = second;
}

void CFileCalls_Faults::MarkFolder(const Path& changed) {
    const Guard guard(i_lock);
    i_dirtyFolders.insert(changed.parent_path());
}

int CFileCalls_Faults::Open(const Path& path, FileAccess access, std::uint32_t mode, int& handle) {
    handle = -1;
    if (const int err = Before("open", path); err != 0) return err;
    const int err = i_below.Open(path, access, mode, handle);
    const Guard guard(i_lock);
    if (err == 0) i_open[handle] = {path, access == FileAccess::kFolder};
    return err;
}

int CFileCalls_Faults::Close(int handle) {
    const int err = Before("close", PathOf(handle));
    const Guard guard(i_lock);   // over the closing too: the number may be another file's at once
    i_open.erase(handle);
    const int closed = i_below.Close(handle);   // even without power: the handle is the process's, not the disc's
    return err != 0 ? err : closed;
}

int CFileCalls_Faults::ReadAt(int handle, std::uint64_t at, std::span<std::byte> to, std::size_t& got) {
    got = 0;
    const int err = Before("read", PathOf(handle));
    return err != 0 ? err : i_below.ReadAt(handle, at, to, got);
}

int CFileCalls_Faults::WriteAt(int handle, std::uint64_t at, std::span<const std::byte> from, std::size_t& written) {
    written = 0;
    const bool wasCutB = IsCut();
    const int err = Before("write", PathOf(handle));
    const Guard guard(i_lock);
    if (wasCutB || (err != 0 && i_cutB)) return err;
    std::size_t room = err != 0 ? from.size() / 2 : from.size();
    if (i_spaceL && room > *i_spaceL) {
        room = static_cast<std::size_t>(*i_spaceL);
        if (room == 0 && err == 0) return ENOSPC;   // as the kernel does: first a short write, then the error
    }
    const int below = i_below.WriteAt(handle, at, from.first(room), written);
    if (written > 0) MarkDirty(handle);
    if (i_spaceL) *i_spaceL -= written;
    if (err != 0 && i_plan == Plan::kCut) CutPower();
    if (err != 0) written = 0;
    return err != 0 ? err : below;
}

int CFileCalls_Faults::Truncate(int handle, std::uint64_t bytes) {
    if (const int err = Before("truncate", PathOf(handle)); err != 0) return err;
    const int err = i_below.Truncate(handle, bytes);
    if (err == 0) MarkDirty(handle);
    return err;
}

int CFileCalls_Faults::Sync(int handle) {
    const OpenFile file = FileOf(handle);
    if (const int err = Before("sync", file.path); err != 0) return err;
    FileInfo info;
    const int err = i_below.Sync(handle);
    if (err != 0 || i_below.Look(handle, info) != 0) return err;
    const Guard guard(i_lock);
    if (const auto it = i_dirty.find({info.deviceL, info.inodeL}); it != i_dirty.end()) {
        ::close(it->second);
        i_dirty.erase(it);
    }
    if (file.folderB) i_dirtyFolders.erase(file.path);
    return 0;
}

int CFileCalls_Faults::SetMode(int handle, std::uint32_t mode) {
    const int err = Before("chmod", PathOf(handle));
    return err != 0 ? err : i_below.SetMode(handle, mode);
}

int CFileCalls_Faults::SetModified(int handle, std::int64_t nanoseconds) {
    const int err = Before("utimens", PathOf(handle));
    return err != 0 ? err : i_below.SetModified(handle, nanoseconds);
}

int CFileCalls_Faults::Lock(int handle) {
    const int err = Before("lock", PathOf(handle));
    return err != 0 ? err : i_below.Lock(handle);
}

int CFileCalls_Faults::Look(int handle, FileInfo& info) {
    const int err = Before("fstat", PathOf(handle));
    return err != 0 ? err : i_below.Look(handle, info);
}

int CFileCalls_Faults::Look(const Path& path, bool followB, FileInfo& info) {
    const int err = Before("stat", path);
    return err != 0 ? err : i_below.Look(path, followB, info);
}

int CFileCalls_Faults::Rename(const Path& from, const Path& to) {
    if (const int err = Before("rename", to); err != 0) return err;
    const int err = i_below.Rename(from, to);
    if (err == 0) MarkFolder(to);
    return err;
}

int CFileCalls_Faults::RenameNew(const Path& from, const Path& to) {
    if (const int err = Before("rename new", to); err != 0) return err;
    const int err = i_below.RenameNew(from, to);
    if (err == 0) MarkFolder(to);
    return err;
}

int CFileCalls_Faults::Exchange(const Path& one, const Path& other) {
    const int err = Before("exchange", other);
    return err != 0 ? err : i_below.Exchange(one, other);
}

int CFileCalls_Faults::Unlink(const Path& path) {
    const int err = Before("unlink", path);
    return err != 0 ? err : i_below.Unlink(path);
}

int CFileCalls_Faults::MakeFolder(const Path& path, std::uint32_t mode) {
    const int err = Before("mkdir", path);
    return err != 0 ? err : i_below.MakeFolder(path, mode);
}

int CFileCalls_Faults::RemoveFolder(const Path& path) {
    const int err = Before("rmdir", path);
    return err != 0 ? err : i_below.RemoveFolder(path);
}

int CFileCalls_Faults::List(const Path& folder, std::vector<std::string>& names) {
    names.clear();
    const int err = Before("list", folder);
    return err != 0 ? err : i_below.List(folder, names);
}

int CFileCalls_Faults::HardLink(const Path& existing, const Path& added) {
    const int err = Before("link", added);
    return err != 0 ? err : i_below.HardLink(existing, added);
}

int CFileCalls_Faults::ReadLink(const Path& path, Path& target) {
    const int err = Before("readlink", path);
    return err != 0 ? err : i_below.ReadLink(path, target);
}

int CFileCalls_Faults::MakeLink(const Path& target, const Path& path) {
    const int err = Before("symlink", path);
    return err != 0 ? err : i_below.MakeLink(target, path);
}

int CFileCalls_Faults::RealPath(const Path& path, Path& real) {
    const int err = Before("realpath", path);
    return err != 0 ? err : i_below.RealPath(path, real);
}

int CFileCalls_Faults::MayWrite(const Path& path) {
    const int err = Before("access", path);
    return err != 0 ? err : i_below.MayWrite(path);
}

int CFileCalls_Faults::SpaceLeft(const Path& path, std::uint64_t& bytes) {
    const int err = Before("statvfs", path);
    if (err != 0) return err;
    const int below = i_below.SpaceLeft(path, bytes);
    const Guard guard(i_lock);
    if (below == 0 && i_spaceL) bytes = *i_spaceL;
    return below;
}
