#include "Graphics/CSubCodeStream_File.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "Files/FSError.h"
#include "Graphics/CDGConstants.h"

CSubCodeStream_File::~CSubCodeStream_File() {
    if (i_descriptor >= 0) ::close(i_descriptor);
}

OSErr CSubCodeStream_File::Open(const std::filesystem::path& file) {
    if (i_descriptor >= 0) return paramErr;
    // O_NONBLOCK: a pipe of that name must not hold the main thread.
    i_descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (i_descriptor < 0) return MapErrno(errno);
    struct stat about {};
    if (::fstat(i_descriptor, &about) != 0) return MapErrno(errno);
    if (!S_ISREG(about.st_mode)) return paramErr;
    i_lengthL = about.st_size < 0 ? 0 : static_cast<std::size_t>(about.st_size) / kSubCodeUnit_Bytes;
    return noErr;
}

SubCodeRead CSubCodeStream_File::Read(std::span<std::uint8_t> bytes) {
    const std::size_t wantedL = bytes.size() / kSubCodeUnit_Bytes;
    const std::size_t takenL = std::min(wantedL, i_lengthL - i_positionL) * kSubCodeUnit_Bytes;
    const std::size_t startL = i_positionL * kSubCodeUnit_Bytes;
    std::size_t gotL = 0;
    while (gotL < takenL) {
        const ssize_t got =
            ::pread(i_descriptor, bytes.data() + gotL, takenL - gotL, static_cast<off_t>(startL + gotL));
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return {0, MapErrno(errno)};
        if (got == 0) break;
        gotL += static_cast<std::size_t>(got);
    }
    const std::size_t unitsL = gotL / kSubCodeUnit_Bytes;
    i_positionL += unitsL;
    return {unitsL, unitsL < wantedL ? eofErr : noErr};
}

OSErr CSubCodeStream_File::Rewind() {
    i_positionL = 0;
    return noErr;
}
