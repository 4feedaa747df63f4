#include "Library/CT_TrashSongs.h"

#include "Core/CLog.h"
#include "Core/FSrTrash.h"

namespace {
constexpr SDB_SongFile kTrashed[] = {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO, SDB_SongFile_ZIP, SDB_SongFile_META,
                                     SDB_SongFile_PROJECT};
}

OSErr CT_TrashSongs::Start(CSongDatabase& database, std::vector<SongID> songs, Done done) {
    std::unique_ptr<CT_Preemptive> taskP(new CT_TrashSongs(database, std::move(songs), std::move(done)));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

CT_TrashSongs::CT_TrashSongs(CSongDatabase& database, std::vector<SongID> songs, Done done)
    : CT_OnSongs("Moving songs to trash", database, std::move(songs), std::move(done)) {}

OSErr CT_TrashSongs::OnSong(CSongFiles& files) {
    std::vector<std::pair<TrashedFile, CFileRef>> trashed;
    OSErr err = noErr;
    for (const SDB_SongFile type : kTrashed) {
        if (files.Status(type) != SDB_SongFileStatus_MUSIC) continue;
        TrashedFile place;
        err = FSrMoveToTrash(files.Ref(type), &place);
        if (err == fnfErr)
            err = noErr;   // it has gone already
        else if (!Failed(err))
            trashed.emplace_back(place, files.Ref(type));
        if (Failed(LogStep(err, "moving to trash", files.Ref(type).GetPath()))) break;
    }
    if (!Failed(err)) {
        i_gone.push_back(files.Song());
        return noErr;
    }
    for (const auto& [place, file] : trashed)
        (void)LogStep(FSrRestoreTrashed(place, file), "restoring", file.GetPath());
    i_firstErr = FirstOf(i_firstErr, err);
    return noErr;   // the next one may go
}

OSErr CT_TrashSongs::AtEnd(OSErr err) {
    if (!i_gone.empty())
        err = FirstOf(err, OnMain("trashed songs",
                                  [this](CSongDatabase& database) { return database.RemoveFromLibrary(i_gone); }));
    return FirstOf(err, i_firstErr);
}
