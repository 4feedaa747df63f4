#include "Values/PropertyList.h"

#include <cerrno>
#include <vector>

#include "Files/CDataFork.h"
#include "Values/CCFXmlParser.h"
#include "Values/CCFXmlWriter.h"

OSErr ReadPropertyList(std::span<const std::byte> bytes, CCFValue& value) {
    CCFXmlParser parser;
    if (const OSErr err = parser.Feed(bytes); Failed(err)) return err;
    return parser.Finish(value);
}

OSErr ReadPropertyListFile(const std::filesystem::path& file, CCFValue& value, std::size_t maxBytes) {
    CDataFork fork;   // refuses a folder, and a pipe that would never end
    if (const OSErr err = fork.Open(CFileRef(file), FileAccess::kRead); Failed(err))
        return err == static_cast<OSErr>(EISDIR) ? paramErr : err;
    CCFXmlParser parser;
    std::vector<std::byte> piece(256 * 1024);
    std::size_t totalL = 0;
    for (OSErr read = noErr; read != eofErr;) {
        std::size_t gotL = 0;
        read = fork.Read(piece, gotL);
        if (Failed(read) && read != eofErr) return read;
        totalL += gotL;
        if (totalL > maxBytes) return memFullErr;
        if (const OSErr err = parser.Feed(std::span(piece).first(gotL)); Failed(err)) return err;
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
