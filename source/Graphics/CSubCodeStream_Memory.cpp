#include "Graphics/CSubCodeStream_Memory.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

namespace {
constexpr std::uintmax_t kMostBytes = std::uintmax_t{1} << 30;

OSErr FromErrno(int number) {
    switch (number) {
        case ENOENT:
        case ENOTDIR:
            return fnfErr;
        case EACCES:
        case EPERM:
            return permErr;
        case ENOMEM:
            return memFullErr;
        default:
            return ioErr;
    }
}

/** An open descriptor's life. */
class CDescriptor {
public:
    explicit CDescriptor(int number) : i_number(number) {}
    ~CDescriptor() {
        if (i_number >= 0) ::close(i_number);
    }
    CDescriptor(const CDescriptor&) = delete;
    CDescriptor& operator=(const CDescriptor&) = delete;
    [[nodiscard]] int Number() const { return i_number; }

private:
    int i_number;
};
}   // namespace

CSubCodeStream_Memory::CSubCodeStream_Memory(std::span<const std::uint8_t> bytes)
    : i_bytes(std::make_unique_for_overwrite<std::uint8_t[]>(bytes.size())), i_lengthL(bytes.size() / kUnitBytes) {
    std::ranges::copy(bytes, i_bytes.get());
}

OSErr CSubCodeStream_Memory::LoadFile(const std::filesystem::path& file) {
    // O_NONBLOCK: a pipe of that name must not hold the main thread.
    const CDescriptor open(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (open.Number() < 0) return FromErrno(errno);
    struct stat about {};
    if (::fstat(open.Number(), &about) != 0) return FromErrno(errno);
    if (!S_ISREG(about.st_mode)) return paramErr;
    if (about.st_size < 0 || static_cast<std::uintmax_t>(about.st_size) > kMostBytes) return memFullErr;
    const auto sizeL = static_cast<std::size_t>(about.st_size);
    auto bytes = std::make_unique_for_overwrite<std::uint8_t[]>(sizeL);   // not zeroed: each byte given out was read
    std::size_t gotL = 0;
    while (gotL < sizeL) {
        const ssize_t got = ::read(open.Number(), bytes.get() + gotL, sizeL - gotL);
        if (got < 0 && errno == EINTR) continue;
        if (got < 0) return FromErrno(errno);
        if (got == 0) break;   // the file became shorter meanwhile
        gotL += static_cast<std::size_t>(got);
    }
    i_bytes = std::move(bytes);
    i_lengthL = gotL / kUnitBytes;
    i_positionL = 0;
    return noErr;
}

SubCodeRead CSubCodeStream_Memory::Read(std::span<std::uint8_t> bytes) {
    const std::size_t wantedL = bytes.size() / kUnitBytes;
    const std::size_t unitsL = std::min(wantedL, i_lengthL - i_positionL);
    if (unitsL > 0) std::memcpy(bytes.data(), i_bytes.get() + i_positionL * kUnitBytes, unitsL * kUnitBytes);
    i_positionL += unitsL;
    return {unitsL, unitsL < wantedL ? eofErr : noErr};
}

OSErr CSubCodeStream_Memory::Rewind() {
    i_positionL = 0;
    return noErr;
}
