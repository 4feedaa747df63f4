#include "Files/CDataFork.h"

#include <cerrno>
#include <limits>
#include <utility>

#include "Core/CLog.h"
#include "Files/FSError.h"

namespace {

constexpr std::uint64_t kSetEOF_Limit = 0xFFFFFFFF;

const char* AccessZ(FileAccess access) {
    switch (access) {
        case FileAccess::kRead:
            return "r";
        case FileAccess::kWrite:
            return "rw";
        case FileAccess::kCreate:
            return "rw, create";
        case FileAccess::kCreateNew:
            return "rw, new";
        case FileAccess::kFolder:
            return "folder";
    }
    return "";
}

}   // namespace

CDataFork::~CDataFork() {
    if (IsOpen()) static_cast<void>(Close());   // logged; who wants the status closes himself
}

CDataFork::CDataFork(CDataFork&& other) noexcept
    : i_path(std::move(other.i_path)), i_handle(std::exchange(other.i_handle, -1)), i_posL(other.i_posL) {}

OSErr CDataFork::Told(int errnoL, const char* callZ) const { return FSError(errnoL, callZ, i_path); }

OSErr CDataFork::Open(const CFileRef& file, FileAccess access, bool tracedB) {
    if (IsOpen()) return opWrErr;
    i_path = file.GetPath();
    i_posL = 0;
    if (tracedB) LogF("Opening “%s” with access: “%s”", file.GetName().c_str(), AccessZ(access));
    if (i_path.empty()) return errFSMissingName;
    CFileCalls& calls = CFileCalls::Get();
    if (const int err = calls.Open(i_path, access, 0666, i_handle); err != 0) return Told(err, "open");
    FileInfo info;
    const int err = calls.Look(i_handle, info);
    const FileKind wanted = access == FileAccess::kFolder ? FileKind::kFolder : FileKind::kFile;
    if (err == 0 && info.kind == wanted) return noErr;
    OSErr status = Told(err != 0 ? err : info.kind == FileKind::kFolder ? EISDIR : EINVAL, "open");
    if (err == 0 && info.kind != FileKind::kFolder) status = paramErr;   // a pipe, or a file where a folder was meant
    calls.Close(std::exchange(i_handle, -1));
    return status;
}

OSErr CDataFork::Close() {
    if (!IsOpen()) return fnOpnErr;
    return Told(CFileCalls::Get().Close(std::exchange(i_handle, -1)), "close");
}

OSErr CDataFork::Read(std::span<std::byte> to, std::size_t& got) {
    got = 0;
    if (!IsOpen()) return fnOpnErr;
    while (got < to.size()) {
        std::size_t some = 0;
        if (const int err = CFileCalls::Get().ReadAt(i_handle, i_posL, to.subspan(got), some); err != 0)
            return Told(err, "read");
        if (some == 0) return eofErr;
        got += some;
        i_posL += some;
    }
    return noErr;
}

OSErr CDataFork::Write(std::span<const std::byte> from) {
    if (!IsOpen()) return fnOpnErr;
    while (!from.empty()) {
        std::size_t some = 0;
        if (const int err = CFileCalls::Get().WriteAt(i_handle, i_posL, from, some); err != 0)
            return Told(err, "write");
        if (some == 0) return Told(EIO, "write");   // never seen of a file, and would go round for ever
        from = from.subspan(some);
        i_posL += some;
    }
    return noErr;
}

OSErr CDataFork::Look(FileInfo& info) const {
    return IsOpen() ? Told(CFileCalls::Get().Look(i_handle, info), "fstat") : fnOpnErr;
}

OSErr CDataFork::GetEOF(std::uint64_t& bytes) const {
    FileInfo info;
    const OSErr err = Look(info);
    if (!Failed(err)) bytes = info.bytesL;
    return err;
}

OSErr CDataFork::SetEOF(PosMode mode, std::uint64_t bytes) {
    if (!IsOpen()) return fnOpnErr;
    if (mode != PosMode::kFromStart || bytes >= kSetEOF_Limit) return paramErr;
    return Told(CFileCalls::Get().Truncate(i_handle, bytes), "truncate");
}

OSErr CDataFork::SetPos(PosMode mode, std::int64_t offset) {
    if (!IsOpen()) return fnOpnErr;
    std::uint64_t from = 0;
    if (mode == PosMode::kFromMark) from = i_posL;
    if (mode == PosMode::kFromEnd)
        if (const OSErr err = GetEOF(from); Failed(err)) return err;
    constexpr std::uint64_t kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (offset < 0) {
        const std::uint64_t back = 0 - static_cast<std::uint64_t>(offset);
        if (back > from) return paramErr;
        i_posL = from - back;
        return noErr;
    }
    if (from > kMost || static_cast<std::uint64_t>(offset) > kMost - from) return paramErr;
    i_posL = from + static_cast<std::uint64_t>(offset);
    return noErr;
}

OSErr CDataFork::Sync() { return IsOpen() ? Told(CFileCalls::Get().Sync(i_handle), "fsync") : fnOpnErr; }

OSErr CDataFork::SetMode(std::uint32_t mode) {
    return IsOpen() ? Told(CFileCalls::Get().SetMode(i_handle, mode), "fchmod") : fnOpnErr;
}

OSErr CDataFork::SetModified(std::int64_t nanoseconds) {
    return IsOpen() ? Told(CFileCalls::Get().SetModified(i_handle, nanoseconds), "futimens") : fnOpnErr;
}

OSErr CDataFork::Lock() { return IsOpen() ? MapErrno(CFileCalls::Get().Lock(i_handle)) : fnOpnErr; }

OSErr ReadWholeFile(const CFileRef& file, std::string& bytes, std::uint64_t most) {
    CDataFork fork;
    if (const OSErr err = fork.Open(file, FileAccess::kRead); Failed(err)) return err;
    std::uint64_t sizeL = 0;
    if (const OSErr err = fork.GetEOF(sizeL); Failed(err)) return err;
    std::string all;
    // The size is only a first word: a file under /proc tells 0, and one that is being written grows.
    constexpr std::size_t kStep = 64 * 1024;
    if (sizeL > most) return eofErr;
    all.reserve(static_cast<std::size_t>(sizeL) + 1);
    for (;;) {
        const std::size_t hadL = all.size();
        all.resize(std::max(all.capacity(), hadL + kStep));
        std::size_t got = 0;
        const OSErr err = fork.Read(std::as_writable_bytes(std::span{all}.subspan(hadL)), got);
        all.resize(hadL + got);
        if (all.size() > most) return eofErr;
        if (err == eofErr) break;
        if (Failed(err)) return err;
    }
    bytes = std::move(all);
    return noErr;
}
