#include "SongFiles/CT_UnzipSongs.h"

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "Files/FSrCopy.h"
#include "Files/FSrObjects.h"

CT_UnzipSongs::CT_UnzipSongs(CSongDatabase& database, std::shared_ptr<CSongUnpacker> unpackerRef,
                             std::vector<SongID> songs, const CFileRef& folder, Done done)
    : CT_OnSongs(N_("unzip songs"), database, std::move(songs), std::move(done)),
      i_unpackerRef(std::move(unpackerRef)),
      i_folder(folder) {}

OSErr CT_UnzipSongs::Start(CSongDatabase& database, std::shared_ptr<CSongUnpacker> unpackerRef,
                           std::vector<SongID> songs, const CFileRef& folder, Done done) {
    std::unique_ptr<CT_UnzipSongs> taskP(
        new CT_UnzipSongs(database, std::move(unpackerRef), std::move(songs), folder, std::move(done)));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

OSErr CT_UnzipSongs::OnSong(CSongFiles& files) {
    ShowText(files.Name());
    UnpackedSong unpacked;
    OSErr err = i_unpackerRef->Unpack(files.Song(), unpacked);
    for (const CFileRef* const fileP : {&unpacked.audio, &unpacked.graphics, &unpacked.video, &unpacked.lyrics}) {
        if (Failed(err)) break;
        if (fileP->IsEmpty()) continue;
        std::string name;
        CFileRef copy;
        err = FSrMakeUniqueName(i_folder, fileP->GetPath().filename().string(), name);
        if (!Failed(err)) err = CopyFileToFolder(*fileP, i_folder, copy, name);
    }
    if (Failed(LogStep(err, "unzipping", files.Name())) && !Failed(i_firstErr)) i_firstErr = err;
    return noErr;
}

OSErr CT_UnzipSongs::AtEnd(OSErr err) { return FirstOf(err, i_firstErr); }
