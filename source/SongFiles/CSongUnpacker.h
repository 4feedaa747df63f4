#pragma once
#include <map>
#include <memory>

#include "Files/CTempItem.h"
#include "SongFiles/CSongZip.h"
#include "Threads/CHandle.h"

/** The files of a zipped song, unpacked; empty for what the zip has not. */
struct UnpackedSong {
    CFileRef audio, graphics, video, lyrics;
};

/** Unpacks zipped songs into temporary folders, for those who need files: the folder stands in the song's unpack place
    and is used again as long as the zip is the same.
    Threads  any; the disc is read and written here.
    Owner    CLibraryCommands. The folders go with it. */
class CSongUnpacker {
public:
    CSongUnpacker(CHandle<CSongDatabase> databaseRef, std::shared_ptr<CBusySongs> busyRef)
        : i_databaseRef(std::move(databaseRef)), i_busyRef(std::move(busyRef)) {}

    /** opWrErr, and the user is told, while somebody else works on this zip; fnfErr without a zip; what the zip or the
        disc says. Nothing half remains. */
    OSErr Unpack(SongID song, UnpackedSong& unpacked);
    /** Right now, by anybody. */
    [[nodiscard]] bool IsUnpacking(SongID song) const { return i_unpackingRef->IsBusy(song); }

private:
    struct Entry {
        std::unique_ptr<CTempItem> folderP;
        FileIdentity zip;
        std::int64_t zipModifiedL = 0;
        UnpackedSong files;
    };
    [[nodiscard]] bool Find(SongID song, const FileInfo& zip, UnpackedSong& unpacked) const;
    static OSErr UnpackInto(const CFileRef& zip, const CFileRef& folder, UnpackedSong& unpacked);

    const CHandle<CSongDatabase> i_databaseRef;
    const std::shared_ptr<CBusySongs> i_busyRef;
    const std::shared_ptr<CBusySongs> i_unpackingRef = std::make_shared<CBusySongs>();   // of those, the ones here
    CMutexT<std::map<std::int32_t, std::shared_ptr<const Entry>>> i_entries;
};
