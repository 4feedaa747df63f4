#include "SongFiles/CSongZipper.h"

#include <vector>

#include "Core/CLog.h"
#include "Library/CSongDatabase.h"
#include "SongFiles/CSongFileWork.h"

CSongZipper::CSongZipper(CSongDatabase& database, std::shared_ptr<CBusySongs> busyRef)
    : i_database(database), i_busyRef(std::move(busyRef)) {}

CSongZipper::~CSongZipper() { Quit(); }

void CSongZipper::Quit() {
    AbortAll();
    i_queue.Quit(true);
}

void CSongZipper::AbortAll() {
    i_runningRef->With([](const Running& running) {
        for (const auto& [song, zipRef] : running) zipRef->Abort();
    });
}

OSErr CSongZipper::Zip(SongID song, OldZip oldZip, std::function<void(OSErr err)> done) {
    Log("ZIP: --> queing for zip");
    auto zipRef = std::make_shared<CSongZip>(SongFileWorld{i_database.Self(), i_database.Songs(), i_database.Settings(),
                                                           i_busyRef, CSongFileWork::Of(i_database).Keeper()},
                                             song, oldZip);
    const bool newB =
        i_runningRef->With([&](Running& running) { return running.try_emplace(Number(song), zipRef).second; });
    if (!newB) return opWrErr;
    const auto end = [runningRef = i_runningRef, song] {
        // The last hold may be this one: it goes after the lock.
        std::shared_ptr<CSongZip> gone;
        runningRef->With([&](Running& running) {
            if (const auto it = running.find(Number(song)); it != running.end()) {
                gone = std::move(it->second);
                running.erase(it);
            }
        });
    };
    CT_QueElement element([zipRef](CT_QueElement&) { return zipRef->Run(); },
                          [end, done = std::move(done)](CT_QueElement&, OSErr err) {
                              end();
                              if (done) done(err);
                              return err;
                          },
                          nullptr, Number(song));
    const OSErr err = i_queue.Add(std::move(element));
    if (Failed(err)) end();
    return err;
}

void CSongZipper::Abort(SongID song) {
    std::shared_ptr<CSongZip> zipRef;
    i_runningRef->With([&](const Running& running) {
        if (const auto it = running.find(Number(song)); it != running.end()) zipRef = it->second;
    });
    if (zipRef) zipRef->Abort();
}
