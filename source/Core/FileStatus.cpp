#include "Core/FileStatus.h"

#include <cerrno>

OSErr StatusOfErrno(int errorL) noexcept {
    switch (errorL) {
        case 0:
            return noErr;
        case ENOENT:
        case ENOTDIR:
            return fnfErr;
        case EACCES:
        case EPERM:
        case EROFS:
            return permErr;
        case ENOSPC:
        case EDQUOT:
            return dskFulErr;
        case EEXIST:
            return dupFNErr;
        case EIO:
            return ioErr;
        case ENOMEM:
            return memFullErr;
        case ENAMETOOLONG:
            return bdNamErr;
        default:
            return static_cast<OSErr>(errorL);
    }
}
