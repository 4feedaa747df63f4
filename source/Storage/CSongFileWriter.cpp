#include "Storage/CSongFileWriter.h"

#include "Core/CLog.h"

namespace {
constexpr std::size_t kWrite_Bytes = std::size_t{1} << 20;
}

OSErr CSongFileWriter::Start(const CFileRef& file, std::uint32_t songsL, std::uint8_t flags) {
    i_file = file;
    i_saveP = std::make_unique<CSafeSave>(i_file);
    i_leftL = songsL;
    i_err = noErr;
    if (const OSErr err = i_saveP->Start(SaveMode::kNew); Failed(err)) return Fail(err, "start save db");
    if (const OSErr err = i_fork.Open(i_file, FileAccess::kCreate); Failed(err)) return Fail(err, "save db: get file");
    if (const OSErr err = i_fork.SetEOF(CDataFork::PosMode::kFromStart, 0); Failed(err)) return Fail(err, "set db eof");
    i_header = {};
    i_header.songsL = songsL;
    i_header.flags = flags;
    i_skippedB = false;
    if (const OSErr err = WriteHeader(); Failed(err)) return err;
    i_buffer.reserve(kWrite_Bytes + 4096);
    return noErr;
}

OSErr CSongFileWriter::Add(const SongRecord& record) {
    if (Failed(i_err)) return i_err;
    if (record.songID == 0 || i_leftL == 0) return Fail(paramErr, "writing song header");
    if (const OSErr err = record.Encode(i_buffer); Failed(err)) return Fail(err, "writing song info");
    --i_leftL;
    return Flush(kWrite_Bytes, "writing song info");
}

OSErr CSongFileWriter::WriteHeader() {
    const OSErr err = i_fork.Write(i_header.Encode());
    return Failed(err) ? Fail(err, "write db header") : noErr;
}

void CSongFileWriter::Skip() {
    if (Failed(i_err) || i_leftL == 0) return;
    --i_leftL;
    --i_header.songsL;
    i_skippedB = true;
}

OSErr CSongFileWriter::Finish() {
    if (Failed(i_err)) return i_err;
    if (i_leftL != 0) return Fail(paramErr, "songs missing at the end of the save");
    if (const OSErr err = Flush(0, "writing song info"); Failed(err)) return err;
    if (i_skippedB) {
        if (const OSErr err = i_fork.SetPos(CDataFork::PosMode::kFromStart, 0); Failed(err))
            return Fail(err, "write db header");
        if (const OSErr err = WriteHeader(); Failed(err)) return err;
    }
    if (const OSErr err = i_fork.Close(); Failed(err)) return Fail(err, "close db");
    if (const OSErr err = i_saveP->Finish(); Failed(err)) return Fail(err, "safe save finish");
    i_err = paramErr;   // a writer writes one file
    i_saveP.reset();
    return noErr;
}

OSErr CSongFileWriter::Fail(OSErr err, const char* stepZ) {
    i_err = LogStep(err, stepZ, i_file.GetPath());
    if (i_fork.IsOpen()) static_cast<void>(i_fork.Close());   // the file is thrown away
    i_saveP.reset();
    return i_err;
}

OSErr CSongFileWriter::Flush(std::size_t keepL, const char* stepZ) {
    if (i_buffer.size() <= keepL) return noErr;
    const OSErr err = i_fork.Write(std::as_bytes(std::span(i_buffer)));
    i_buffer.clear();
    return Failed(err) ? Fail(err, stepZ) : noErr;
}
