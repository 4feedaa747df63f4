#include "SongFiles/ZipSongs.h"

#include <memory>
#include <mutex>
#include <string>

#include "Core/Localize.h"
#include "Library/CSongDatabase.h"
#include "SongFiles/CSongFileWork.h"
#include "SongFiles/CSongZipper.h"
#include "Threads/CHandle.h"
#include "Threads/CThreadHost.h"

namespace {

/** What the songs of one command share. It goes with the last of them, also when the queue drops them. */
class ZipBatch {
public:
    ZipBatch(CSongDatabase& database, std::size_t countL, std::function<void(OSErr err)> done)
        : i_databaseRef(database.Self()),
          i_keeperRef(CSongFileWork::Of(database).Keeper()),
          i_countL(static_cast<long>(countL)),
          i_done(std::move(done)) {
        (void)CThreadHost::With([this](CThreadHost& host) { i_viewP = host.OpenTask(Localize("Zip songs")); });
        ShowSteps(i_viewP.get(), 0);
    }

    void OnCancel(std::function<void()> hook) {
        if (i_viewP) i_viewP->OnCancel(std::move(hook));
    }

    /** One song is through. Any thread. */
    void Ended(OSErr err) {
        std::shared_ptr<CTaskView> viewP;   // told, and perhaps ended, outside of the lock
        long endedL = 0;
        {
            const std::scoped_lock guard(i_lock);
            if (err == abortErr && i_viewP && i_viewP->IsCancelled()) err = userCanceledErr;
            if (!Failed(i_firstErr)) i_firstErr = err;
            err = i_firstErr;
            endedL = ++i_endedL;
            viewP = i_viewP;
            if (endedL == i_countL) i_viewP.reset();
        }
        ShowSteps(viewP.get(), endedL);
        if (endedL < i_countL) return;
        viewP.reset();   // gone before the end is told
        i_keeperRef->Tell();
        (void)CThreadHost::With([&](CThreadHost& host) {
            host.MainLoop().Post([databaseRef = i_databaseRef, done = std::move(i_done), err] {
                if (databaseRef.Get() != nullptr && done) done(err);
            });
        });
    }

private:
    void ShowSteps(CTaskView* viewP, long endedL) const {
        if (viewP == nullptr) return;
        viewP->SetText(std::to_string(endedL) + " / " + std::to_string(i_countL));
        viewP->SetSteps(endedL, i_countL);
    }

    const CHandle<CSongDatabase> i_databaseRef;
    const std::shared_ptr<CSongFileKeeper> i_keeperRef;
    const long i_countL;
    std::function<void(OSErr err)> i_done;   // taken by the last
    std::mutex i_lock;                       // guards the rest
    std::shared_ptr<CTaskView> i_viewP;
    long i_endedL = 0;
    OSErr i_firstErr = noErr;
};

}   // namespace

OSErr ZipSongs(CSongDatabase& database, CSongZipper& zipper, std::vector<SongID> songs,
               std::function<void(OSErr err)> done) {
    if (songs.empty()) return paramErr;
    const auto batchRef = std::make_shared<ZipBatch>(database, songs.size(), std::move(done));
    batchRef->OnCancel([&zipper, databaseRef = database.Self(), songs] {
        if (databaseRef.Get() == nullptr) return;   // the zipper lives with it
        for (const SongID song : songs) zipper.Abort(song);
    });
    for (const SongID song : songs)
        if (const OSErr err = zipper.Zip(song, OldZip::kRefuse, [batchRef](OSErr ended) { batchRef->Ended(ended); });
            Failed(err))
            batchRef->Ended(err == opWrErr ? noErr : err);   // it is in the queue already
    return noErr;
}
