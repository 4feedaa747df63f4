#include "Audio/SongSource.h"

#include "Audio/CAS_QuickTimeAudioReader.h"
#include "Core/CLog.h"
#include "Core/SmallExtension.h"
#include "Files/CByteSource_File.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"
#include "Zip/CZipSongMembers.h"

namespace {

OSErr FindInZip(const CFileRef& file, MediaKind kind, SongBytes& found) {
    CZipArchive zip;
    if (const OSErr err = zip.Open(file); Failed(err)) return err;
    const CZipSongMembers chosen = CZipSongMembers::Choose(zip.Members());
    const bool soundB = kind == MediaKind::kSound;
    const auto index = soundB && chosen.audio ? chosen.audio : chosen.video;
    if (!index)
        return LogStep(fnfErr, soundB ? "song source: no sound in the zip" : "song source: no video in the zip",
                       file.GetPath());
    const CZipMember& member = zip.Members()[*index];
    found.make = [file, member](std::unique_ptr<CByteSource>& bytesP) {
        auto zipP = std::make_unique<CByteSource_Zip>();
        const OSErr err = zipP->Open(file, member);
        bytesP = std::move(zipP);
        return err;
    };
    found.extension = SmallExtension(member.SafeName());
    return noErr;
}

}   // namespace

bool IsZipFile(const CFileRef& file) { return SmallExtension(file.GetPath()) == "zip"; }

OSErr FindSongBytes(const CFileRef& file, MediaKind kind, SongBytes& found) {
    found.extension = SmallExtension(file.GetPath());
    if (IsZipFile(file)) return FindInZip(file, kind, found);
    found.make = [file](std::unique_ptr<CByteSource>& bytesP) {
        auto fileP = std::make_unique<CByteSource_File>();
        const OSErr err = fileP->Open(file);
        bytesP = std::move(fileP);
        return LogStep(err, "QTNewDataReferenceFromURLCFString", file.GetPath());
    };
    return noErr;
}

OSErr MakeSongSource(const CFileRef& file, Ref<CSpooler>& sourceP) {
    sourceP = nullptr;
    SongBytes found;
    if (const OSErr err = FindSongBytes(file, MediaKind::kSound, found); Failed(err)) return err;
    sourceP = MakeRef<CAS_QuickTimeAudioReader>(std::move(found.make), std::move(found.extension));
    return noErr;
}
