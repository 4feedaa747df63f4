#include "Zip/CZipArchive.h"

#include "Core/CLog.h"
#include "Files/CByteSource_File.h"
#include "Zip/ZipDirectory.h"

OSErr CZipArchive::Open(const CFileRef& file) {
    i_file = file;
    i_members.clear();
    i_fault = ZipFault::kRead;
    i_repairedB = false;
    CByteSource_File source;
    if (const OSErr err = source.Open(file); Failed(err)) return err;
    return Open(source);
}

OSErr CZipArchive::Open(CByteSource& source) {
    i_members.clear();
    i_repairedB = false;
    i_fault = ReadZipDirectory(source, i_members);
    if (i_fault == ZipFault::kNone) return noErr;
    const std::string name = i_file.GetName();
    const bool damagedB = i_fault == ZipFault::kDirectory || i_fault == ZipFault::kTruncated;
    if (damagedB && ReadZipHeaders(source, i_members) == ZipFault::kNone) {
        LogF("Zip “%s”: %s; read by the headers of its members: %zu found", name.c_str(), TextOf(i_fault),
             i_members.size());
        i_repairedB = true;
        i_fault = ZipFault::kNone;
        return noErr;
    }
    LogF("### Error opening zip “%s”: %s", name.c_str(), TextOf(i_fault));
    return StatusOf(i_fault);
}
