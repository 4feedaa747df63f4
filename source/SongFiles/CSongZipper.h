#pragma once
#include <functional>
#include <map>
#include <memory>

#include "SongFiles/CSongZip.h"
#include "Threads/CMutex_ThreadQue.h"

/** Zips songs one after the other, on "Zip Que".
    Threads  main; Abort any.
    Owner    CLibraryCommands. Its end drops what waits, and ends what runs with the originals where they were. */
class CSongZipper {
public:
    CSongZipper(CSongDatabase& database, std::shared_ptr<CBusySongs> busyRef);
    ~CSongZipper();
    CSongZipper(const CSongZipper&) = delete;
    CSongZipper& operator=(const CSongZipper&) = delete;

    /** `done` runs on the queue's thread. abortErr when it cannot be queued. */
    OSErr Zip(SongID song, OldZip oldZip = OldZip::kRefuse, std::function<void(OSErr err)> done = {});
    /** Ends the zip of this song, whether it runs or waits. */
    void Abort(SongID song);
    void AbortAll();
    /** Ends all zips, and the thread; nothing is zipped any more. Waits for its last lines. */
    void Quit();

private:
    using Running = std::map<std::int32_t, std::shared_ptr<CSongZip>>;

    CSongDatabase& i_database;
    const std::shared_ptr<CBusySongs> i_busyRef;
    const std::shared_ptr<CMutexT<Running>> i_runningRef = std::make_shared<CMutexT<Running>>();
    CMutex_ThreadQue i_queue{kQue_Zip, 1};
};
