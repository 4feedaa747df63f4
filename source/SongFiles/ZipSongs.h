#pragma once
#include <functional>
#include <vector>

#include "Library/LibraryIDs.h"
#include "Platform/OSErr.h"

class CSongDatabase;
class CSongZipper;

/** Queues these songs with the zipper, as one line of the task list whose cancel ends what runs and what waits. `done`
    hears, on the main thread, of the first failure once the last song is through; userCanceledErr after a cancel.
    Threads  main.
    Errors   paramErr without a song; what the zipper says when it takes none. */
OSErr ZipSongs(CSongDatabase& database, CSongZipper& zipper, std::vector<SongID> songs,
               std::function<void(OSErr err)> done);
