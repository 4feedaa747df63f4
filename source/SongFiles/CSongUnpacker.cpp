#include "SongFiles/CSongUnpacker.h"

#include <array>
#include <vector>

#include "Core/CLog.h"
#include "Files/CDataFork.h"
#include "Files/FSrFolders.h"
#include "Files/FSrObjects.h"
#include "Library/CSongDatabase.h"
#include "Threads/CallOnMain.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"
#include "Zip/CZipSongMembers.h"

namespace {

constexpr std::size_t kUnpack_Block = 64 * 1024;

OSErr UnpackMember(const CFileRef& zip, const CZipMember& member, const CFileRef& folder, CFileRef& file) {
    CByteSource_Zip source;
    if (const OSErr err = source.Open(zip, member); Failed(err)) return err;
    std::string name;   // two members of different folders may have one name
    if (const OSErr err = FSrMakeUniqueName(folder, member.SafeName(), name); Failed(err)) return err;
    const CFileRef made(folder, name);
    CDataFork fork;
    if (const OSErr err = fork.Open(made, FileAccess::kCreateNew); Failed(err)) return err;
    std::vector<std::byte> block(kUnpack_Block);
    for (;;) {
        std::size_t gotL = 0;
        const OSErr err = source.Read(block, gotL);
        if (gotL != 0)
            if (const OSErr written = fork.Write(std::span(block).first(gotL)); Failed(written)) return written;
        if (err == eofErr) break;   // the checksum was right
        if (Failed(err)) return err;
    }
    file = made;
    return fork.Close();
}

}   // namespace

bool CSongUnpacker::Find(SongID song, const FileInfo& zip, UnpackedSong& unpacked) const {
    const auto entryRef = i_entries.With([&](const auto& entries) {
        const auto it = entries.find(Number(song));
        return it == entries.end() ? nullptr : it->second;
    });
    if (!entryRef || entryRef->zip != FileIdentity::Of(zip) || entryRef->zipModifiedL != zip.modifiedL) return false;
    for (const CFileRef* const fileP :
         {&entryRef->files.audio, &entryRef->files.graphics, &entryRef->files.video, &entryRef->files.lyrics}) {
        FileInfo info;   // somebody may have cleaned the temporary folder
        if (!fileP->IsEmpty() && Failed(FSrCheckFile(*fileP, info))) return false;
    }
    unpacked = entryRef->files;
    return true;
}

OSErr CSongUnpacker::Unpack(SongID song, UnpackedSong& unpacked) {
    std::optional<CSongFiles> files;
    const OSErr asked = CallOnMain("to unpack", i_databaseRef, [&](const CSongDatabase& database) {
        files = CSongFiles::Of(database, song);   // by the folders of now
        return noErr;
    });
    if (Failed(asked)) return asked;
    CFileRef zip;
    if (!files || Failed(files->GetFile(SDB_SongFile_ZIP, zip))) return fnfErr;
    const CBusySongs::Hold hold(i_busyRef, song);
    if (!hold.IsHeld()) {
        TellSongBusy(files->Name());
        return opWrErr;
    }
    FileInfo info;
    if (const OSErr err = FSrCheckFile(zip, info); Failed(err)) return err;
    if (Find(song, info, unpacked)) return noErr;
    const CBusySongs::Hold unpacking(i_unpackingRef, song);
    auto entryRef = std::make_shared<Entry>();
    entryRef->folderP = std::make_unique<CTempItem>();
    entryRef->zip = FileIdentity::Of(info);
    entryRef->zipModifiedL = info.modifiedL;
    CFileRef temp;
    OSErr err = FSrFindFolder(PlatformFolder::kTemporary, CFileRef(), temp);
    if (!Failed(err)) err = entryRef->folderP->Create(FSCreateTemp_FOLDER, temp);
    if (!Failed(err)) err = UnpackInto(zip, entryRef->folderP->Ref(), entryRef->files);
    if (Failed(err)) return LogStep(err, "unpacking", zip.GetPath());   // the folder goes with its item
    unpacked = entryRef->files;
    const CFileRef folder = entryRef->folderP->Ref();
    std::shared_ptr<const Entry> before = std::move(entryRef);   // the old folder goes after the lock
    i_entries.With([&](auto& entries) { entries[Number(song)].swap(before); });
    return CallOnMain("unpacked", i_databaseRef, [&](const CSongDatabase& database) {
        CSong* const songP = database.GetSong(song);
        if (songP == nullptr) return noErr;
        files->Store(*songP);
        return songP->SetFile(SDB_SongFile_UNPACK, folder);
    });
}

OSErr CSongUnpacker::UnpackInto(const CFileRef& zip, const CFileRef& folder, UnpackedSong& unpacked) {
    CZipArchive archive;
    if (const OSErr err = archive.Open(zip); Failed(err)) return err;
    const CZipSongMembers song = CZipSongMembers::Choose(archive.Members());
    const std::pair<std::optional<std::size_t>, CFileRef*> wanted[] = {{song.audio, &unpacked.audio},
                                                                       {song.graphics, &unpacked.graphics},
                                                                       {song.video, &unpacked.video},
                                                                       {song.lyrics, &unpacked.lyrics}};
    bool anyB = false;
    for (const auto& [member, fileP] : wanted) {
        if (!member) continue;
        anyB = true;
        if (const OSErr err = UnpackMember(zip, archive.Members()[*member], folder, *fileP); Failed(err)) return err;
    }
    return anyB ? noErr : fnfErr;
}
