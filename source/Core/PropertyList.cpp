#include "Core/PropertyList.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <cerrno>

#include "Core/CCFXmlParser.h"
#include "Core/CCFXmlWriter.h"
#include "Core/FSError.h"

namespace {

struct OpenFile {
    explicit OpenFile(const std::filesystem::path& file) : handle(::open(file.c_str(), O_RDONLY | O_CLOEXEC)) {}
    ~OpenFile() {
        if (handle >= 0) ::close(handle);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    int handle;
};

}   // namespace

OSErr ReadPropertyList(std::span<const std::byte> bytes, CCFValue& value) {
    CCFXmlParser parser;
    if (const OSErr err = parser.Feed(bytes); Failed(err)) return err;
    return parser.Finish(value);
}

OSErr ReadPropertyListFile(const std::filesystem::path& file, CCFValue& value, std::size_t maxBytes) {
    const OpenFile open(file);
    if (open.handle < 0) return MapErrno(errno);
    struct stat info {};
    if (::fstat(open.handle, &info) != 0) return MapErrno(errno);
    if (!S_ISREG(info.st_mode)) return paramErr;   // a folder, or a pipe that would never end
    CCFXmlParser parser;
    std::vector<std::byte> piece(256 * 1024);
    std::size_t totalL = 0;
    for (;;) {
        const ssize_t gotL = ::read(open.handle, piece.data(), piece.size());
        if (gotL < 0 && errno == EINTR) continue;
        if (gotL < 0) return MapErrno(errno);
        if (gotL == 0) break;
        totalL += static_cast<std::size_t>(gotL);
        if (totalL > maxBytes) return memFullErr;
        if (const OSErr err = parser.Feed({piece.data(), static_cast<std::size_t>(gotL)}); Failed(err)) return err;
    }
    return parser.Finish(value);
}

OSErr WritePropertyList(const CCFValue& value, std::string& text) {
    std::string whole;
    CCFXmlWriter writer([&](std::string_view bytes) {
        whole += bytes;
        return noErr;
    });
    writer.Value(value);
    if (const OSErr err = writer.Finish(); Failed(err)) return err;
    text = std::move(whole);
    return noErr;
}
