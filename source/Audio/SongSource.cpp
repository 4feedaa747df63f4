#include "Audio/SongSource.h"

#include <algorithm>
#include <cctype>
#include <filesystem>

#include "Audio/CAS_QuickTimeAudioReader.h"
#include "Core/CByteSource_Zip.h"
#include "Core/CLog.h"
#include "Core/CZipArchive.h"
#include "Core/CZipSongMembers.h"

namespace {

/** In lower case, without the dot. */
std::string Extension(const std::filesystem::path& name) {
    std::string text = name.extension().string();
    if (!text.empty()) text.erase(0, 1);
    std::ranges::transform(text, text.begin(), [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

OSErr MakeZipSource(const CFileRef& file, Ref<CSpooler>& sourceP) {
    CZipArchive zip;
    if (const OSErr err = zip.Open(file); Failed(err)) return err;
    const CZipSongMembers chosen = CZipSongMembers::Choose(zip.Members());
    const auto sound = chosen.audio ? chosen.audio : chosen.video;
    if (!sound) return LogStep(fnfErr, "song source: no sound in the zip", file.GetPath());
    const CZipMember& member = zip.Members()[*sound];
    sourceP = MakeRef<CAS_QuickTimeAudioReader>(
        [file, member](std::unique_ptr<CByteSource>& bytesP) {
            auto zipP = std::make_unique<CByteSource_Zip>();
            const OSErr err = zipP->Open(file, member);
            bytesP = std::move(zipP);
            return err;
        },
        Extension(member.SafeName()));
    return noErr;
}

}   // namespace

OSErr MakeSongSource(const CFileRef& file, Ref<CSpooler>& sourceP) {
    sourceP = nullptr;
    if (Extension(file.GetPath()) == "zip") return MakeZipSource(file, sourceP);
    sourceP = MakeRef<CAS_QuickTimeAudioReader>(file);
    return noErr;
}
