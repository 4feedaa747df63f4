#pragma once
#include <memory>

#include "SongFiles/CSongUnpacker.h"
#include "SongFiles/CT_OnSongs.h"

/** Puts the files of zipped songs into a folder, unpacked. Nothing there is replaced, and the songs keep their zips. A zip
    that cannot be read is logged, and the others go on: it is what the task ends with. */
class CT_UnzipSongs final : public CT_OnSongs {
public:
    /** Main thread; abortErr when there is no thread. */
    static OSErr Start(CSongDatabase& database, std::shared_ptr<CSongUnpacker> unpackerRef, std::vector<SongID> songs,
                       const CFileRef& folder, Done done = {});

private:
    CT_UnzipSongs(CSongDatabase& database, std::shared_ptr<CSongUnpacker> unpackerRef, std::vector<SongID> songs,
                  const CFileRef& folder, Done done);
    OSErr OnSong(CSongFiles& files) override;
    OSErr AtEnd(OSErr err) override;

    const std::shared_ptr<CSongUnpacker> i_unpackerRef;
    const CFileRef i_folder;
    OSErr i_firstErr = noErr;
};
