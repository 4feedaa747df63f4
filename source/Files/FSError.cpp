#include "Files/FSError.h"

#include <cerrno>
#include <limits>

#include "Core/CLog.h"

namespace {

constexpr struct {
    int errnoL;
    OSErr err;
} kErrno_Map[] = {
    {EEXIST, dupFNErr},
    {ENOTEMPTY, afpDirNotEmpty},
    {EPERM, permissionsError},
    {EACCES, afpAccessDenied},
    {ENOENT, fnfErr},
    {ENOTDIR, fnfErr},
    {EILSEQ, bdNamErr},
    {ELOOP, noPathMappingErr},
    {ENOSPC, dskFulErr},
    {EDQUOT, dskFulErr},
    {EIO, ioErr},
    {EBADF, rfNumErr},
    {ENOMEM, memFullErr},
    {ENODEV, nsvErr},
    {ENXIO, nsvErr},
    {ESTALE, nsvErr},
    {EBUSY, opWrErr},
    {ETXTBSY, opWrErr},
    {EWOULDBLOCK, opWrErr},
    {ECANCELED, userCanceledErr},
    {EINTR, abortErr},
};

}   // namespace

OSErr MapErrno(int errnoL) noexcept {
    if (errnoL == 0) return noErr;
    for (const auto& row : kErrno_Map)
        if (row.errnoL == errnoL) return row.err;
    // A status has 16 bits; a number that does not fit must not turn into another one, least of all into 0.
    return errnoL > 0 && errnoL <= std::numeric_limits<short>::max() ? static_cast<OSErr>(errnoL) : ioErr;
}

OSErr FSError(int errnoL, const char* callZ, const std::filesystem::path& path1) {
    if (errnoL == 0) return noErr;
    LogF("### FS Error <%s>: %s: \n Path1: <%s>", callZ, ErrorText(errnoL).c_str(), path1.c_str());
    return MapErrno(errnoL);
}
