#include "SongFiles/CT_TrashSongs.h"

#include <algorithm>

#include "Core/CLog.h"
#include "Core/Localize.h"
#include "SongFiles/CSongFileWork.h"

namespace {
constexpr SDB_SongFile kTrashed[] = {SDB_SongFile_AUDIO, SDB_SongFile_VIDEO, SDB_SongFile_ZIP, SDB_SongFile_META,
                                     SDB_SongFile_PROJECT};
}

OSErr CT_TrashSongs::Start(CSongDatabase& database, std::vector<SongID> songs, Done done) {
    std::unique_ptr<CT_Preemptive> taskP(new CT_TrashSongs(database, std::move(songs), std::move(done)));
    return CT_Preemptive::Start(std::move(taskP)) == 0 ? abortErr : noErr;
}

CT_TrashSongs::CT_TrashSongs(CSongDatabase& database, std::vector<SongID> songs, Done done)
    : CT_OnSongs(N_("Moving songs to trash"), database, std::move(songs), std::move(done)),
      i_keeperRef(CSongFileWork::Of(database).Keeper()) {}

OSErr CT_TrashSongs::OnSong(CSongFiles& files) {
    const OSErr plays = OnMain("may it go", [&](const CSongDatabase& database) {
        return database.PlayingSong() == files.Song() ? opWrErr : noErr;
    });
    if (plays == opWrErr) {
        i_firstErr = FirstOf(i_firstErr, LogStep(plays, "moving to trash a song that plays", files.Name()));
        return noErr;
    }
    if (Failed(plays)) return plays;
    Trashed trashed{files.Song(), {}, {}};
    std::vector<SongID> owners = i_gone;
    owners.push_back(files.Song());
    OSErr err = noErr;
    for (const SDB_SongFile type : kTrashed) {
        if (files.Status(type) != SDB_SongFileStatus_MUSIC) continue;
        TrashedFile place;
        err = i_keeperRef->Trash(files.Ref(type), owners, place);
        if (err == alreadyReportedErr) {
            trashed.left.push_back(files.Ref(type).GetPath());
            err = noErr;
        } else if (err == fnfErr)
            err = noErr;   // it has gone already
        else if (!Failed(err))
            trashed.files.emplace_back(place, files.Ref(type));
        if (Failed(LogStep(err, "moving to trash", files.Ref(type).GetPath()))) break;
    }
    if (Failed(err)) {
        Restore(trashed);
    } else {
        i_trashed.push_back(std::move(trashed));
        i_gone.push_back(files.Song());
    }
    i_firstErr = FirstOf(i_firstErr, err);
    return noErr;   // the next one may go
}

void CT_TrashSongs::Restore(const Trashed& trashed) {
    for (const auto& [place, file] : trashed.files)
        (void)LogStep(FSrRestoreTrashed(place, file), "restoring", file.GetPath());
}

/** Its files were open before they went: it sounds on, and is found there the next time. */
void CT_TrashSongs::KeepPlaying(SongID playing) {
    const auto it = std::ranges::find(i_trashed, playing, &Trashed::song);
    if (it == i_trashed.end()) return;
    Restore(*it);
    for (const Trashed& other : i_trashed)   // what it shared went with the last one
        for (const auto& [place, file] : other.files)
            if (std::ranges::find(it->left, file.GetPath()) != it->left.end())
                (void)LogStep(FSrRestoreTrashed(place, file), "restoring", file.GetPath());
    i_firstErr = FirstOf(i_firstErr, opWrErr);
}

OSErr CT_TrashSongs::AtEnd(OSErr err) {
    i_keeperRef->Tell();
    if (i_trashed.empty()) return FirstOf(err, i_firstErr);
    SongID playing{0};
    err = FirstOf(err, OnMain("trashed songs", [&](CSongDatabase& database) {
                      playing = database.PlayingSong();
                      std::vector<SongID> gone;
                      for (const Trashed& trashed : i_trashed)
                          if (trashed.song != playing) gone.push_back(trashed.song);
                      return gone.empty() ? noErr : database.RemoveFromLibrary(gone);
                  }));
    KeepPlaying(playing);
    return FirstOf(err, i_firstErr);
}
