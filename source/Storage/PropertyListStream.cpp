#include "Storage/PropertyListStream.h"

#include "Core/CLog.h"
#include "Files/CDataFork.h"
#include "Files/CSafeSave.h"

OSErr ReadPropertyListStream(const CFileRef& file, CCFXmlParser::Taker taker, CCFValue& root) {
    LogF("Reading file: %s", file.GetPath().c_str());
    CDataFork fork;
    if (const OSErr err = fork.Open(file, FileAccess::kRead); Failed(err)) return err;
    CCFXmlParser parser(std::move(taker));
    std::vector<std::byte> piece(std::size_t{256} << 10);
    for (OSErr read = noErr; read != eofErr;) {
        std::size_t gotL = 0;
        read = fork.Read(piece, gotL);
        if (Failed(read) && read != eofErr) return read;
        if (const OSErr err = parser.Feed(std::span(piece).first(gotL)); Failed(err)) return err;
    }
    return parser.Finish(root);
}

OSErr WritePropertyListStream(const CFileRef& file, const std::function<void(CCFXmlWriter&)>& write) {
    LogF("## PList Write Start: %s\n", file.GetPath().c_str());
    CFileRef safe = file;
    CSafeSave save(safe);
    if (const OSErr err = save.Start(SaveMode::kNew); Failed(err)) return LogStep(err, "safe save start");
    CDataFork fork;   // after the save: closed before the safe file is taken away
    if (const OSErr err = fork.Open(safe, FileAccess::kCreate); Failed(err)) return LogStep(err, "write plist: open");
    if (const OSErr err = fork.SetEOF(CDataFork::PosMode::kFromStart, 0); Failed(err))
        return LogStep(err, "write plist: eof");
    CCFXmlWriter writer([&fork](std::string_view bytes) { return fork.Write(std::as_bytes(std::span(bytes))); });
    write(writer);
    if (const OSErr err = writer.Finish(); Failed(err)) return LogStep(err, "write plist", file.GetPath());
    if (const OSErr err = fork.Close(); Failed(err)) return LogStep(err, "write plist: close", file.GetPath());
    if (const OSErr err = save.Finish(); Failed(err)) return LogStep(err, "safe save finish", file.GetPath());
    LogF("## PList Write End: %s\n", file.GetPath().c_str());
    return noErr;
}
