#include "SongFiles/FindSongLength.h"

#include <functional>
#include <memory>

#include "Core/SmallExtension.h"
#include "Files/CByteSource_File.h"
#include "Media/MediaLength.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"
#include "Zip/CZipSongMembers.h"

namespace {

using Open = std::function<OSErr(std::unique_ptr<CByteSource>& bytesP)>;

OSErr LengthOf(const Open& open, const std::string& name, std::uint32_t& length300) {
    const ZipSongKinds kinds = ZipSongKindsOf(name);
    std::unique_ptr<CByteSource> bytesP;
    if (const OSErr err = open(bytesP); Failed(err)) return err;
    if (kinds.graphicsB) return FindGraphicsLength(*bytesP, length300);
    const std::string extension = SmallExtension(name);
    const OSErr err = FindMediaLength(*bytesP, extension, MediaKind::kSound, length300);
    if (err != paramErr || !kinds.videoB) return err;
    bytesP = nullptr;   // a movie without sound, perhaps
    if (const OSErr again = open(bytesP); Failed(again)) return again;
    return FindMediaLength(*bytesP, extension, MediaKind::kPicture, length300);
}

OSErr LengthOfZip(const CFileRef& file, std::uint32_t& length300) {
    CZipArchive zip;
    if (const OSErr err = zip.Open(file); Failed(err)) return err;
    const CZipSongMembers chosen = CZipSongMembers::Choose(zip.Members());
    const auto index = chosen.audio ? chosen.audio : chosen.graphics ? chosen.graphics : chosen.video;
    if (!index) return fnfErr;
    const CZipMember& member = zip.Members()[*index];
    const auto open = [&](std::unique_ptr<CByteSource>& bytesP) {
        auto memberP = std::make_unique<CByteSource_Zip>();
        const OSErr err = memberP->Open(file, member);
        bytesP = std::move(memberP);
        return err;
    };
    return LengthOf(open, member.SafeName(), length300);
}

OSErr LengthOfFile(const CFileRef& file, std::uint32_t& length300) {
    const auto open = [&](std::unique_ptr<CByteSource>& bytesP) {
        auto fileP = std::make_unique<CByteSource_File>();
        const OSErr err = fileP->Open(file);
        bytesP = std::move(fileP);
        return err;
    };
    return LengthOf(open, file.GetName(), length300);
}

}   // namespace

OSErr FindPlayedFile(CSongFiles& files, CFileRef& file) {
    if (!files.Ref(SDB_SongFile_ZIP).IsEmpty() && !Failed(files.GetFile(SDB_SongFile_ZIP, file))) return noErr;
    if (!Failed(files.GetFile(SDB_SongFile_AUDIO, file))) return noErr;
    if (!files.Ref(SDB_SongFile_AUDIO).IsEmpty()) return fnfErr;   // half of a song has not its length
    return files.GetFile(SDB_SongFile_VIDEO, file, CSongFiles::TryCached::kYes);
}

OSErr FindSongLength(CSongFiles& files, std::uint32_t& length300) {
    CFileRef file;
    if (const OSErr err = FindPlayedFile(files, file); Failed(err)) return err;
    return SmallExtension(file.GetPath()) == "zip" ? LengthOfZip(file, length300) : LengthOfFile(file, length300);
}
