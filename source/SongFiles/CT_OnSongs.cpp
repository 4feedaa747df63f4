#include "SongFiles/CT_OnSongs.h"

#include "Core/Localize.h"
#include "Threads/CallOnMain.h"

CT_OnSongs::CT_OnSongs(const char* nameZ, CSongDatabase& database, std::vector<SongID> songs, Done done)
    : CT_Preemptive(nameZ),
      i_databaseRef(database.Self()),
      i_songsRef(database.Songs()),
      i_settingsRef(database.Settings()),
      i_stoppingRef(database.Stopping()),
      i_songs(std::move(songs)),
      i_done(std::move(done)) {}

bool CT_OnSongs::IsCancelled() const { return *i_stoppingRef || (i_viewP && i_viewP->IsCancelled()); }

OSErr CT_OnSongs::OnMain(const char* nameZ, const std::function<OSErr(CSongDatabase& database)>& work) {
    return CallOnMain(nameZ, i_databaseRef, work);
}

OSErr CT_OnSongs::Operate(OSErr err) {
    if (Failed(err)) return err;
    if (!i_quietB)
        (void)CThreadHost::With([&](CThreadHost& host) { i_viewP = host.OpenTask(Localize(Name().c_str())); });
    long doneL = 0;
    for (const SongID song : i_songs) {
        if (IsCancelled()) err = userCanceledErr;
        if (Failed(err)) break;
        std::optional<CSongFiles> files;
        (void)i_songsRef->With(song, [&](const CSong& found) {
            if (Wants(found)) files.emplace(found, i_settingsRef);
        });
        if (files) err = OnSong(*files);
        if (i_viewP) i_viewP->SetSteps(++doneL, static_cast<long>(i_songs.size()));
    }
    err = AtEnd(err);
    i_viewP.reset();
    return err;
}

OSErr CT_OnSongs::Completion(OSErr err) {
    auto* const databaseP = i_databaseRef.Get();
    if (databaseP != nullptr && i_done) i_done(err);
    return err;
}
